#include "link/module1.h"

#include "link/pacing.h"

#include <QScopeGuard>

#include <algorithm>
#include <cmath>
#include <utility>

namespace quorvel::link {

namespace {

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

Module1::Module1(MSComm& port, Clock& clock)
    : port_(port), clock_(clock), counterOrigin_(clock.counter() - 1),
      arrivals_(QObject::connect(&port, &MSComm::arrived, &port, [this] { noteArrival(); }))
{}

Module1::~Module1() { QObject::disconnect(arrivals_); }

Exchange Module1::transact(const Transaction& transaction, const std::function<void(int)>& sent)
{
    Exchange exchange;
    exchange.number = ++exchanges_;
    exchange.transaction = transaction;
    exchange.begun = clock_.now();
    const bool changes = transaction.kind == Kind::Set || transaction.kind == Kind::Delete;
    if (readOnly_ && changes) {
        exchange.outcome = Outcome::Refused;
    } else {
        run(exchange, sent);
    }
    for (auto* observer : observers_) {
        observer->ended(exchange);
    }
    return exchange;
}

void Module1::run(Exchange& exchange, const std::function<void(int)>& sent)
{
    running_ = &exchange;
    const auto letGo = qScopeGuard([this] { running_ = nullptr; });
    begun_ = monotonicSeconds();
    for (auto* observer : observers_) {
        observer->sending(exchange);
    }
    prepareInput(exchange);
    send(exchange, sent);
    const auto& rule = exchange.transaction.reply;
    const bool complete = receive(rule, exchange.reply);
    if (complete) {
        exchange.outcome = Outcome::Complete;
    } else if (abandoned_) {
        exchange.outcome = Outcome::Abandoned;
    } else if (!port_.PortOpen()) {
        exchange.outcome = Outcome::PortLost;
        exchange.lostReason = port_.lostReason();
    } else {
        exchange.outcome = exchange.reply.empty() ? Outcome::Silent : Outcome::Short;
    }
    exchange.lost = port_.takeLostCharacters();
    // What had waited since before the frame was never seen arriving.
    if (!exchange.reply.empty() && !exchange.firstIn) exchange.firstIn = exchange.lastIn = sinceBegin();
    restLeft_ = complete && rule.until == ReplyRule::Until::Count && !isAnswered(exchange);
}

void Module1::prepareInput(Exchange& exchange)
{
    if (!exchange.transaction.drains) return dropRest();
    restLeft_ = false;
    exchange.discarded = takeInput();
}

void Module1::send(Exchange& exchange, const std::function<void(int)>& sent)
{
    bool open = port_.PortOpen();
    SendFrame(exchange.transaction.frame, [&](int count) {
        // The port may have vanished with the character just written.
        if (std::exchange(open, port_.PortOpen())) {
            ++exchange.sent;
            exchange.lastOut = sinceBegin();
            if (!exchange.firstOut) exchange.firstOut = exchange.lastOut;
        }
        if (sent) sent(count);
    });
}

bool Module1::receive(const ReplyRule& rule, std::string& reply)
{
    using Until = ReplyRule::Until;
    if (rule.until == Until::Count || rule.until == Until::LineFeed) {
        const bool complete = rule.until == Until::Count
                                  ? ReceiveReply(static_cast<std::uint16_t>(rule.count))
                                  : ReceiveGrayscale();
        reply = replyText_;
        return complete;
    }
    const bool enough = WaitForInput(rule.seconds, rule.until == Until::CountOrTime ? rule.count : 0);
    // At 9600 baud the end of a longer reply is still on the line when the shorter length is reached.
    if (enough && rule.longest > rule.count) WaitForInput(kRestTime, rule.longest);
    reply = takeInput();
    return !reply.empty() && reply.size() >= static_cast<std::size_t>(rule.count);
}

void Module1::dropRest()
{
    if (std::exchange(restLeft_, false)) settle(kRestTime);
}

void Module1::settle(float seconds)
{
    WaitForInput(seconds, 0);
    discardInput();
}

void Module1::removeObserver(ExchangeObserver& observer) { std::erase(observers_, &observer); }

void Module1::noteArrival()
{
    if (!running_) return;
    running_->lastIn = sinceBegin();
    if (!running_->firstIn) running_->firstIn = running_->lastIn;
}

double Module1::monotonicSeconds() const
{
    const auto frequency = clock_.counterFrequency();
    return frequency ? static_cast<double>(clock_.counter()) / static_cast<double>(*frequency)
                     : clock_.timeOfDay();
}

double Module1::sinceBegin() const
{
    const double passed = monotonicSeconds() - begun_;
    return passed < 0 ? passed + static_cast<double>(kTimerDay) : passed;
}

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

std::string Module1::takeInput()
{
    port_.setInputLen(0);
    return port_.Input();
}

} // namespace quorvel::link
