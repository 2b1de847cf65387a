#pragma once

#include "jet/bytes.h"
#include "jet/file.h"
#include "jet/layout.h"
#include "jet/result.h"

#include <cstdint>
#include <memory>
#include <vector>

namespace quorvel::jet {

/// The pages of one file, with the last few kept in memory. One pager serves all tables of the file: they share
/// pages.
class Pager {
public:
    /// @param pages  pages in the file; an incomplete last one does not count.
    Pager(std::unique_ptr<File> file, const Layout& layout, std::uint32_t pages);

    std::uint32_t pages() const { return pages_; }
    const Layout& layout() const { return *layout_; }

    /// The bytes of a page, good until the next call of any kind. Fails when the file has no such page.
    Result<Bytes> read(std::uint32_t number);

    /// A copy of a Jet 4 page, to be changed and written back.
    Result<Page> copy(std::uint32_t number);

    /// Writes a page, at most one behind the last. A failed write leaves the page as it was.
    Status write(std::uint32_t number, Bytes page);

    /// Lets writes gather in memory until flush() or until the room is needed. For a file that nobody but this
    /// pager knows of: after a crash nothing of it counts.
    void gather() { gathering_ = true; }
    bool gathers() const { return gathering_; }

    /// Writes what has gathered.
    Status flush();

    Status sync() { return file_->sync(); }

    /// Makes barrier() flush the file. Off at first.
    void flushAtBarriers(bool flush) { flushAtBarriers_ = flush; }
    bool flushesAtBarriers() const { return flushAtBarriers_; }

    /// Stands between two writes of which the first must be on the disk before the second.
    Status barrier() { return flushAtBarriers_ ? file_->sync() : Status{}; }

    /// Cuts an incomplete page at the end of the file off.
    Status cutIncomplete();

private:
    static constexpr std::size_t kFrames = 1024;

    struct Frame {
        std::uint32_t number = 0;
        bool used = false;
        bool changed = false;
        Page bytes;
    };

    Frame* frameOf(std::uint32_t number);
    Status clean(Frame& frame);

    std::unique_ptr<File> file_;
    const Layout* layout_;
    std::uint32_t pages_;
    bool gathering_ = false;
    bool flushAtBarriers_ = false;
    std::vector<std::unique_ptr<Frame>> frames_;
};

} // namespace quorvel::jet
