#include "grayscale/pixelchart.h"

#include "grayscale/drawthart.h"
#include "text/number.h"

#include <algorithm>
#include <cmath>

namespace quorvel::grayscale {

namespace {

constexpr auto kBehind = "behind";
constexpr double kLeastDifference = 20; // levels that the axis of the difference shows at least
constexpr double kAbove = 5;            // times as much room above the zero of the difference as below it
constexpr int kMarkSize = 11;
constexpr int kLegendColumns = 4;
constexpr int kDifferenceSteps = 20; // on the whole height, of which a third is numbered
constexpr int kLegendMargin = 3;
constexpr int kBandOpacity = 70;
constexpr double kMarkWidth = 2;

/// Numbers the axis of the difference around its zero alone: what is above is there for the other curves.
class AroundZero final : public QCPAxisTicker {
public:
    void setMost(double most) { most_ = most; }

protected:
    QVector<double> createTickVector(double tickStep, const QCPRange& /*range*/) override
    {
        return QCPAxisTicker::createTickVector(tickStep, {-most_, most_});
    }

private:
    double most_ = kLeastDifference;
};

QVector<double> asVector(const std::vector<double>& values) { return {values.begin(), values.end()}; }

} // namespace

int pixelNearest(link::InstrumentType type, double mm, int count)
{
    const double first = pixelPosition(type, 1);
    const double pitch = pixelPosition(type, 2) - first;
    return std::clamp(static_cast<int>(std::lround((mm - first) / pitch)) + 1, 1, std::max(count, 1));
}

PixelChart::PixelChart(QWidget* parent) : TChart(parent), difference_(axisRect()->addAxis(QCPAxis::atRight))
{
    addLayer(QLatin1String(kBehind), layer(QStringLiteral("main")), limBelow);
    difference_->setLabel(tr("Difference"));
    difference_->grid()->setVisible(false);
    difference_->setSubTicks(false);
    difference_->setTicker(QSharedPointer<AroundZero>::create());
    difference_->ticker()->setTickCount(kDifferenceSteps);
    legend->setWrap(kLegendColumns);
    axisRect()->insetLayout()->setInsetPlacement(0, QCPLayoutInset::ipBorderAligned);
    axisRect()->insetLayout()->setInsetAlignment(0, Qt::AlignTop | Qt::AlignHCenter);
    axisRect()->insetLayout()->setMargins({0, kLegendMargin, 0, 0});
    difference_->setVisible(false);
    dress();
}

QVector<double> PixelChart::places(std::size_t count) const
{
    QVector<double> positions;
    for (int pixel = 1; pixel <= static_cast<int>(count); ++pixel)
        positions << pixelPosition(reading_.type, pixel);
    return positions;
}

void PixelChart::draw(const PixelReading& reading, const PixelReading* reference,
                      const ProfileFigures& figures)
{
    const bool keepsPart =
        !isWhole() && reading.direction == reading_.direction && reading.type == reading_.type;
    const auto across = xAxis->range();
    const auto upward = yAxis->range();
    removeAllSeries();
    reading_ = reading;
    reference_ = reference ? reference->values : std::vector<double>();
    differences_ = reference ? differenceOf(reading, *reference) : std::vector<double>();
    difference_->setVisible(!differences_.empty());
    addSeries(places(reading.values.size()), asVector(reading.values), chart::Role::First,
              reading.readings > 0 ? tr("Pixels") : QString());
    addBand();
    if (reference) addReference(*reference);
    addDifference();
    addMarks(figures);
    addEnds();
    drawAxes(*this, reading.direction.toStdString(), reading.type);
    if (keepsPart) showPart(across, upward);
}

void PixelChart::addBand()
{
    if (reading_.spread.empty()) return;
    QVector<double> low;
    QVector<double> high;
    for (std::size_t i = 0; i < reading_.values.size(); ++i) {
        low << reading_.values[i] - reading_.spread[i];
        high << reading_.values[i] + reading_.spread[i];
    }
    const auto positions = places(reading_.values.size());
    addSeries(positions, low, chart::Role::First, QString());
    auto* lower = graph();
    addSeries(positions, high, chart::Role::First, tr("Spread of %1 readings").arg(reading_.readings));
    auto* upper = graph();
    for (auto* edge : {lower, upper}) {
        edge->setLayer(QLatin1String(kBehind));
        edge->setPen(Qt::NoPen);
    }
    upper->setBrush(QColor(0, 0, 0, kBandOpacity));
    upper->setChannelFillGraph(lower);
    give(upper, chart::Role::First);
    upper->setPen(Qt::NoPen);
}

void PixelChart::addReference(const PixelReading& reference)
{
    addSeries(places(reference.values.size()), asVector(reference.values), chart::Role::Behind,
              tr("Reference"));
    graph()->setLayer(QLatin1String(kBehind));
}

void PixelChart::addDifference()
{
    if (differences_.empty()) return;
    double most = kLeastDifference;
    for (const double difference : differences_)
        if (!std::isnan(difference)) most = std::max(most, std::fabs(difference));
    difference_->setRange(-most, kAbove * most);
    difference_->ticker().dynamicCast<AroundZero>()->setMost(most);
    auto* curve = addGraph(xAxis, difference_);
    curve->setData(places(differences_.size()), asVector(differences_), true);
    curve->setName(tr("Difference"));
    curve->addToLegend();
    give(curve, chart::Role::Second);
}

void PixelChart::addMarksAt(const std::vector<int>& pixels, QCPScatterStyle::ScatterShape shape,
                            const QString& name)
{
    QVector<double> positions;
    QVector<double> heights;
    for (const int pixel : pixels) {
        const double value = reading_.values.at(static_cast<std::size_t>(pixel - 1));
        positions << pixelPosition(reading_.type, pixel);
        heights << (std::isnan(value) ? kLowestBrightness : value);
    }
    if (positions.isEmpty()) return;
    auto* marks = addGraph();
    marks->setData(positions, heights, true);
    marks->setLineStyle(QCPGraph::lsNone);
    marks->setScatterStyle({shape, kMarkSize});
    marks->setPen(QPen(Qt::black, kMarkWidth));
    marks->setName(name);
    marks->addToLegend();
    give(marks, chart::Role::Mark);
}

void PixelChart::addMarks(const ProfileFigures& figures)
{
    const auto count = static_cast<int>(reading_.values.size());
    std::vector<int> dips;
    for (const auto& dip : figures.dips)
        dips.push_back(pixelNearest(reading_.type, dip.placeMm, count));
    addMarksAt(dips, QCPScatterStyle::ssCircle, tr("Dip"));
    addMarksAt(figures.dark, QCPScatterStyle::ssTriangle, tr("Dark pixel"));
    addMarksAt(figures.saturated, QCPScatterStyle::ssTriangleInverted, tr("Saturated pixel"));
    addMarksAt(figures.damaged, QCPScatterStyle::ssCross, tr("Damaged pixel"));
    if (!figures.shadow) return;
    auto name = tr("Shadow");
    for (const double side : {-0.5, 0.5}) {
        const double at = figures.shadow->centreMm + side * figures.shadow->widthMm;
        addSeries({at, at}, {kLowestBrightness, kHighestBrightness}, chart::Role::Third, name);
        auto pen = graph()->pen();
        pen.setStyle(Qt::DashLine);
        graph()->setPen(pen);
        name.clear();
    }
}

void PixelChart::addEnds()
{
    auto name = tr("Sensor ends");
    for (const double end : endLines(reading_.direction.toStdString(), reading_.type)) {
        addSeries({end, end}, {kLowestBrightness, kHighestBrightness}, chart::Role::End, name);
        name.clear();
    }
}

QString PixelChart::moreAbout(int pixel) const
{
    const auto index = static_cast<std::size_t>(pixel - 1);
    const auto number = [](double value) {
        return QString::fromStdString(text::general(std::round(value * 10) / 10));
    };
    QString more;
    if (index < reading_.spread.size()) more += tr(" ± %1").arg(number(reading_.spread[index]));
    if (index < differences_.size() && !std::isnan(differences_[index])) {
        more +=
            tr(", reference %1, difference %2").arg(number(reference_[index]), number(differences_[index]));
    }
    return more;
}

} // namespace quorvel::grayscale
