#include "sim/frame_reader.h"

#include <utility>

namespace quorvelsim {

std::optional<Frame> FrameReader::push(char character, double seconds)
{
    if (character == ':') {
        drop();
        frame_.first = seconds;
    } else if (frame_.text.empty()) {
        ++dropped_;
        return std::nullopt;
    }
    const bool afterReturn = !frame_.text.empty() && frame_.text.back() == '\r';
    frame_.text += character;
    if (character == '\n' && afterReturn) {
        frame_.last = seconds;
        return std::exchange(frame_, {});
    }
    if (afterReturn || character == '\n' || frame_.text.size() >= kLongest) drop();
    return std::nullopt;
}

void FrameReader::drop()
{
    dropped_ += frame_.text.size();
    frame_ = {};
}

} // namespace quorvelsim
