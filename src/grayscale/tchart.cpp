#include "grayscale/tchart.h"

#include "text/number.h"

#include <QAccessibleWidget>
#include <QPainter>

#include <algorithm>
#include <cmath>

namespace quorvel::grayscale {

namespace {

constexpr double kFewestMm = 0.05;
constexpr double kFewestLevels = 4;

constexpr int kPositionSteps = 10;
constexpr int kBrightnessSteps = 15;
constexpr int kAround = 16; // columns to both sides that say what is usual

/// Between the red lines of every direction, above what a pixel reaches.
constexpr QRectF kLegendPlace(0.64, 0.015, 0.28, 0.06);

/// Screen readers are told that this is a chart.
QAccessibleInterface* accessibleChart(const QString& /*className*/, QObject* object)
{
    auto* chart = qobject_cast<TChart*>(object);
    return chart ? new QAccessibleWidget(chart, QAccessible::Chart) : nullptr;
}

QString inMillimetres(double position) { return QString::fromStdString(text::format(position, "0.000")); }

/// A mean of several readings has parts.
QString brightnessText(double brightness)
{
    return std::isnan(brightness) ? TChart::tr("damaged")
                                  : QString::fromStdString(text::general(std::round(brightness * 10) / 10));
}

/// The label that is a word, the axis' name; null when there is none.
const AxisLabel* nameIn(const std::vector<AxisLabel>& labels)
{
    const auto found = std::find_if(labels.begin(), labels.end(),
                                    [](const AxisLabel& label) { return !text::isNumber(label.text); });
    return found == labels.end() ? nullptr : &*found;
}

/// Names the axis beside it while its own label is out of sight.
void nameAxis(QCPAxis& axis, const std::vector<AxisLabel>& labels)
{
    const auto* name = nameIn(labels);
    const bool out = name && !axis.range().contains(name->at);
    axis.setLabel(out ? QString::fromStdString(name->text) : QString());
}

} // namespace

TChart::TChart(QWidget* parent)
    : ZoomChart(parent), title_(new QCPTextElement(this)),
      positionTicker_(QSharedPointer<LabelTicker>::create(true, kPositionSteps)),
      brightnessTicker_(QSharedPointer<LabelTicker>::create(false, kBrightnessSteps))
{
    [[maybe_unused]] static const bool installed = [] {
        QAccessible::installFactory(accessibleChart);
        return true;
    }();
    setFewest(kFewestMm, kFewestLevels);
    setAccessibleDescription(tr("Plus and minus zoom, with Control the brightness. Arrows move, Home shows "
                                "the whole, Backspace what was "
                                "shown before. Control and the arrows step from pixel to pixel, the space "
                                "bar leaves a second cursor behind. L "
                                "hides the legend."));
    plotLayout()->insertRow(0);
    plotLayout()->addElement(0, 0, title_);
    setUpAxes();
    setUpLegend();
    dress();
}

// The grid hangs on the axes at the top and at the right, so that a label such as the unit draws no line of its own.
void TChart::setUpAxes()
{
    for (auto* axis : {xAxis, yAxis, xAxis2, yAxis2}) {
        axis->setSubTicks(false);
        axis->setVisible(true);
    }
    for (auto* axis : {xAxis2, yAxis2}) {
        axis->setTicks(false);
        axis->setTickLabels(false);
        axis->ticker()->setTickCount(axis == xAxis2 ? kPositionSteps : kBrightnessSteps);
        axis->grid()->setVisible(true);
    }
    xAxis->grid()->setVisible(false);
    yAxis->grid()->setVisible(false);
    xAxis->setTicker(positionTicker_);
    yAxis->setTicker(brightnessTicker_);
    const auto rangeChanged = qOverload<const QCPRange&>(&QCPAxis::rangeChanged);
    const auto setRange = qOverload<const QCPRange&>(&QCPAxis::setRange);
    connect(xAxis, rangeChanged, xAxis2, setRange);
    connect(yAxis, rangeChanged, yAxis2, setRange);
}

void TChart::setUpLegend()
{
    legend->setVisible(true);
    legend->setFillOrder(QCPLegend::foColumnsFirst);
    axisRect()->insetLayout()->setInsetPlacement(0, QCPLayoutInset::ipFree);
    axisRect()->insetLayout()->setInsetRect(0, kLegendPlace);
    setAutoAddPlottableToLegend(false);
}

void TChart::setTitle(const QString& title)
{
    title_->setText(title);
    setAccessibleName(title);
    replot();
}

void TChart::removeAllSeries()
{
    legend->clearItems();
    clearGraphs();
    pointed_ = {};
    second_ = -1;
    replot();
}

void TChart::addSeries(const QVector<double>& positions, const QVector<double>& values, chart::Role role,
                       const QString& legendText)
{
    auto* series = addGraph();
    series->setData(positions, values, true);
    give(series, role);
    series->setName(legendText);
    if (!legendText.isEmpty()) series->addToLegend();
}

void TChart::setPositionLabels(std::vector<AxisLabel> labels)
{
    positionTicker_->setLabels(std::move(labels));
}

void TChart::setBrightnessLabels(std::vector<AxisLabel> labels)
{
    brightnessTicker_->setLabels(std::move(labels));
}

void TChart::partShown()
{
    nameAxis(*xAxis, positionLabels());
    nameAxis(*yAxis, brightnessLabels());
}

void TChart::leaveEvent(QEvent* event)
{
    ZoomChart::leaveEvent(event);
    setCursorTo({});
}

void TChart::keyPressEvent(QKeyEvent* event)
{
    const bool control = event->modifiers().testFlag(Qt::ControlModifier);
    if (control && event->key() == Qt::Key_Left) return step(-1);
    if (control && event->key() == Qt::Key_Right) return step(1);
    if (event->key() == Qt::Key_Space) return keepSecond();
    ZoomChart::keyPressEvent(event);
}

/// The pixel that the cursor stands on, else the middle.
double TChart::keyboardCentre() const
{
    return pointed_.out >= 0 ? pixelAt(pointed_.out).key : xAxis->range().center();
}

void TChart::pointedTo(const QPoint& at)
{
    setCursorTo(pixelCount() > 0 && axisRect()->rect().contains(at) ? columnAt(at.x()) : Column());
}

void TChart::clickedAt(const QPoint& at)
{
    pointedTo(at);
    keepSecond();
}

int TChart::nearestTo(double position) const
{
    const auto series = graph(0)->data();
    auto found = series->findEnd(position, false);
    if (found == series->constEnd()) --found;
    if (found != series->constBegin() && position - std::prev(found)->key < found->key - position) --found;
    return static_cast<int>(found - series->constBegin());
}

// Many pixels can share a column of the screen. The one that is farthest from what is usual around it stands out: a dip or
// a peak of one pixel is found.
TChart::Column TChart::columnAt(int x) const
{
    const auto edge = [this](double at) { return xAxis->pixelToCoord(at); };
    Column column{nearestTo(edge(x - 0.5)), nearestTo(edge(x + 0.5)), nearestTo(edge(x))};
    if (column.first < column.last && pixelAt(column.first).key < edge(x - 0.5)) ++column.first;
    if (column.first < column.last && pixelAt(column.last).key >= edge(x + 0.5)) --column.last;
    if (column.first >= column.last) return {column.out, column.out, column.out};
    std::vector<double> around;
    const int last = nearestTo(edge(x + kAround));
    for (int i = nearestTo(edge(x - kAround)); i <= last; ++i) {
        const double value = pixelAt(i).value;
        if (!std::isnan(value)) around.push_back(value);
    }
    if (around.empty()) return column;
    const auto middle = around.begin() + static_cast<std::ptrdiff_t>(around.size() / 2);
    std::nth_element(around.begin(), middle, around.end());
    double farthest = -1;
    for (int i = column.first; i <= column.last; ++i) {
        const double away = std::fabs(pixelAt(i).value - *middle);
        if (away <= farthest || std::isnan(away)) continue;
        farthest = away;
        column.out = i;
    }
    return column;
}

void TChart::setCursorTo(const Column& column)
{
    pointed_ = column;
    Q_EMIT pointedAt(cursorText());
    update();
}

void TChart::pointTo(int pixel)
{
    const int index = pixel - 1;
    if (index < 0 || index >= pixelCount()) return;
    const double position = pixelAt(index).key;
    const auto seen = xAxis->range();
    if (!seen.contains(position))
        showPart({position - seen.size() / 2, position + seen.size() / 2}, yAxis->range());
    setCursorTo({index, index, index});
}

void TChart::step(int pixels)
{
    if (pixelCount() == 0) return;
    const int from = pointed_.out >= 0 ? pointed_.out + pixels : nearestTo(xAxis->range().center());
    pointTo(std::clamp(from, 0, pixelCount() - 1) + 1);
}

void TChart::keepSecond()
{
    if (pointed_.out < 0) return;
    second_ = second_ == pointed_.out ? -1 : pointed_.out;
    setCursorTo(pointed_);
}

QString TChart::cursorText() const
{
    if (pointed_.out < 0) return {};
    const auto pixel = pixelAt(pointed_.out);
    auto said =
        tr("Pixel %1: %2 mm, %3")
            .arg(QString::number(pointed_.out + 1), inMillimetres(pixel.key), brightnessText(pixel.value));
    if (pointed_.first < pointed_.last)
        said += tr(" (the extreme of pixels %1 to %2)").arg(pointed_.first + 1).arg(pointed_.last + 1);
    said += moreAbout(pointed_.out + 1);
    if (second_ < 0 || second_ >= pixelCount() || second_ == pointed_.out) return said;
    const auto other = pixelAt(second_);
    return said + tr("; from pixel %1: %2 mm, %3")
                      .arg(QString::number(second_ + 1), inMillimetres(pixel.key - other.key),
                           brightnessText(pixel.value - other.value));
}

void TChart::paintMarks(QPainter& painter)
{
    paintCursor(painter, second_, Qt::SolidLine);
    paintCursor(painter, pointed_.out, Qt::DotLine);
}

void TChart::paintCursor(QPainter& painter, int index, Qt::PenStyle style) const
{
    if (index < 0 || index >= pixelCount()) return;
    const auto pixel = pixelAt(index);
    const double x = xAxis->coordToPixel(pixel.key);
    painter.setPen(QPen(colours().ink, 1, style));
    painter.drawLine(QPointF(x, axisRect()->top()), QPointF(x, axisRect()->bottom()));
    if (std::isnan(pixel.value)) return;
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(colours().of(chart::Role::First));
    painter.setBrush(colours().paper);
    painter.drawEllipse(QPointF(x, yAxis->coordToPixel(pixel.value)), 3.5, 3.5);
    painter.setRenderHint(QPainter::Antialiasing, false);
}

} // namespace quorvel::grayscale
