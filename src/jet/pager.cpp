#include "jet/pager.h"

#include <algorithm>
#include <string>

namespace quorvel::jet {

Pager::Pager(std::unique_ptr<File> file, const Layout& layout, std::uint32_t pages)
    : file_(std::move(file)), layout_(&layout), pages_(pages), frames_(kFrames)
{}

Pager::Frame* Pager::frameOf(std::uint32_t number)
{
    auto& frame = frames_[number % kFrames];
    if (!frame) frame = std::make_unique<Frame>();
    return frame.get();
}

Status Pager::clean(Frame& frame)
{
    if (!frame.used || !frame.changed) return {};
    auto written = file_->writePage(frame.number, Bytes(frame.bytes).first(layout_->pageSize));
    if (written) frame.changed = false;
    return written;
}

Result<Bytes> Pager::read(std::uint32_t number)
{
    if (number >= pages_) {
        return Failure{"is cut off or damaged: page " + std::to_string(number) +
                       " is missing. Copy it again, or use \"Compact and Repair\" in Access."};
    }
    Frame& frame = *frameOf(number);
    const auto bytes = MutableBytes(frame.bytes).first(layout_->pageSize);
    if (frame.used && frame.number == number) return Bytes(bytes);
    if (auto cleaned = clean(frame); !cleaned) return cleaned.failure();
    frame.used = false;
    if (auto got = file_->readPage(number, bytes); !got) return got.failure();
    frame.number = number;
    frame.used = true;
    return Bytes(bytes);
}

Result<Page> Pager::copy(std::uint32_t number)
{
    const auto bytes = read(number);
    if (!bytes) return bytes.failure();
    Page page{};
    putBytes(page, 0, *bytes);
    return page;
}

Status Pager::write(std::uint32_t number, Bytes page)
{
    Frame& frame = *frameOf(number);
    if (!frame.used || frame.number != number) {
        if (auto cleaned = clean(frame); !cleaned) return cleaned;
        frame.used = false;
    }
    if (!gathering_) {
        if (auto written = file_->writePage(number, page); !written) {
            // What stands in the file now is unknown; the next read looks.
            frame.used = false;
            return written;
        }
    }
    putBytes(frame.bytes, 0, page);
    frame.number = number;
    frame.used = true;
    frame.changed = gathering_;
    pages_ = std::max(pages_, number + 1);
    return {};
}

Status Pager::flush()
{
    for (auto& frame : frames_) {
        if (!frame) continue;
        if (auto cleaned = clean(*frame); !cleaned) return cleaned;
    }
    return {};
}

Status Pager::cutIncomplete()
{
    const auto size = file_->size();
    if (!size) return size.failure();
    const std::uint64_t whole = std::uint64_t{pages_} * layout_->pageSize;
    return *size > whole ? file_->cut(whole) : Status{};
}

} // namespace quorvel::jet
