#include "line/findings.h"

#include "link/bytes.h"
#include "protocol/answer.h"

#include <QStringList>

#include <algorithm>
#include <iterator>

namespace quorvel::line {

namespace {

using protocol::Shape;

constexpr const char* kStepNames[] = {"Port",    "Adapter",        "Noise", "Search",
                                      "Readout", "Other readouts", "Type"};
static_assert(std::size(kStepNames) == kSteps);

QString quotedBytes(std::string_view characters)
{
    return u'"' + link::shown(protocol::printable(characters)) + u'"';
}

QString portResult(const Findings& found)
{
    if (!found.lostReason.isEmpty()) return found.lostReason;
    if (found.portOpen) return QStringLiteral("%1 is open.").arg(found.task.port);
    return found.task.whyClosed.isEmpty() ? QStringLiteral("No port is open.") : found.task.whyClosed;
}

QString searchResult(const Findings& found)
{
    if (found.searched.empty()) return QStringLiteral("No readout answers the search.");
    const auto words = QStringLiteral("Answers: %1.").arg(listOf(found.searched));
    return found.searchLate ? words + QStringLiteral(" Not all came in time.") : words;
}

QString resultOf(const Asked& asked)
{
    const auto name = link::shown(protocol::command(asked.command).name);
    const auto shape = asked.fault();
    if (!shape) return QStringLiteral("\"%1\": answered.").arg(name);
    if (asked.lateSeconds)
        return QStringLiteral("\"%1\": answered after %2 s.").arg(name).arg(*asked.lateSeconds, 0, 'f', 1);
    auto words = QStringLiteral("\"%1\": %2").arg(name, wordsOf(*shape));
    if (!asked.reply.empty()) words += u' ' + quotedBytes(asked.reply);
    return words + (asked.wasGood() ? QStringLiteral(", then answered.") : QStringLiteral("."));
}

QString readoutResult(const Findings& found)
{
    if (!found.task.address) return QStringLiteral("Not asked: no address is given.");
    QStringList words;
    for (const auto& asked : found.readout) {
        words << resultOf(asked);
    }
    return words.join(u' ');
}

QString othersResult(const Findings& found)
{
    if (found.others.empty()) return QStringLiteral("The search found no others.");
    QStringList words;
    for (const auto& [address, shape] : found.others) {
        words << QStringLiteral("%1: %2").arg(address).arg(wordsOf(shape));
    }
    return words.join(QStringLiteral("; ")) + u'.';
}

QString typeResult(const Findings& found)
{
    if (!found.z) return QStringLiteral("Not asked: there was no reading.");
    if (!found.z->fault()) return QStringLiteral("Z is answered: type C.");
    const bool silent = !found.z->wasGood() && found.z->fault() == Shape::Silent && !found.z->lateSeconds;
    return silent ? QStringLiteral("Z is not answered: type A, B or D.") : resultOf(*found.z);
}

} // namespace

bool Asked::wasGood() const { return std::ranges::count(shapes, Shape::Good) > 0; }

std::optional<Shape> Asked::fault() const
{
    const auto bad = std::ranges::find_if(shapes, [](Shape shape) { return shape != Shape::Good; });
    return bad == shapes.end() ? std::nullopt : std::optional(*bad);
}

bool Findings::readoutAnswers() const
{
    return std::ranges::any_of(readout, [](const Asked& asked) {
        return asked.lateSeconds ||
               std::ranges::any_of(asked.shapes, [](Shape shape) { return shape != Shape::Silent; });
    });
}

bool Findings::readoutAnswersSearch() const
{
    return task.address && std::ranges::count(searched, *task.address) > 0;
}

QString nameOf(Step step) { return QLatin1String(kStepNames[static_cast<int>(step)]); }

QString resultOf(Step step, const Findings& findings)
{
    if (step != Step::Port && !findings.lostReason.isEmpty()) return QStringLiteral("The port vanished.");
    switch (step) {
    case Step::Port:
        return portResult(findings);
    case Step::Adapter:
        return findings.echoes ? QStringLiteral("What is sent comes back.")
                               : QStringLiteral("What is sent does not come back.");
    case Step::Noise:
        return findings.unasked.empty()
                   ? QStringLiteral("Nothing comes while nothing is sent.")
                   : QStringLiteral("Came although nothing was sent: %1.").arg(quotedBytes(findings.unasked));
    case Step::Search:
        return searchResult(findings);
    case Step::Readout:
        return readoutResult(findings);
    case Step::Others:
        return othersResult(findings);
    case Step::Type:
        break;
    }
    return typeResult(findings);
}

QString listOf(const std::vector<int>& addresses)
{
    QString words;
    for (std::size_t i = 0; i < addresses.size(); ++i) {
        if (i > 0) words += i + 1 < addresses.size() ? QStringLiteral(", ") : QStringLiteral(" and ");
        words += QString::number(addresses[i]);
    }
    return words;
}

QString wordsOf(Shape shape)
{
    switch (shape) {
    case Shape::Good:
        return QStringLiteral("answered");
    case Shape::Silent:
        return QStringLiteral("no answer");
    case Shape::Short:
        return QStringLiteral("the answer breaks off");
    case Shape::Long:
        return QStringLiteral("something follows the answer");
    case Shape::Twice:
        return QStringLiteral("answered twice");
    case Shape::NoiseBefore:
        return QStringLiteral("something stands before the answer");
    case Shape::OtherReadout:
        return QStringLiteral("the answer has another address");
    case Shape::OtherCommand:
        return QStringLiteral("the answer is that of another command");
    case Shape::Brief:
        return QStringLiteral("a reading of 27 characters");
    case Shape::BadValue:
        return QStringLiteral("the answer holds no value");
    case Shape::Garbled:
        break;
    }
    return QStringLiteral("the answer is damaged");
}

} // namespace quorvel::line
