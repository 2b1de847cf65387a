#pragma once

#include "jet/file.h"

#include <algorithm>
#include <cstring>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

/// A disk in memory that does as it is told: counts writes and flushes, dies after the n-th, is full.
namespace quorvel::jet::testing {

struct Disk {
    std::map<std::string, std::vector<std::uint8_t>> files;
    std::vector<std::uint32_t> writes; ///< page numbers, in order
    int syncs = 0;
    int syncsLeft = -1;           ///< -1: any number; 0: every further flush fails
    std::function<void()> atSync; ///< told of each flush
    int writesLeft = -1; ///< -1: any number; 0: every further write fails, as if the program had been killed
    std::size_t bytesLeft = SIZE_MAX; ///< room for files to grow
    bool lockedByAccess = false;
};

class MemoryFile : public File {
public:
    MemoryFile(Disk& disk, std::string name) : disk_(&disk), name_(std::move(name)) {}

    Result<std::uint64_t> size() override { return static_cast<std::uint64_t>(bytes().size()); }

    Status readPage(std::uint32_t number, MutableBytes page) override
    {
        const std::size_t begin = std::size_t{number} * page.size();
        if (begin + page.size() > bytes().size()) return Failure{"became shorter while it was read."};
        std::memcpy(page.data(), bytes().data() + begin, page.size());
        return {};
    }

    Status writePage(std::uint32_t number, Bytes page) override
    {
        const std::size_t begin = std::size_t{number} * page.size();
        const std::size_t end = std::max(bytes().size(), begin + page.size());
        if (disk_->writesLeft == 0) return Failure{"could not be written: the program was killed."};
        if (end - bytes().size() > disk_->bytesLeft) {
            return Failure{"could not be written: No space left on device. Make room and try again."};
        }
        if (disk_->writesLeft > 0) --disk_->writesLeft;
        disk_->bytesLeft -= end - bytes().size();
        disk_->writes.push_back(number);
        bytes().resize(end);
        std::memcpy(bytes().data() + begin, page.data(), page.size());
        return {};
    }

    Status sync() override
    {
        if (disk_->syncsLeft == 0) return Failure{"could not be brought to the disk: Input/output error."};
        if (disk_->syncsLeft > 0) --disk_->syncsLeft;
        ++disk_->syncs;
        if (disk_->atSync) disk_->atSync();
        return {};
    }

    Status cut(std::uint64_t size) override
    {
        bytes().resize(size);
        return {};
    }

private:
    std::vector<std::uint8_t>& bytes() { return disk_->files[name_]; }

    Disk* disk_;
    std::string name_;
};

class MemoryFiles : public Files {
public:
    explicit MemoryFiles(Disk& disk) : disk_(&disk) {}

    Result<Opened> open(const std::filesystem::path& path, bool) override
    {
        if (!exists(path)) return Failure{"could not be opened: No such file or directory."};
        return Opened{std::make_unique<MemoryFile>(*disk_, path.string()), ""};
    }

    Result<std::unique_ptr<File>> create(const std::filesystem::path& path) override
    {
        disk_->files[path.string()].clear();
        return std::unique_ptr<File>(new MemoryFile(*disk_, path.string()));
    }

    Status publish(const std::filesystem::path& from, const std::filesystem::path& to) override
    {
        if (exists(to)) return Failure{"already exists. Delete it or choose another name."};
        disk_->files[to.string()] = disk_->files[from.string()];
        remove(from);
        return {};
    }

    bool exists(const std::filesystem::path& path) override { return disk_->files.contains(path.string()); }
    void remove(const std::filesystem::path& path) override { disk_->files.erase(path.string()); }
    bool lockedByOthers(const std::filesystem::path&) override { return disk_->lockedByAccess; }

private:
    Disk* disk_;
};

} // namespace quorvel::jet::testing
