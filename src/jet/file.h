#pragma once

#include "jet/bytes.h"
#include "jet/result.h"

#include <cstdint>
#include <filesystem>
#include <memory>

/// The one place where bytes reach the disk, as an interface, so that a test can count writes, stop after the n-th,
/// fill the disk or turn a byte over.
///
/// Reasons given below the surface of this module (here and in every other unit but Database and Recordset) are
/// sentences whose subject, the file's path, is put in front at the surface: "could not be read: ...".
namespace quorvel::jet {

/// An open file. Dropping it closes it and frees it for other programs.
class File {
public:
    virtual ~File() = default;

    virtual Result<std::uint64_t> size() = 0; ///< in bytes

    /// Reads or writes one page; the length of `page` is the page size, `number` counts from 0. Writing page n of a
    /// file of n pages makes it longer. A read that finds less than a page fails.
    virtual Status readPage(std::uint32_t number, MutableBytes page) = 0;
    virtual Status writePage(std::uint32_t number, Bytes page) = 0;

    /// Returns when everything written is on the disk.
    virtual Status sync() = 0;

    /// Drops what lies behind the first `size` bytes.
    virtual Status cut(std::uint64_t size) = 0;
};

/// A place with files.
class Files {
public:
    virtual ~Files() = default;

    struct Opened {
        std::unique_ptr<File> file;
        std::string readOnlyBecause; ///< "" when it may be written, else why not
    };

    /// Opens an existing file. For writing, other writers are kept out; a file that this user may only read is
    /// opened for reading, and `readOnlyBecause` says so.
    virtual Result<Opened> open(const std::filesystem::path& path, bool forWriting) = 0;

    /// Makes an empty file for writing. A left-over of that name, empty or the beginning of a database, is removed when
    /// no program holds it; a file of another kind makes it fail.
    virtual Result<std::unique_ptr<File>> create(const std::filesystem::path& path) = 0;

    /// Gives `from` the name `to`, and makes the new name last. Fails when `to` exists.
    virtual Status publish(const std::filesystem::path& from, const std::filesystem::path& to) = 0;

    virtual bool exists(const std::filesystem::path& path) = 0;
    virtual void remove(const std::filesystem::path& path) = 0;

    /// True when another program holds locks on the file (Access's ".ldb" beside an open database).
    virtual bool lockedByOthers(const std::filesystem::path& path) = 0;
};

/// The disks of this machine.
Files& diskFiles();

} // namespace quorvel::jet
