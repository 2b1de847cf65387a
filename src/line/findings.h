#pragma once

#include "link/bench.h"
#include "protocol/command.h"
#include "protocol/shape.h"

#include <QString>

#include <map>
#include <optional>
#include <string>
#include <vector>

/// What was found out about a line and a readout, step by step.
namespace quorvel::line {

/// The steps, in their order. All but the first send harmless queries, or only listen.
enum class Step {
    Port,    ///< is it open?
    Adapter, ///< does it send back what it sends?
    Noise,   ///< do characters come although nothing was sent?
    Search,  ///< who answers the search?
    Readout, ///< does the readout answer at its address?
    Others,  ///< do the other readouts answer at theirs?
    Type,    ///< has it Z sensors?
};
inline constexpr int kSteps = 7;

/// What is examined.
struct DiagnosisTask {
    QString port;               ///< the port in words, "COM1 /dev/ttyUSB0 USB-Serial Controller"
    QString whyClosed;          ///< why it could not be opened, if somebody knows
    std::optional<int> address; ///< 1..249; nothing: the line alone
    QString notAnAddress;       ///< what was typed instead of an address, if anything
    std::optional<link::InstrumentType> type; ///< the chosen one, if any
};

/// What became of a query that was sent once or more.
struct Asked {
    protocol::CommandId command = protocol::CommandId::QueryFeature;
    std::vector<protocol::Shape> shapes{}; ///< of its answers, in order
    std::string reply{};                   ///< the first one that was not good
    std::optional<double> lateSeconds{};   ///< when an answer came that was no longer awaited

    bool wasGood() const;
    /// The first shape that is not good; nothing when all are.
    std::optional<protocol::Shape> fault() const;
};

struct Findings {
    DiagnosisTask task;
    bool portOpen = false;
    QString lostReason; ///< the port vanished meanwhile
    bool stopped = false;
    bool echoes = false;                   ///< what is sent comes back
    std::string unasked;                   ///< characters that came although nothing was sent
    std::string beforeSearch;              ///< characters before the first answer to the search
    std::vector<int> searched;             ///< the addresses that answered it, as they came
    bool searchLate = false;               ///< the readout in question answered it only after its time
    std::vector<Asked> readout;            ///< queries to the readout, in order
    std::map<int, protocol::Shape> others; ///< of the first other readouts that answered the search
    std::optional<Asked> z;                ///< asking for Z, which only one type answers

    bool over() const { return !portOpen || stopped || !lostReason.isEmpty(); }
    bool readoutAnswers() const;
    bool readoutAnswersSearch() const;
};

/// "Port", "Adapter" ...
QString nameOf(Step step);
/// What a step found, as a short sentence.
QString resultOf(Step step, const Findings& findings);

/// "5, 12 and 33".
QString listOf(const std::vector<int>& addresses);
/// A shape as a sentence about an answer: "it breaks off".
QString wordsOf(protocol::Shape shape);

} // namespace quorvel::line
