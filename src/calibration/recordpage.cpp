#include "calibration/recordpage.h"

#include "calibration/downloadnote.h"
#include "calibration/errorchart.h"
#include "calibration/fitchart.h"
#include "chart/export.h"
#include "files/name.h"
#include "files/replace.h"
#include "link/bytes.h"
#include "text/number.h"

#include <QJsonArray>
#include <QJsonDocument>

#include <array>

namespace quorvel::calibration {

namespace {

constexpr QSize kChartOnPage(560, 400);
constexpr double kChartWidthMm = 89;
constexpr std::size_t kDownloadsOnPage = 6;
constexpr auto kDayAndTime = "yyyy-MM-dd HH:mm";

QString escaped(const QString& text) { return text.toHtmlEscaped(); }

QString cell(const QString& html, const char* attributes = "class=\"number\"")
{
    return QStringLiteral("<td %1>%2</td>").arg(QLatin1String(attributes), html);
}

QString heading(const QString& html, const char* attributes = "")
{
    return QStringLiteral("<th %1>%2</th>").arg(QLatin1String(attributes), html);
}

QString plain(const std::optional<double>& mm)
{
    return mm ? link::shown(text::format(*mm, "0.000")) : QStringLiteral("-");
}

QString signedOrDash(const std::optional<double>& mm) { return mm ? signedMm(*mm) : QStringLiteral("-"); }
QString plainOrDash(const std::optional<double>& mm) { return mm ? plainMm(*mm) : QStringLiteral("-"); }

std::array<RunJudged, std::size(kRuns)> allRuns(const RecordView& view)
{
    return {view.judge(RunKind::Found), view.judge(RunKind::Measured), view.judge(RunKind::Left)};
}

/// When the takes of a run were made.
QString timesOf(const Run& run)
{
    QDateTime first;
    QDateTime last;
    for (const auto& point : run) {
        for (const auto& pass : point.passes) {
            for (const auto& take : pass.takes) {
                if (!first.isValid() || take.at < first) first = take.at;
                if (!last.isValid() || take.at > last) last = take.at;
            }
        }
    }
    return first.isValid() ? spanText(first, last) : QString();
}

QString headOf(const RecordView& view)
{
    const auto& record = view.record();
    const auto row = [](const char* left, const QString& first, const char* right, const QString& second) {
        return QStringLiteral(
                   "<tr><th>%1</th><td width=\"34%\">%2</td><th>%3</th><td width=\"34%\">%4</td></tr>")
            .arg(QLatin1String(left), escaped(first), QLatin1String(right), escaped(second));
    };
    const auto readout = record.address > 0 ? QString::number(record.address) : QString();
    const auto tolerance = record.tolerance
                               ? link::shown(text::general(*record.tolerance)) + QStringLiteral(" mm") +
                                     (record.zeroIsFree ? QStringLiteral(", the zero is free") : QString())
                               : QStringLiteral("not entered");
    return QStringLiteral("<table class=\"grid\" width=\"100%\" cellspacing=\"0\">") +
           row("Readout address", readout, "Serial number", record.serial) +
           row("Direction", link::shown(protocol::nameOf(view.direction().direction)), "Gauge",
               record.gauge) +
           row("Person", record.person, "Permitted error", tolerance) +
           row("Points of", ownershipText(view.ownership()), "Remark", record.remark) +
           QStringLiteral("</table>");
}

/// The runs side by side; for Z there are two tables.
QString tableOf(const std::array<RunJudged, std::size(kRuns)>& runs, std::size_t column)
{
    auto html = QStringLiteral("<table class=\"grid\" width=\"100%\" cellspacing=\"0\"><tr>") + heading({});
    for (const auto& row : kRuns) {
        const bool measured = row.kind == RunKind::Measured;
        html += heading(QLatin1String(row.name), measured ? "colspan=\"5\"" : "colspan=\"3\"");
    }
    html += QStringLiteral("</tr><tr>") + heading(QStringLiteral("Point"), "class=\"number\"");
    for (const auto& row : kRuns) {
        html += heading(QStringLiteral("Dial"), "class=\"number\"") +
                heading(QStringLiteral("Reading"), "class=\"number\"");
        if (row.kind == RunKind::Measured) {
            html += heading(QStringLiteral("Spread"), "class=\"number\"") +
                    heading(QStringLiteral("Hyst."), "class=\"number\"");
        }
        html += heading(row.kind == RunKind::Measured ? QStringLiteral("Residual") : QStringLiteral("Error"),
                        "class=\"number\"");
    }
    html += QStringLiteral("</tr>");
    for (std::size_t point = 0; point < kPoints; ++point) {
        html += QStringLiteral("<tr>") + cell(QString::number(point));
        for (const auto& run : runs) {
            const auto& judged = run.columns[column].points[point];
            html += cell(plain(judged.dial)) + cell(plain(judged.reading));
            if (run.kind == RunKind::Measured)
                html += cell(plainOrDash(judged.spread)) + cell(signedOrDash(judged.hysteresis));
            html += cell(signedOrDash(judged.error));
        }
        html += QStringLiteral("</tr>");
    }
    return html + QStringLiteral("</table>");
}

QString verdictsOf(const RecordView& view, const std::array<RunJudged, std::size(kRuns)>& runs)
{
    QString html;
    for (const auto& run : runs) {
        const auto& row = kRuns[static_cast<std::size_t>(run.kind)];
        const auto times = timesOf(view.record().run(run.kind));
        html += QStringLiteral("<p><b>%1</b>%2: <span%3>%4</span></p>")
                    .arg(QLatin1String(row.name),
                         times.isEmpty() ? QString() : QStringLiteral(" (%1)").arg(times),
                         run.passes == false ? QStringLiteral(" class=\"bad\"") : QString(),
                         escaped(run.verdict));
        for (const auto& column : run.columns) {
            if (run.kind != RunKind::Measured || !column.fit) continue;
            html += QStringLiteral("<p>%1: %2</p>")
                        .arg(escaped(link::shown(column.column)),
                             escaped(link::shown(fitText(*column.fit))
                                         .replace(QLatin1String("\r\n"), QLatin1String(", "))));
        }
        for (const auto& hint : run.hints) {
            html +=
                QStringLiteral("<p class=\"small\">%1: %2</p>").arg(QLatin1String(row.name), escaped(hint));
        }
    }
    return html;
}

/// The latest tables that went to the readout since the record was begun.
QString downloadsOf(const RecordData& record)
{
    QStringList rows;
    for (const auto& note : record.downloads) {
        const bool counts = (record.address == 0 || note.address == record.address) &&
                            (!record.begun.isValid() || note.at >= record.begun);
        if (!counts) continue;
        rows << QStringLiteral("<tr><td>%1</td><td>%2</td><td>%3</td></tr>")
                    .arg(note.at.toString(QLatin1String(kDayAndTime)),
                         note.zeros ? QStringLiteral("correction off") : QStringLiteral("calibration"),
                         escaped(textOf(note)));
    }
    if (rows.isEmpty()) return QStringLiteral("<p>No table was sent.</p>");
    const auto before = rows.size() - std::min(rows.size(), static_cast<qsizetype>(kDownloadsOnPage));
    return QStringLiteral("<table class=\"grid\" width=\"100%\" cellspacing=\"0\">") +
           rows.mid(before).join(QString()) + QStringLiteral("</table>") +
           (before > 0
                ? QStringLiteral("<p class=\"small\">%1 earlier ones are in the JSON record.</p>").arg(before)
                : QString());
}

QString signatures(const RecordData& record)
{
    const auto line = QStringLiteral("<br>______________________________<br>");
    return QStringLiteral("<table width=\"100%\"><tr><td width=\"50%\">%1Calibrated by %2, date</td>"
                          "<td width=\"50%\">%1Checked by, date</td></tr></table>")
        .arg(line, escaped(record.person));
}

QImage fitPicture(const RunJudged& measured)
{
    FitChart chart;
    for (const auto& column : measured.columns) {
        if (column.fit) chart.add({link::shown(column.column), *column.table, *column.fit});
    }
    return chart.count() > 0 ? chart.picture(kChartOnPage) : QImage();
}

QImage errorPicture(const RunJudged& found, const RunJudged& left, const std::optional<double>& tolerance)
{
    ErrorChart chart;
    chart.show({found, left}, tolerance);
    return chart.count() > 0 ? chart.picture(kChartOnPage) : QImage();
}

QString picturesIn(const page::Page& page)
{
    QString html;
    for (const auto& picture : page.pictures) {
        html += QStringLiteral("<td width=\"50%\"><img src=\"%1\" alt=\"%2\"></td>")
                    .arg(picture.name, picture.name == QLatin1String("fit")
                                           ? QStringLiteral("Chart of the fitted line and its residuals")
                                           : QStringLiteral("Chart of the errors as found and as left"));
    }
    return html.isEmpty() ? html : QStringLiteral("<table width=\"100%\"><tr>%1</tr></table>").arg(html);
}

QJsonValue orNothing(const std::optional<double>& mm) { return mm ? QJsonValue(*mm) : QJsonValue(); }

QJsonObject judgedColumn(const ColumnJudged& column)
{
    QJsonArray points;
    for (const auto& point : column.points) {
        points << QJsonObject{{"dial", orNothing(point.dial)},
                              {"reading", orNothing(point.reading)},
                              {"takes", point.takes},
                              {"spread", orNothing(point.spread)},
                              {"hysteresis", orNothing(point.hysteresis)},
                              {"error", orNothing(point.error)}};
    }
    QJsonObject json{{"column", link::shown(column.column)}, {"points", points}};
    json["worstPoint"] = column.worst ? QJsonValue(static_cast<int>(*column.worst)) : QJsonValue();
    json["zero"] = orNothing(column.zero);
    if (column.fit && column.exact) {
        json["line"] = QJsonObject{{"slope", static_cast<double>(column.fit->slope)},
                                   {"intercept", static_cast<double>(column.fit->intercept)},
                                   {"nonlinearError", column.fit->nonlinearError},
                                   {"maxError", static_cast<double>(column.fit->maxError)}};
        json["doubleLine"] = QJsonObject{{"slope", column.exact->slope},
                                         {"intercept", column.exact->intercept},
                                         {"nonlinearError", column.exact->nonlinearError},
                                         {"maxError", column.exact->maxError}};
    }
    return json;
}

QJsonObject judgedRun(const RunJudged& run)
{
    QJsonArray columns;
    for (const auto& column : run.columns)
        columns << judgedColumn(column);
    return {{"columns", columns},
            {"passes", run.passes ? QJsonValue(*run.passes) : QJsonValue()},
            {"verdict", run.verdict},
            {"hints", QJsonArray::fromStringList(run.hints)}};
}

bool isJson(const std::filesystem::path& path)
{
    return QString::fromStdString(files::inWords(path.extension())).toLower() == QLatin1String(".json");
}

} // namespace

page::Page recordPage(const RecordView& view, const QDateTime& written)
{
    const auto& record = view.record();
    const auto runs = allRuns(view);
    page::Page page;
    page.title = QStringLiteral("Calibration record, readout %1, %2 direction")
                     .arg(record.address > 0 ? QString::number(record.address) : QStringLiteral("not named"),
                          link::shown(protocol::nameOf(view.direction().direction)));
    const auto add = [&page](const char* name, const QImage& image) {
        if (!image.isNull()) page.pictures.push_back({QLatin1String(name), image, kChartWidthMm});
    };
    add("fit", fitPicture(runs[1]));
    add("errors", errorPicture(runs[0], runs[2], record.tolerance));
    page.body = QStringLiteral("<h1>Calibration Record</h1>") + headOf(view) +
                QStringLiteral("<h2>Results before and after the adjustment</h2>") + verdictsOf(view, runs);
    for (std::size_t i = 0; i < view.direction().readings.size(); ++i) {
        page.body += QStringLiteral("<h2>%1, all lengths in mm</h2>")
                         .arg(escaped(link::shown(view.direction().readings[i].name))) +
                     tableOf(runs, i);
    }
    page.body +=
        picturesIn(page) + QStringLiteral("<h2>Tables sent to the readout</h2>") + downloadsOf(record) +
        signatures(record) +
        QStringLiteral(
            "<p class=\"small\">Error: reading less dial reading. Residual: distance from the fitted "
            "line. Made by %1 on %2 from %3.</p>")
            .arg(chart::programName(), written.toString(QLatin1String(kDayAndTime)),
                 escaped(QString::fromStdString(files::inWords(view.workingFile()))));
    return page;
}

QJsonObject recordReport(const RecordView& view, const QDateTime& written)
{
    auto json = recordJson(view.record(), view.direction());
    json["program"] = chart::programName();
    json["written"] = written.toString(Qt::ISODate);
    json["workingFile"] = QString::fromStdString(files::inWords(view.workingFile()));
    QJsonObject judgement;
    for (const auto& run : allRuns(view))
        judgement[QLatin1String(kRuns[static_cast<std::size_t>(run.kind)].key)] = judgedRun(run);
    json["judgement"] = judgement;
    return json;
}

bool isRecordName(const std::filesystem::path& path) { return isJson(path) || page::isPageName(path); }

files::Status saveRecord(const RecordView& view, const std::filesystem::path& path, const QDateTime& written)
{
    if (!isJson(path)) return page::save(recordPage(view, written), path);
    return files::replaceContent(path, QJsonDocument(recordReport(view, written)).toJson().toStdString());
}

} // namespace quorvel::calibration
