#include "line/diagnosis.h"

#include "link/address.h"
#include "protocol/search.h"
#include "protocol/shape.h"
#include "text/number.h"
#include "text/reply.h"

#include <algorithm>
#include <iterator>
#include <numeric>
#include <utility>

namespace quorvel::line {

namespace {

using protocol::CommandId;
using protocol::Shape;

constexpr auto kNoReadout = "00"; // no readout has this address: what comes back is what was sent

// s
constexpr float kEchoTime = 0.3F;
constexpr float kAnswerTime = 1.5F; // as the windows allow for a reading
constexpr float kOthersTime = 0.5F; // for a reply of 11 characters
constexpr float kPiece = 0.5F;      // a stop is seen between two pieces of listening
constexpr int kLatePieces = 4;      // listened to what comes after the time allowed
constexpr int kSearchPieces = 2;
constexpr int kQuietPieces = 2; // listened to a line on which nothing is said
constexpr double kSilence = 4;  // what one query takes more when it is not answered
constexpr float kTail = 0.25F;  // for the rest of what came late

constexpr int kAttempts = 3;    // at the reading, when all goes well
constexpr int kBadAttempts = 2; // when not

// What each step takes at least, in seconds, in the order of Step.
constexpr double kLeast[] = {0, 0.4, 1.1, 2.7, 0.8, 0.3, 1.7};
static_assert(std::size(kLeast) == kSteps);

/// Every readout that names itself in the answers to a search, in the order in which they came.
std::vector<int> namedIn(std::string_view received)
{
    std::vector<int> addresses;
    for (auto at = received.find(':'); at != std::string_view::npos; at = received.find(':', at + 1)) {
        const auto digits = text::mid(received.substr(at), 2, 2);
        const auto number = text::hexNumber(digits);
        if (digits.size() == 2 && link::isAddress(number)) addresses.push_back(number);
    }
    return addresses;
}

class Examination {
public:
    Examination(link::Module1& module1, const DiagnosisTask& task, const DiagnosisWatcher& watcher)
        : module1_(module1), watcher_(watcher)
    {
        found_.task = task;
    }

    Findings run()
    {
        constexpr void (Examination::*kRuns[])() = {
            &Examination::port,    &Examination::adapter, &Examination::noise, &Examination::search,
            &Examination::readout, &Examination::others,  &Examination::type};
        static_assert(std::size(kRuns) == kSteps);
        for (int i = 0; i < kSteps; ++i) {
            step_ = i;
            tellTime(kLeast[i]);
            // by itself: with its bounds checked, GCC 12 evaluates an index in the call wrongly
            const auto run = kRuns[i];
            (this->*run)();
            if (watcher_.ended && !found_.stopped) watcher_.ended(static_cast<Step>(i), found_);
            if (found_.over()) break;
        }
        return std::move(found_);
    }

private:
    /// @param seconds  that the running step still takes at least.
    void tellTime(double seconds) const
    {
        if (watcher_.begun) {
            watcher_.begun(static_cast<Step>(step_),
                           std::accumulate(kLeast + step_ + 1, std::end(kLeast), seconds));
        }
    }

    /// What came late, or unasked.
    struct Heard {
        std::string characters;
        double seconds = 0; ///< from the beginning of the listening to the first one
    };

    /// An exchange; a silent one as soon as the test is over.
    link::Exchange exchange(const link::Transaction& transaction)
    {
        if (!found_.over() && watcher_.stop && watcher_.stop()) found_.stopped = true;
        if (found_.over()) return {};
        auto ended = module1_.transact(transaction);
        if (ended.outcome == link::Outcome::Abandoned) found_.stopped = true;
        if (ended.outcome == link::Outcome::PortLost) {
            found_.lostReason =
                ended.lostReason.isEmpty() ? QStringLiteral("It was closed.") : ended.lostReason;
        }
        return ended;
    }

    /// What an exchange brought, without what an adapter sent back.
    std::string replyTo(const link::Transaction& transaction)
    {
        return std::string(protocol::withoutEcho(transaction.frame, exchange(transaction).reply));
    }

    /// Listens in pieces until something has come and ended.
    Heard listen(int pieces)
    {
        Heard heard;
        const auto begun = module1_.clock().now();
        for (int i = 0; i < pieces && heard.characters.empty(); ++i) {
            const auto piece = exchange(protocol::listening(kPiece));
            heard.characters = piece.reply;
            heard.seconds =
                static_cast<double>(begun.msecsTo(piece.begun)) / 1000 + piece.firstIn.value_or(0);
        }
        if (!heard.characters.empty()) heard.characters += exchange(protocol::listening(kTail)).reply;
        return heard;
    }

    void port() { found_.portOpen = module1_.port().PortOpen(); }

    void adapter()
    {
        auto question = protocol::probe(CommandId::QueryFeature, kNoReadout, kEchoTime);
        question.reply.count = static_cast<int>(question.frame.size());
        const auto reply = exchange(question).reply;
        found_.echoes = reply.starts_with(question.frame);
        found_.unasked = protocol::withoutEcho(question.frame, reply);
    }

    void noise()
    {
        for (int i = 0; i < kQuietPieces; ++i) {
            found_.unasked += exchange(protocol::listening(kPiece)).reply;
        }
    }

    void search()
    {
        auto question = protocol::search();
        question.drains = true;
        auto reply = replyTo(question);
        found_.searched = namedIn(reply);
        const bool complete = found_.task.address ? found_.readoutAnswersSearch() : !found_.searched.empty();
        if (const auto late = complete ? std::string() : listen(kSearchPieces).characters; !late.empty()) {
            reply += late;
            found_.searched = namedIn(reply);
            found_.searchLate =
                found_.task.address ? found_.readoutAnswersSearch() : !found_.searched.empty();
        }
        found_.beforeSearch = reply.substr(0, reply.find(':'));
    }

    /// Asks once. @param latePieces  how long to listen to an answer that comes too late.
    void ask(Asked& asked, int latePieces)
    {
        const auto digits = link::AddressToHex(*found_.task.address);
        const auto reply = replyTo(protocol::probe(asked.command, digits, kAnswerTime));
        if (found_.over()) return;
        const auto shape = protocol::shapeOf(asked.command, digits, reply);
        if (shape != Shape::Good && !asked.fault()) asked.reply = reply;
        asked.shapes.push_back(shape);
        if (shape != Shape::Silent) return;
        if (latePieces > 0) tellTime(kSilence * (asked.command == CommandId::QueryFeature ? 2 : 1));
        const auto late = listen(latePieces);
        if (!late.characters.empty()) asked.lateSeconds = static_cast<double>(kAnswerTime) + late.seconds;
    }

    /// Asks until it is clear whether the answer always comes, sometimes or never.
    /// @param attempts  while it comes.
    Asked askOften(CommandId command, int attempts)
    {
        Asked asked{.command = command};
        for (int i = 0; i < attempts && !found_.over() && !asked.lateSeconds; ++i) {
            ask(asked, asked.shapes.empty() ? kLatePieces : 0);
            if (asked.fault()) attempts = kBadAttempts;
        }
        return asked;
    }

    void readout()
    {
        if (!found_.task.address) return;
        found_.readout.push_back(askOften(CommandId::QueryFeature, 1));
        found_.readout.push_back(askOften(CommandId::ReadXY, kAttempts));
        if (found_.readoutAnswers()) found_.readout.push_back(askOften(CommandId::QueryClock, 1));
    }

    void others()
    {
        for (const int address : found_.searched) {
            if (address == found_.task.address || found_.others.contains(address)) continue;
            if (found_.others.size() >= kMostOthers || found_.over()) return;
            const auto digits = link::AddressToHex(address);
            const auto reply = replyTo(protocol::probe(CommandId::QueryFeature, digits, kOthersTime));
            if (!found_.over())
                found_.others[address] = protocol::shapeOf(CommandId::QueryFeature, digits, reply);
        }
    }

    void type()
    {
        const auto reading = std::ranges::find(found_.readout, CommandId::ReadXY, &Asked::command);
        if (reading == found_.readout.end() || !(reading->wasGood() || reading->lateSeconds)) return;
        Asked asked{.command = CommandId::ReadZ};
        ask(asked, reading->lateSeconds ? kLatePieces : 0);
        found_.z = asked;
    }

    link::Module1& module1_;
    const DiagnosisWatcher& watcher_;
    int step_ = 0;
    Findings found_;
};

} // namespace

Findings diagnose(link::Module1& module1, const DiagnosisTask& task, const DiagnosisWatcher& watcher)
{
    return Examination(module1, task, watcher).run();
}

} // namespace quorvel::line
