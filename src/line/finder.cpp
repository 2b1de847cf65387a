#include "line/finder.h"

#include "line/findings.h"
#include "line/trace.h"
#include "link/address.h"
#include "link/pacing.h"
#include "protocol/command.h"
#include "text/number.h"
#include "text/reply.h"

#include <algorithm>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace quorvel::line {

namespace {

using protocol::CommandId;
using protocol::Shape;

constexpr double kFactor = 3;        // of the slowest answer
constexpr float kReadingTime = 1.5F; // s, as the windows allow
constexpr int kFrameLength = 9;      // of the short query
constexpr auto kPresence = CommandId::QueryFeature;

/// Seconds that a frame of the short query takes.
constexpr double kFrameTime = static_cast<double>(link::kPauseBeforeFrame) +
                              kFrameLength * static_cast<double>(link::kPauseAfterCharacter);

/// A whole answer to the short query, and whose it is.
struct Answer {
    int address = 0;
    std::size_t at = 0;
    std::size_t length = 0;
};

/// The first whole answer in a text that one of the addresses from `from` to `before` - 1 gave.
std::optional<Answer> answerFromBefore(std::string_view received, int from, int before)
{
    const auto length = static_cast<std::size_t>(protocol::command(kPresence).reply.count);
    for (auto at = received.find(':'); at != std::string_view::npos; at = received.find(':', at + 1)) {
        const auto piece = received.substr(at, length);
        const auto digits = text::mid(piece, 2, 2);
        const int address = text::hexNumber(digits);
        if (address >= from && address < before && digits.size() == 2 &&
            protocol::shapeOf(kPresence, digits, piece) == Shape::Good) {
            return Answer{address, at, length};
        }
    }
    return std::nullopt;
}

QString remarkOn(Shape shape)
{
    switch (shape) {
    case Shape::Good:
    case Shape::Silent:
    case Shape::Brief:
        return {};
    case Shape::Twice:
    case Shape::Long:
        return QStringLiteral("Two readouts with this address? More than one answer came.");
    case Shape::Garbled:
    case Shape::OtherCommand:
    case Shape::BadValue:
    case Shape::NoiseBefore:
        return QStringLiteral("Two readouts with this address, or a disturbed line? An answer came damaged.");
    case Shape::Short:
    case Shape::OtherReadout:
        break;
    }
    const auto words = wordsOf(shape);
    return words.left(1).toUpper() + words.mid(1) + u'.';
}

class Finder {
public:
    Finder(link::Module1& module1, const FinderTask& task, const FinderWatcher& watcher)
        : module1_(module1), task_(task), watcher_(watcher)
    {}

    FinderResult run()
    {
        const auto begun = module1_.clock().now();
        for (int address = task_.from; address <= task_.to; ++address) {
            const auto passed = static_cast<double>(begun.msecsTo(module1_.clock().now())) / 1000;
            if (watcher_.asking) watcher_.asking(address, secondsLeft(address - task_.from, passed));
            visit(address);
            if (over()) break;
        }
        // The last ones are given the longest time of all.
        auto rest = exchange(protocol::listening(static_cast<float>(Patience::kLongest))).reply;
        takeLate(rest, task_.to + 1, Patience::kLongest);
        std::ranges::sort(result_.readouts, {}, &FoundReadout::address);
        return std::move(result_);
    }

private:
    bool over() const { return result_.stopped || !result_.lostReason.isEmpty(); }

    double secondsLeft(int done, double passed) const
    {
        const double each = done > 0 ? std::max(passed, 0.0) / done : kFrameTime + patience_.seconds();
        return (task_.count() - done) * each;
    }

    /// An exchange; a silent one as soon as the search is over.
    link::Exchange exchange(const link::Transaction& transaction)
    {
        if (!over() && watcher_.stop && watcher_.stop()) result_.stopped = true;
        if (over()) return {};
        auto ended = module1_.transact(transaction);
        if (ended.outcome == link::Outcome::Abandoned) result_.stopped = true;
        if (ended.outcome == link::Outcome::PortLost) {
            result_.lostReason =
                ended.lostReason.isEmpty() ? QStringLiteral("The port was closed.") : ended.lostReason;
        }
        if (!transaction.frame.empty() && ended.reply.starts_with(transaction.frame)) result_.echoes = true;
        ended.reply = protocol::withoutEcho(transaction.frame, ended.reply);
        return ended;
    }

    link::Exchange ask(CommandId id, int address, double seconds)
    {
        return exchange(protocol::probe(id, link::AddressToHex(address), static_cast<float>(seconds)));
    }

    void visit(int address)
    {
        const double waited = patience_.seconds();
        auto asked = ask(kPresence, address, waited);
        if (over()) return;
        takeLate(asked.discarded, address, waited);
        takeLate(asked.reply, address, waited + asked.firstIn.value_or(0));
        if (asked.reply.empty()) return;
        const auto shape = protocol::shapeOf(kPresence, link::AddressToHex(address), asked.reply);
        // A disturbance is not repeated.
        if (shape == Shape::Garbled && ask(kPresence, address, waited).reply.empty()) return;
        const auto ms = lastCharacterMs(asked).value_or(0);
        patience_.answeredAfter(ms / 1000);
        examine({.address = address, .answerMs = ms, .remark = remarkOn(shape)});
    }

    /// Takes the answers of addresses that were asked before out of a text: they came after their time.
    void takeLate(std::string& text, int current, double seconds)
    {
        while (const auto late = answerFromBefore(text, task_.from, current)) {
            text.erase(late->at, late->length);
            const auto known = std::ranges::find(result_.readouts, late->address, &FoundReadout::address);
            if (known == result_.readouts.end()) {
                patience_.answeredAfter(seconds);
                examine({.address = late->address,
                         .answerMs = seconds * 1000,
                         .remark = QStringLiteral("It answers late.")});
            } else if (known->remark.isEmpty()) {
                known->remark = remarkOn(Shape::Twice);
                if (watcher_.found) watcher_.found(*known);
            }
        }
    }

    /// Asks for the readings: two readouts with one address hardly ever read the same, so their answers damage each
    /// other; and who answers for Z is of type C.
    void examine(FoundReadout readout)
    {
        const auto digits = link::AddressToHex(readout.address);
        const auto reading = ask(CommandId::ReadXY, readout.address, kReadingTime);
        const auto shape = protocol::shapeOf(CommandId::ReadXY, digits, reading.reply);
        if (readout.remark.isEmpty()) readout.remark = remarkOn(shape);
        if (shape == Shape::Good || shape == Shape::Brief) {
            const double patience = kFactor * lastCharacterMs(reading).value_or(0) / 1000;
            const auto z = ask(CommandId::ReadZ, readout.address,
                               std::clamp(patience, Patience::kShortest, static_cast<double>(kReadingTime)));
            const auto zShape = protocol::shapeOf(CommandId::ReadZ, digits, z.reply);
            if (readout.remark.isEmpty()) readout.remark = remarkOn(zShape);
            if (!over()) readout.type = typeBy(zShape);
        }
        result_.readouts.push_back(readout);
        if (watcher_.found) watcher_.found(readout);
    }

    static QString typeBy(Shape z)
    {
        if (z == Shape::Good || z == Shape::Brief) return QStringLiteral("C");
        return z == Shape::Silent ? QStringLiteral("A, B or D") : QString();
    }

    link::Module1& module1_;
    FinderTask task_;
    const FinderWatcher& watcher_;
    Patience patience_;
    FinderResult result_;
};

} // namespace

double Patience::seconds() const
{
    return slowest_ > 0 ? std::clamp(kFactor * slowest_, kShortest, kLongest) : kFirst;
}

void Patience::answeredAfter(double seconds) { slowest_ = std::max(slowest_, seconds); }

FinderResult findReadouts(link::Module1& module1, const FinderTask& task, const FinderWatcher& watcher)
{
    return Finder(module1, task, watcher).run();
}

} // namespace quorvel::line
