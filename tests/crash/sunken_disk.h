#pragma once

#include "crash/recording.h"

#include <optional>
#include <random>

/// A disk on which what was written and what has come to it are two things.
namespace quorvel::test {

class SunkenDisk {
public:
    /// @param numbers  of the files, by their names in `files`: what is on the disk already.
    SunkenDisk(const Files& files, const std::map<std::uint64_t, std::string>& numbers, std::string folder);

    void apply(const Step& step);

    /// What is there for programs as long as the machine goes on.
    Files now() const;

    /// What may be there after a power cut, told one by one.
    void forEachCut(std::mt19937& chance, const std::function<void(const Files&)>& tell) const;

private:
    /// What came to one place of the disk since its last flush: one of these, or nothing.
    struct Sector {
        std::size_t begin = 0;
        std::vector<std::string> contents;
    };
    struct Inode {
        std::string durable;
        std::string now;
        std::map<std::size_t, Sector> sectors; ///< by their beginnings
        std::vector<std::size_t> sizes;        ///< that it had since the last flush

        void change(std::size_t at, const std::string& bytes, std::size_t size);
        void flush();
        std::string chosen(std::optional<std::size_t> size,
                           const std::map<std::size_t, std::size_t>& versions) const;
    };
    using Names = std::map<std::string, std::size_t>; ///< inodes_ by name
    struct NameChange {
        std::string gone; ///< name that is no more; "" for none
        std::string name; ///< that the inode has now; "" for none
        std::size_t inode = 0;

        void applyTo(Names& names) const;
    };
    /// One thing that may have come to the disk or not: a size, a sector or a change of names.
    struct Item {
        enum class Kind { Size, Sector, Name } kind;
        std::size_t index = 0; ///< of the inode, or of the change of names
        std::size_t begin = 0; ///< of the sector
        std::size_t versions = 2;
    };
    using Choice = std::vector<std::size_t>; ///< a version for each item, 0 for the one before

    std::string nameOf(const std::string& path) const;
    void changeName(const NameChange& change);
    void flushFolder(const std::string& folder);
    std::vector<Item> items() const;
    Files build(const std::vector<Item>& items, const Choice& choice) const;

    std::vector<Inode> inodes_;
    std::map<std::uint64_t, std::size_t> byNumber_;
    Names durable_;
    Names now_;
    std::vector<NameChange> pending_;
    std::string folder_;
};

} // namespace quorvel::test
