#include "sim/bus.h"

#include "sim/text.h"

#include <algorithm>
#include <utility>

namespace quorvelsim {

namespace {

constexpr std::string_view kSearchBody = "01FF";

} // namespace

void Bus::add(Readout readout)
{
    const int address = readout.address;
    readouts_.insert_or_assign(address, std::move(readout));
}

Readout* Bus::find(int address)
{
    const auto found = readouts_.find(address);
    return found == readouts_.end() ? nullptr : &found->second;
}

void Bus::receive(std::string_view characters, double now)
{
    for (const char character : characters) {
        const auto arrived = bitErrors_.pass(character, Direction::ToReadouts);
        auto frame = reader_.push(arrived, line_.arrival(now));
        if (!frame) continue;
        LoggedFrame logged{std::move(*frame), 0, {}};
        carryOut(logged);
        if (frames_.size() >= kLoggedFrames) frames_.pop_front();
        frames_.push_back(std::move(logged));
    }
}

std::string Bus::due(double now)
{
    auto characters = line_.due(now);
    for (auto& character : characters)
        character = bitErrors_.pass(character, Direction::FromReadouts);
    return characters;
}

void Bus::forget()
{
    line_.clear();
    reader_ = {};
}

std::deque<LoggedFrame> Bus::takeFrames() { return std::exchange(frames_, {}); }

void Bus::carryOut(LoggedFrame& logged)
{
    const auto frame = std::string_view(logged.frame.text).substr(0, logged.frame.text.size() - 2);
    const auto body = mid(frame, 2);
    const auto address = hexByte(mid(body, 1, 2));
    if (!address || !std::all_of(body.begin(), body.end(), isFrameCharacter)) return;
    if (mid(body, 3) == kSearchBody) return searchFrom(logged, *address);
    auto* readout = find(*address);
    auto request = parseCommand(frame);
    if (readout == nullptr || !request) return;
    request->now = logged.frame.last;
    readout->catchUp(request->now);
    const auto code = request->command->code;
    auto text = answer(*readout, *request);
    if (!text) return;
    if (const auto fixed = readout->fixedReplies.find(code); fixed != readout->fixedReplies.end())
        text = fixed->second + "\r\n";
    reply(logged, *readout, code, std::move(*text), logged.frame.last + line_.pace().answer);
    if (readout->address != *address) rename(*address, readout->address);
}

/// The shortest answer that a search can find is ":" and the address; the line end tells people and logs where
/// it stops. With it and a pause of one character, 249 readouts are through in 1.56 s at 9600 baud.
void Bus::searchFrom(LoggedFrame& logged, int address)
{
    auto earliest = logged.frame.last + line_.pace().answer;
    for (auto& [own, readout] : readouts_) {
        if (address != kBroadcast && address != own) continue;
        const auto before = logged.answerLength;
        reply(logged, readout, kSearchCode, ":" + twoHex(own) + "\r\n", earliest);
        const auto length = static_cast<double>(logged.answerLength - before);
        if (length > 0) earliest += line_.pace().character * length + line_.pace().gap;
    }
}

void Bus::reply(LoggedFrame& logged, Readout& readout, std::string_view code, std::string text,
                double earliest)
{
    const int address = hexByte(mid(logged.frame.text, 2, 2)).value_or(0);
    Answer spoiled{std::move(text)};
    const auto asked = address == kBroadcast ? readout.address : address;
    const auto fault = faults_.apply(spoiled, {readout, asked, code, logged.frame.last});
    if (!fault.empty()) logged.fault = fault;
    const auto length = spoiled.text.size();
    if (length == 0 && !spoiled.hangUp) return;
    if (line_.send(std::move(spoiled.text), earliest + spoiled.lateSeconds, spoiled.hangUp))
        logged.answerLength += length;
}

/// A readout that takes the address of another one silences it: on a real bus both would talk at once.
void Bus::rename(int from, int to)
{
    auto moved = readouts_.extract(from);
    readouts_.erase(to);
    moved.key() = to;
    readouts_.insert(std::move(moved));
}

} // namespace quorvelsim
