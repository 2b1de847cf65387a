#include "link/module1.h"

#include "link/values.h"

#include <cmath>

namespace quorvel::link {

namespace {

constexpr float kPauseBeforeFrame = 0.03F;
constexpr float kPauseAfterCharacter = 0.005F;
constexpr float kCharacterTimeout = 2;
constexpr float kShortestPolledWait = 0.05F;
constexpr float kTimerDay = 86400;
constexpr double kTwoTo32 = 4294967296.0;

/// A counter value from its two signed halves. A low half of zero counts as negative, too.
double fromHalves(std::int64_t value)
{
    const auto high = static_cast<std::int32_t>(value >> 32);
    const auto low = static_cast<std::int32_t>(value & 0xFFFFFFFF);
    return high * kTwoTo32 + low + (low <= 0 ? kTwoTo32 : 0);
}

} // namespace

Module1::Module1(MSComm& port, Clock& clock) : port_(port), clock_(clock), counterOrigin_(clock.counter() - 1)
{}

void Module1::SendFrame(std::string_view frame, const std::function<void(int)>& sent)
{
    frameText_ = frame;
    WaitForInput(kPauseBeforeFrame, 0);
    int count = 0;
    for (const char character : frameText_) {
        if (abandoned_) return;
        port_.Output({&character, 1});
        if (sent) sent(++count);
        WaitForInput(kPauseAfterCharacter, 0);
    }
}

bool Module1::PerfSeconds(float& seconds) const
{
    const auto frequency = clock_.counterFrequency();
    if (!frequency) return false;
    seconds = static_cast<float>(fromHalves(clock_.counter() - counterOrigin_) / fromHalves(*frequency));
    return true;
}

bool Module1::WaitForInput(float seconds, int count)
{
    return clock_.counterFrequency() ? waitByCounter(seconds, count) : waitByTimeOfDay(seconds, count);
}

bool Module1::waitByCounter(float seconds, int count)
{
    // One tick in the past: a count of zero would be read as 2^32.
    counterOrigin_ = clock_.counter() - 1;
    float start = 0;
    float now = 0;
    PerfSeconds(start);
    for (;;) {
        clock_.letEventsRun();
        PerfSeconds(now);
        if (enoughWaits(count)) return true;
        const float passed = now - start;
        if (passed >= seconds || inVain(count)) return false;
        clock_.idle(static_cast<double>(seconds - passed));
    }
}

bool Module1::waitByTimeOfDay(float seconds, int count)
{
    if (seconds < kShortestPolledWait) {
        clock_.letEventsRun();
        clock_.sleep(static_cast<int>(std::lround(seconds * 1000)));
        return enoughWaits(count);
    }
    const auto start = static_cast<float>(clock_.timeOfDay());
    float passed = 0;
    do {
        // Events do not run here, so the device has to be asked for what it holds.
        clock_.sleep(1);
        port_.fetch();
        auto now = static_cast<float>(clock_.timeOfDay());
        if (now < start) now += kTimerDay;
        if (enoughWaits(count)) return true;
        passed = now - start;
    } while (passed < seconds && !inVain(count));
    return false;
}

bool Module1::receiveCharacter()
{
    const auto start = static_cast<float>(clock_.timeOfDay());
    for (;;) {
        auto now = static_cast<float>(clock_.timeOfDay());
        if (now < start) now += kTimerDay;
        clock_.letEventsRun();
        const float passed = now - start;
        if (port_.InBufferCount() >= 1 || passed >= kCharacterTimeout || inVain(1)) break;
        clock_.idle(static_cast<double>(kCharacterTimeout - passed));
    }
    if (port_.InBufferCount() == 0) return false;
    port_.setInputLen(1);
    replyText_ += port_.Input();
    port_.setInputLen(0);
    return true;
}

bool Module1::ReceiveReply(std::uint16_t count)
{
    replyText_.clear();
    for (int i = 1; i <= count; ++i) {
        if (!receiveCharacter()) return false;
    }
    return true;
}

bool Module1::ReceiveGrayscale()
{
    replyText_.clear();
    for (int i = 1; i <= kLongestLine; ++i) {
        if (!receiveCharacter()) return false;
        if (replyText_.back() == '\n') return true;
    }
    return false;
}

bool Module1::transact(std::string_view frame, std::uint16_t replyLength, Drain drain)
{
    if (drain == Drain::Yes) discardInput();
    SendFrame(frame);
    return ReceiveReply(replyLength);
}

std::string Module1::takeInput()
{
    port_.setInputLen(0);
    return port_.Input();
}

std::string Module1::ReadSensorValues(int address, const Bench& bench)
{
    const auto digits = AddressToHex(address);
    discardInput();
    SendFrame(valuesFrame(digits, kReadXY));
    WaitForInput(kValuesTimeout, kValuesReplyLength);
    const auto reply = takeInput();
    std::string line = xyText(reply);
    if (isValuesReply(reply) && bench.isThreeDirection()) {
        WaitForInput(kPauseBeforeZ, 0);
        discardInput();
        SendFrame(valuesFrame(digits, kReadZ));
        WaitForInput(kValuesTimeout, kValuesReplyLength);
        line += zText(takeInput(), bench.isUserEdition());
    }
    WaitForInput(kPauseAfterValues, 0);
    discardInput();
    return line;
}

} // namespace quorvel::link
