#include "site/visit.h"

#include "link/address.h"
#include "link/bytes.h"
#include "link/module1.h"
#include "protocol/snapshot.h"

#include <QLatin1String>

#include <algorithm>
#include <utility>

namespace quorvel::site {

namespace {

using link::shown;

constexpr int kSilentAtMost = 2;
constexpr auto kNotKnown = "not known";

QString escaped(const QString& text) { return text.toHtmlEscaped(); }

QString notKnown(const QString& why = {})
{
    auto words = QStringLiteral("<i>%1</i>").arg(QLatin1String(kNotKnown));
    if (!why.isEmpty()) words += QStringLiteral(" (%1)").arg(escaped(why));
    return words;
}

/// A text, or that it is not known.
QString known(const QString& text) { return text.isEmpty() ? notKnown() : escaped(text); }

/// Words that stay in one line, up to a comma.
QString unbroken(QString html)
{
    html.replace(u' ', QLatin1String("&nbsp;"));
    return html.replace(QLatin1String(",&nbsp;"), QLatin1String(", "));
}

QString cell(const QString& html, const char* kind = "")
{
    return QStringLiteral("<td class=\"%1\">%2</td>").arg(QLatin1String(kind), html);
}

QString headings(const QStringList& captions)
{
    return QStringLiteral("<tr><th>") + captions.join(QStringLiteral("</th><th>")) +
           QStringLiteral("</th></tr>");
}

QString grid(const QString& rows)
{
    return QStringLiteral("<table class=\"grid\" cellspacing=\"0\" cellpadding=\"2\">%1</table>").arg(rows);
}

QString heading(const QString& text) { return QStringLiteral("<h2>%1</h2>").arg(escaped(text)); }

/// The line above the table: who, when, where.
QString facts(const Visit& visit)
{
    const std::pair<const char*, QString> rows[] = {
        {"Date and time", escaped(visit.at.toString(QStringLiteral("yyyy-MM-dd HH:mm:ss t")))},
        {"Person", known(visit.person)},
        {"Port", visit.port.isEmpty() ? QStringLiteral("not open") : escaped(visit.port)},
        {"Note on the site", visit.site.note.isEmpty() ? QStringLiteral("none") : escaped(visit.site.note)},
        {"Made by", escaped(visit.program)}};
    QString html;
    for (const auto& [caption, value] : rows)
        html += QStringLiteral("<tr><td>%1: </td><td>%2</td></tr>").arg(QLatin1String(caption), value);
    return QStringLiteral("<table>%1</table>").arg(html);
}

bool hasAny(const Visit& visit, protocol::Sensor sensor)
{
    return std::any_of(visit.readouts.begin(), visit.readouts.end(),
                       [sensor](const Visited& visited) { return hasSensor(visited.readout.type, sensor); });
}

QString valueOf(const Visited& visited, protocol::Sensor sensor)
{
    if (!hasSensor(visited.readout.type, sensor)) return QStringLiteral("-");
    const auto& received = visited.held.received.at(placeOf(sensor));
    return received ? escaped(shown(*received)) : notKnown();
}

QString receivedAt(const Visited& visited, const QDate& day)
{
    const auto& held = visited.held;
    const bool today = held.time.date() == day;
    const auto form = today ? QStringLiteral("HH:mm:ss") : QStringLiteral("yyyy-MM-dd HH:mm:ss");
    auto words = held.time.isValid() ? escaped(held.time.toString(form)) : notKnown();
    if (held.failed)
        words += QStringLiteral("<br><span class=\"bad\">last: %1</span>").arg(escaped(held.outcome));
    return words;
}

QString readings(const Visit& visit)
{
    std::vector<protocol::Sensor> sensors;
    std::copy_if(kSensors.begin(), kSensors.end(), std::back_inserter(sensors),
                 [&visit](protocol::Sensor sensor) { return hasAny(visit, sensor); });
    QStringList captions{"Address", "Name", "Type"};
    for (const auto sensor : sensors)
        captions << shown(protocol::nameOf(sensor)) + QStringLiteral(" mm");
    captions << QStringList{"Received", "Limits", "Clock", "Line"};
    auto rows = headings(captions);
    for (const auto& visited : visit.readouts) {
        const auto& readout = visited.readout;
        rows += QStringLiteral("<tr>") + cell(QString::number(readout.address), "number") +
                cell(escaped(readout.name)) + cell(shown(protocol::nameOf(readout.type)));
        for (const auto sensor : sensors)
            rows += cell(valueOf(visited, sensor), "number");
        rows += cell(receivedAt(visited, visit.at.date())) +
                cell(unbroken(known(visited.limits)), visited.passes ? "bad" : "") +
                cell(unbroken(known(visited.held.clock))) + cell(unbroken(known(visited.line))) +
                QStringLiteral("</tr>");
    }
    return heading(QStringLiteral("Readings")) + grid(rows);
}

/// The readouts by what they told for one setting, in the order in which they come.
using Groups = std::vector<std::pair<QString, QStringList>>;

QString wordsOf(const Groups& groups)
{
    if (groups.size() == 1 && groups.front().second.size() > 1)
        return groups.front().first + QStringLiteral(" (all)");
    QStringList words;
    for (const auto& [value, addresses] : groups)
        words << QStringLiteral("%1: %2").arg(addresses.join(QStringLiteral(", ")), value);
    return words.join(QStringLiteral("; "));
}

/// Adds a readout to those with this value.
void addTo(Groups& groups, const QString& value, int address)
{
    auto group = std::find_if(groups.begin(), groups.end(),
                              [&value](const auto& entry) { return entry.first == value; });
    if (group == groups.end()) group = groups.insert(groups.end(), {value, {}});
    group->second << QString::number(address);
}

QString references(const Visit& visit)
{
    Groups groups;
    bool some = false;
    for (const auto& visited : visit.readouts) {
        const auto& note = visited.readout.reference;
        some = some || !note.isEmpty();
        addTo(groups, note.isEmpty() ? QStringLiteral("none") : escaped(note), visited.readout.address);
    }
    return some ? QStringLiteral("<p>References: %1.</p>").arg(wordsOf(groups)) : QString();
}

QString settingsTable(const Visit& visit)
{
    std::vector<std::pair<QString, Groups>> titles;
    for (const auto& visited : visit.readouts) {
        for (const auto& setting : visited.settings) {
            auto title = std::find_if(titles.begin(), titles.end(),
                                      [&setting](const auto& entry) { return entry.first == setting.title; });
            if (title == titles.end()) title = titles.insert(titles.end(), {setting.title, {}});
            const auto value = setting.value.isEmpty() ? notKnown(setting.why) : escaped(setting.value);
            addTo(title->second, value, visited.readout.address);
        }
    }
    auto html = heading(QStringLiteral("Settings"));
    if (titles.empty())
        return html + QStringLiteral("<p>%1: the readouts were not asked.</p>").arg(notKnown());
    auto rows = headings({"Setting", "Readouts and what they told"});
    for (const auto& [title, groups] : titles) {
        rows +=
            QStringLiteral("<tr>") + cell(escaped(title)) + cell(wordsOf(groups)) + QStringLiteral("</tr>");
    }
    html += grid(rows);
    QStringList unasked;
    for (const auto& visited : visit.readouts) {
        if (visited.settings.empty()) unasked << QString::number(visited.readout.address);
    }
    if (!unasked.isEmpty()) {
        html += QStringLiteral("<p>Not asked, so %1: %2.</p>")
                    .arg(notKnown(), unasked.join(QStringLiteral(", ")));
    }
    return html;
}

QString changesTable(const Visit& visit)
{
    auto html = heading(
        QStringLiteral("Changed since %1").arg(visit.since.toString(QStringLiteral("yyyy-MM-dd HH:mm"))));
    if (!visit.changesUnknown.isEmpty())
        return html + QStringLiteral("<p>%1</p>").arg(notKnown(visit.changesUnknown));
    const auto unread = QStringLiteral("Lines of the journal that could not be read: %1.");
    const auto rest = visit.changesUnread == 0
                          ? QString()
                          : QStringLiteral("<p>%1</p>").arg(notKnown(unread.arg(visit.changesUnread)));
    if (visit.changes.empty())
        return html + QStringLiteral("<p>Nothing, according to the journal of this machine.</p>") + rest;
    auto rows = headings({"Time", "Readout", "What", "Before", "Answer", "By"});
    for (const auto& change : visit.changes) {
        const auto answer =
            change.confirmed
                ? QStringLiteral("confirmed")
                : QStringLiteral("<span class=\"bad\">not confirmed</span>, %1").arg(escaped(change.outcome));
        auto time = change.time.left(19); // without milliseconds and offset
        rows += QStringLiteral("<tr>") + cell(escaped(time.replace(u'T', u' '))) +
                cell(QString::number(change.address), "number") + cell(escaped(change.what)) +
                cell(known(change.before)) + cell(answer) + cell(escaped(change.who)) +
                QStringLiteral("</tr>");
    }
    return html + grid(rows) + rest;
}

QString remark(const Visit& visit)
{
    auto text = escaped(visit.remark).replace(u'\n', QLatin1String("<br>"));
    return heading(QStringLiteral("Remark")) +
           QStringLiteral("<p>%1</p><p>&nbsp;</p><p>Signature: ______________________________</p>")
               .arg(text.isEmpty() ? QStringLiteral("none") : text);
}

} // namespace

std::vector<SettingTold> askSettings(link::Module1& module1, const Readout& readout,
                                     const std::function<bool()>& stop)
{
    std::vector<SettingTold> settings;
    int silent = 0;
    for (const auto& setting : protocol::settingsOf(readout.type)) {
        if (QLatin1String(setting.name) == QLatin1String("clock")) continue;
        SettingTold told{QString::fromUtf8(setting.title), {}, {}};
        if (stop && stop()) {
            told.why = QStringLiteral("stopped");
        } else if (!module1.port().PortOpen()) {
            told.why = QStringLiteral("the port is closed");
        } else if (silent >= kSilentAtMost) {
            told.why = QStringLiteral("the readout did not answer");
        } else {
            auto transaction = setting.query(link::AddressToHex(readout.address));
            transaction.drains = true;
            const auto exchange = module1.transact(transaction);
            silent = exchange.outcome == link::Outcome::Silent ? silent + 1 : 0;
            const auto answer = protocol::toldBy(setting, exchange);
            if (silent > 0) {
                told.why = QStringLiteral("the readout did not answer");
            } else if (answer.value.isNull()) {
                told.why = answer.why;
            } else {
                told.value = protocol::inSentence(answer.value);
            }
        }
        settings.push_back(told);
    }
    return settings;
}

page::Page pageOf(const Visit& visit)
{
    const auto name = visit.site.name.isEmpty() ? QStringLiteral("without a name") : visit.site.name;
    page::Page page;
    page.title =
        QStringLiteral("Site report: %1, %2").arg(name, visit.at.toString(QStringLiteral("yyyy-MM-dd")));
    page.body = QStringLiteral("<h1>Site report: %1</h1>").arg(escaped(name)) + facts(visit) +
                readings(visit) + references(visit) + settingsTable(visit) + changesTable(visit) +
                remark(visit);
    return page;
}

} // namespace quorvel::site
