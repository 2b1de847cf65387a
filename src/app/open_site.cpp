#include "app/openers.h"
#include "app/program.h"
#include "link/address.h"
#include "link/bytes.h"
#include "site/sitewindow.h"

#include <QJsonObject>

#include <algorithm>

namespace quorvel {

namespace {

std::vector<int> addressesOf(const std::vector<std::string>& found)
{
    std::vector<int> addresses;
    for (const auto& text : found) {
        const int address = link::addressIn(text);
        const bool isNew = std::find(addresses.begin(), addresses.end(), address) == addresses.end();
        if (address > 0 && isNew) addresses.push_back(address);
    }
    return addresses;
}

site::LineState lineOf(const line::Health& health, int address)
{
    const auto found = health.readouts().find(address);
    if (found == health.readouts().end()) return {};
    const auto& readout = found->second;
    return {readout.exchanges(), readout.endedAs(protocol::Verdict::Complete), readout.answerMs.mean()};
}

QString whoOf(const QString& user, const QString& program)
{
    return user.isEmpty() ? program : user + QStringLiteral(", ") + program;
}

files::Result<site::ChangesMade> changesSince(const Program& program, const QDateTime& since)
{
    if (!program.journal) return files::Failure{"This run of the program keeps no journal."};
    const auto journal = line::readJournal(program.journal->file(), since);
    if (!journal.failure.isEmpty()) return files::Failure{journal.failure.toStdString()};
    site::ChangesMade changes;
    auto unclear = journal.unread;
    std::size_t older = 0; // lines up to the last one that is
    for (std::size_t i = 0; i < journal.lines.size(); ++i) {
        const auto& line = journal.lines[i];
        const auto text = [&line](const char* member) { return line[QLatin1String(member)].toString(); };
        const auto time = QDateTime::fromString(text("time"), Qt::ISODateWithMs);
        if (!time.isValid()) {
            unclear.push_back(i);
            continue;
        }
        if (time < since) {
            older = i + 1;
            continue;
        }
        changes.made.push_back({text("time"), line[QLatin1String("address")].toInt(), text("meaning"),
                                text("old"), text("outcome"), line[QLatin1String("confirmed")].toBool(),
                                whoOf(text("user"), text("program"))});
    }
    changes.unread = static_cast<int>(
        std::count_if(unclear.begin(), unclear.end(), [older](std::size_t place) { return place >= older; }));
    return changes;
}

} // namespace

/// A new one after each closing: what it shows is that of the file that is opened.
void showSite(Program& program)
{
    auto* window = program.form1.findChild<site::SiteWindow*>();
    if (!window) {
        const site::Surroundings surroundings{
            [&program] { return addressesOf(program.form1.found()); },
            [&program](int address) { return lineOf(program.health, address); },
            [&program](const QDateTime& since) { return changesSince(program, since); }, line::userName()};
        window = new site::SiteWindow(program.workplace, surroundings, &program.form1);
        window->setAttribute(Qt::WA_DeleteOnClose);
    }
    window->show();
    window->raise();
    window->activateWindow();
}

} // namespace quorvel
