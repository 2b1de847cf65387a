#include "chart/chart.h"

#include <QEvent>

namespace quorvel::chart {

namespace {

constexpr auto kRole = "role";
constexpr double kTitleSize = 1.25; // of the other texts

QFont titleFont(QFont font)
{
    font.setBold(true);
    if (font.pointSizeF() > 0) {
        font.setPointSizeF(font.pointSizeF() * kTitleSize);
    } else {
        font.setPixelSize(qRound(font.pixelSize() * kTitleSize));
    }
    return font;
}

std::optional<Role> roleOf(const QObject& object)
{
    const auto role = object.property(kRole);
    return role.isValid() ? std::optional(static_cast<Role>(role.toInt())) : std::nullopt;
}

void paint(QCPAbstractPlottable& curve, const QColor& colour)
{
    auto pen = curve.pen();
    pen.setColor(colour);
    curve.setPen(pen);
    auto brush = curve.brush();
    if (brush.style() == Qt::NoBrush) return;
    auto fill = colour;
    fill.setAlpha(brush.color().alpha());
    brush.setColor(fill);
    curve.setBrush(brush);
}

} // namespace

Chart::Chart(QWidget* parent) : QCustomPlot(parent) { dress(); }

void Chart::give(QCPAbstractPlottable* curve, Role role)
{
    curve->setProperty(kRole, static_cast<int>(role));
    paint(*curve, colours().of(role));
}

void Chart::give(QCPItemText* text, Role role)
{
    text->setProperty(kRole, static_cast<int>(role));
    text->setFont(font());
    text->setColor(colours().of(role));
}

Colours Chart::colours() const { return onPaper_ ? coloursOnPaper() : coloursOf(palette()); }

void Chart::dress()
{
    const auto colours = this->colours();
    setBackground(QBrush(colours.paper));
    for (auto* element : plotLayout()->elements(true)) {
        if (auto* rect = qobject_cast<QCPAxisRect*>(element)) dressAxes(*rect, colours);
        if (auto* list = qobject_cast<QCPLegend*>(element)) dressLegend(*list, colours);
        if (auto* title = qobject_cast<QCPTextElement*>(element)) {
            title->setFont(titleFont(font()));
            title->setTextColor(colours.ink);
        }
    }
    for (int i = 0; i < plottableCount(); ++i) {
        if (const auto role = roleOf(*plottable(i))) paint(*plottable(i), colours.of(*role));
    }
    for (int i = 0; i < itemCount(); ++i) {
        auto* text = qobject_cast<QCPItemText*>(item(i));
        const auto role = text ? roleOf(*text) : std::nullopt;
        if (!role) continue;
        text->setFont(font());
        text->setColor(colours.of(*role));
    }
    dressed(colours);
}

void Chart::dressAxes(QCPAxisRect& rect, const Colours& colours) const
{
    for (auto* axis : rect.axes()) {
        axis->setBasePen(QPen(colours.ink));
        axis->setTickPen(QPen(colours.ink));
        axis->setSubTickPen(QPen(colours.ink));
        axis->setTickLabelColor(colours.ink);
        axis->setTickLabelFont(font());
        axis->setLabelColor(colours.ink);
        axis->setLabelFont(font());
        axis->grid()->setPen(QPen(colours.grid));
        axis->grid()->setZeroLinePen(QPen(colours.grid));
    }
}

void Chart::dressLegend(QCPLegend& list, const Colours& colours) const
{
    list.setFont(font());
    list.setTextColor(colours.ink);
    list.setBrush(colours.veil);
    list.setBorderPen(Qt::NoPen);
    for (int i = 0; i < list.itemCount(); ++i) {
        auto* row = list.item(i);
        if (!row) continue; // an empty place of a legend with columns
        row->setFont(font());
        row->setTextColor(colours.ink);
    }
}

void Chart::changeEvent(QEvent* event)
{
    QCustomPlot::changeEvent(event);
    if (event->type() != QEvent::PaletteChange && event->type() != QEvent::FontChange) return;
    dress();
    replot(rpQueuedReplot);
}

Chart::OnPaper::OnPaper(Chart& chart) : chart_(chart)
{
    chart_.onPaper_ = true;
    chart_.dress();
}

Chart::OnPaper::~OnPaper()
{
    chart_.onPaper_ = false;
    chart_.dress();
}

} // namespace quorvel::chart
