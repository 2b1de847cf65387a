#include "site/trendpanel.h"

#include "chart/export.h"
#include "files/replace.h"
#include "link/bytes.h"
#include "site/readinglines.h"
#include "text/duration.h"
#include "text/number.h"

#include <QFileInfo>
#include <QHBoxLayout>
#include <QVBoxLayout>

#include <algorithm>
#include <cmath>

namespace quorvel::site {

namespace {

using link::shown;
using protocol::Sensor;

constexpr double kMsOfTrend = 1000;
constexpr double kHourSeconds = 3600;
constexpr double kDaySeconds = 86400;
constexpr int kUsualDecimals = 5;
constexpr int kDriftDecimals = 6;

/// What "Show" offers.
struct Choice {
    const char* caption;
    double seconds; ///< 0: all
};
constexpr Choice kChoices[] = {{"all", 0},
                               {"last 10 minutes", 600},
                               {"last hour", kHourSeconds},
                               {"last day", kDaySeconds},
                               {"last week", 7 * kDaySeconds}};

QDateTime momentOf(double time) { return QDateTime::fromMSecsSinceEpoch(std::llround(time * kMsOfTrend)); }

QString fixed(double mm, int decimals) { return QString::number(mm, 'f', decimals); }

QString withSign(double mm, int decimals)
{
    return (mm < 0 ? QString() : QStringLiteral("+")) + fixed(mm, decimals);
}

/// "X +1.50000, Y -0.25000", what is missing left out.
QString placeWords(const TrendPoint& point)
{
    QStringList words;
    for (const auto sensor : {Sensor::X, Sensor::Y}) {
        if (!std::isnan(point.of(sensor)))
            words << shown(protocol::nameOf(sensor)) + u' ' + withSign(point.of(sensor), point.decimals);
    }
    return words.join(QStringLiteral(", "));
}

QString nameOf(const Readout& readout)
{
    return (QString::number(readout.address) + u' ' + readout.name).trimmed();
}

} // namespace

TrendPanel::TrendPanel(const Trend& trend, Messages& messages, QWidget* parent)
    : QWidget(parent), trend_(trend), messages_(messages), chart_(trend)
{
    auto* rows = new QVBoxLayout(this);
    rows->setContentsMargins({});
    auto* controls = new QHBoxLayout;
    addControls(*controls);
    rows->addLayout(controls);
    rows->addWidget(&chart_, 1);
    for (auto* label : {&figures_, &marks_}) {
        label->setTextFormat(Qt::PlainText);
        label->setTextInteractionFlags(Qt::TextSelectableByMouse);
        label->setWordWrap(true);
        rows->addWidget(label);
    }
    figures_.setObjectName(QStringLiteral("SiteFigures"));
    marks_.setObjectName(QStringLiteral("SiteMarks"));
    connect(&chart_, &TrendChart::changed, this, &TrendPanel::describe);
    describe();
}

void TrendPanel::addControls(QHBoxLayout& row)
{
    const auto labelled = [&row](const QString& caption, QComboBox& list, const char* name) {
        auto* label = new QLabel(caption);
        label->setBuddy(&list);
        list.setObjectName(QLatin1String(name));
        list.setAccessibleName(QString(caption).remove(u'&'));
        row.addWidget(label);
        row.addWidget(&list);
    };
    for (const auto& choice : kChoices)
        span_.addItem(tr(choice.caption));
    labelled(tr("S&how"), span_, "SiteSpan");
    connect(&span_, &QComboBox::activated, this,
            [this](int index) { chart_.showLatest(kChoices[index].seconds); });
    readout_.setSizeAdjustPolicy(QComboBox::AdjustToContents);
    labelled(tr("Mar&ks on"), readout_, "SiteMarksOn");
    connect(&readout_, &QComboBox::activated, &chart_, &TrendChart::setCurrent);
    relative_.setText(tr("chan&ges from the first value in sight"));
    relative_.setObjectName(QStringLiteral("SiteRelative"));
    connect(&relative_, &QCheckBox::toggled, &chart_, &TrendChart::setRelative);
    row.addWidget(&relative_);
    row.addStretch(1);
    const auto add = [&row, this](QPushButton& button, const QString& caption, const char* name,
                                  void (TrendPanel::*handler)()) {
        button.setText(caption);
        button.setObjectName(QLatin1String(name));
        button.setAutoDefault(false);
        connect(&button, &QPushButton::clicked, this, handler);
        row.addWidget(&button);
    };
    add(picture_, tr("Pict&ure ..."), "SitePicture", &TrendPanel::savePicture);
    add(csv_, tr("&CSV ..."), "SiteCsv", &TrendPanel::saveCsv);
}

void TrendPanel::choose(const Site& site, const std::vector<int>& rows)
{
    site_ = site;
    std::vector<TrendCurve> curves;
    showing_ = true;
    readout_.clear();
    for (const int row : rows) {
        const auto& readout = site_.readouts[static_cast<std::size_t>(row)];
        curves.push_back({readout.address, nameOf(readout)});
        readout_.addItem(nameOf(readout));
    }
    showing_ = false;
    chart_.setCurves(curves);
}

const Readout* TrendPanel::currentReadout() const
{
    const int current = chart_.current();
    return current < 0 ? nullptr
                       : site_.readoutAt(chart_.curves()[static_cast<std::size_t>(current)].address);
}

void TrendPanel::describe()
{
    if (showing_) return;
    readout_.setCurrentIndex(chart_.current());
    const bool some = currentReadout() && !trend_.of(currentReadout()->address).empty();
    picture_.setEnabled(some);
    csv_.setEnabled(some);
    figures_.setText(figureWords());
    marks_.setText(markWords());
}

QString TrendPanel::figureWords() const
{
    const auto* readout = currentReadout();
    if (!readout) return tr("Choose readouts in the table to see their trend.");
    const auto& points = trend_.of(readout->address);
    QStringList words;
    for (const auto sensor : {Sensor::X, Sensor::Y}) {
        const auto figures = figuresOf(points, sensor, chart_.span());
        if (figures.count == 0) continue;
        auto sentence = tr("%1: mean %2 mm, swing %3 mm")
                            .arg(shown(protocol::nameOf(sensor)), withSign(figures.mean, kUsualDecimals),
                                 fixed(figures.swing, kUsualDecimals));
        if (figures.driftPerHour)
            sentence += tr(", drift %1 mm/h").arg(withSign(*figures.driftPerHour, kDriftDecimals));
        words << sentence + tr(" (%1 readings)").arg(figures.count);
    }
    if (words.isEmpty()) return tr("%1 has no readings in sight.").arg(nameOf(*readout));
    return nameOf(*readout) + QStringLiteral(". ") + words.join(QStringLiteral("; ")) + u'.';
}

QString TrendPanel::markWords() const
{
    const auto* a = chart_.mark(TrendChart::A);
    const auto* b = chart_.mark(TrendChart::B);
    if (!a && !b) return tr("A click or the arrow keys set mark A, with Shift mark B.");
    QStringList words;
    const auto add = [&words](const char* letter, const TrendPoint* point) {
        if (!point) return;
        words << tr("%1: %2, %3")
                     .arg(QLatin1String(letter),
                          momentOf(point->time).toString(QStringLiteral("yyyy-MM-dd HH:mm:ss")),
                          placeWords(*point));
    };
    add("A", a);
    add("B", b);
    if (a && b) {
        auto difference = *b;
        for (const auto sensor : kSensors)
            difference.mm.at(placeOf(sensor)) -= a->of(sensor);
        difference.decimals = std::max(a->decimals, b->decimals);
        const auto seconds = b->time - a->time;
        words << tr("B - A: %1%2, %3")
                     .arg(seconds < 0 ? QStringLiteral("-") : QString(),
                          shown(text::duration(std::abs(seconds))), placeWords(difference));
    }
    return words.join(QStringLiteral("; ")) + u'.';
}

void TrendPanel::savePicture()
{
    QStringList endings;
    for (const auto& form : chart::forms())
        endings << QStringLiteral("*.") + form;
    const auto path =
        messages_.chooseFile(window(), {tr("Save Picture"), tr("Picture (%1)").arg(endings.join(u' ')), true,
                                        QStringLiteral("trend.png")});
    if (path.isEmpty() || !mayWrite(messages_, window(), path)) return;
    QStringList names;
    for (const auto& curve : chart_.curves())
        names << curve.name;
    const auto failure =
        chart::save(chart_, path, QFileInfo(path).suffix().toLower(),
                    {site_.name, names.join(QStringLiteral(", ")), momentOf(chart_.span().to), true});
    Q_EMIT told(failure.isEmpty() ? tr("Saved as %1.").arg(path) : failure);
}

void TrendPanel::saveCsv()
{
    const auto path = messages_.chooseFile(window(), {tr("Save Readings"), QStringLiteral("Readings (*.csv)"),
                                                      true, QStringLiteral("trend.csv")});
    if (path.isEmpty() || !mayWrite(messages_, window(), path)) return;
    auto rows = csvHeader();
    for (const auto& curve : chart_.curves()) {
        const auto* readout = site_.readoutAt(curve.address);
        const auto [first, last] = within(trend_.of(curve.address), chart_.span());
        for (auto point = first; readout && point != last; ++point) {
            Reading reading;
            reading.address = curve.address;
            reading.time = momentOf(point->time);
            for (const auto sensor : kSensors) {
                if (!std::isnan(point->of(sensor))) {
                    reading.received.at(placeOf(sensor)) =
                        fixed(point->of(sensor), point->decimals).toStdString();
                }
            }
            const bool some = std::any_of(reading.received.begin(), reading.received.end(),
                                          [](const auto& value) { return value.has_value(); });
            reading.outcome = some ? "complete" : "no value";
            rows += csvRow({site_.name, *readout}, reading);
        }
    }
    const auto saved = files::replaceContent(QFileInfo(path).filesystemFilePath(), rows.toStdString());
    Q_EMIT told(saved ? tr("Saved as %1.").arg(path) : QString::fromStdString(saved.error()));
}

} // namespace quorvel::site
