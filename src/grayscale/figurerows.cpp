#include "grayscale/figurerows.h"

#include "grayscale/axes.h"
#include "grayscale/verdict.h"
#include "text/number.h"

#include <QCoreApplication>

#include <algorithm>
#include <cmath>
#include <functional>

namespace quorvel::grayscale {

namespace {

constexpr double kSamePlaceMm = 0.3;

QString rowName(const char* text) { return QCoreApplication::translate("Pixels", text); }

QString digits(double value, const char* pattern)
{
    return QString::fromStdString(text::format(value, pattern));
}

QString millimetres(double value, const char* pattern = "0.00")
{
    return digits(value, pattern) + QStringLiteral(" mm");
}

using Figure = std::function<QString(const ProfileFigures&)>;

QString ofLamp(const ProfileFigures& figures, const std::function<QString(const Lamp&)>& figure)
{
    return figures.lamp ? figure(*figures.lamp) : QStringLiteral("-");
}

QString ofShadow(const ProfileFigures& figures, const std::function<QString(const Shadow&)>& figure)
{
    return figures.shadow ? figure(*figures.shadow) : QStringLiteral("-");
}

QString countOf(const std::vector<int>& pixels) { return QString::number(pixels.size()); }

QString valueAt(const PixelValue& value)
{
    return digits(value.value, "0") + rowName(" at pixel ") + QString::number(value.pixel);
}

struct Row {
    const char* name;
    Figure figure;
};

const std::vector<Row>& rows()
{
    static const std::vector<Row> all{
        {"Lamp level",
         [](const auto& f) { return ofLamp(f, [](const Lamp& l) { return digits(l.level, "0"); }); }},
        {"Lamp evenness",
         [](const auto& f) { return ofLamp(f, [](const Lamp& l) { return inPercent(l.evenness); }); }},
        {"Mean", [](const auto& f) { return digits(f.mean, "0.0"); }},
        {"Darkest", [](const auto& f) { return valueAt(f.lowest); }},
        {"Brightest", [](const auto& f) { return valueAt(f.highest); }},
        {"Shadow, centre",
         [](const auto& f) {
             return ofShadow(f, [](const Shadow& s) { return millimetres(s.centreMm, "0.000"); });
         }},
        {"Shadow, width",
         [](const auto& f) { return ofShadow(f, [](const Shadow& s) { return millimetres(s.widthMm); }); }},
        {"Shadow, left edge",
         [](const auto& f) {
             return ofShadow(f, [](const Shadow& s) { return millimetres(s.leftEdgeMm); });
         }},
        {"Shadow, right edge",
         [](const auto& f) {
             return ofShadow(f, [](const Shadow& s) { return millimetres(s.rightEdgeMm); });
         }},
        {"Shadow, depth",
         [](const auto& f) { return ofShadow(f, [](const Shadow& s) { return inPercent(s.depth); }); }},
        {"Dark pixels", [](const auto& f) { return countOf(f.dark); }},
        {"Saturated pixels", [](const auto& f) { return countOf(f.saturated); }},
        {"Damaged pixels", [](const auto& f) { return countOf(f.damaged); }},
    };
    return all;
}

QString depthAndWidth(const Dip& dip)
{
    return rowName("%1 deep, %2").arg(inPercent(dip.depth), millimetres(dip.widthMm));
}

QString nameOfDip(const Dip& dip)
{
    const auto kind = dip.seam ? rowName("Seam") : dip.widthMm < kDirtMm ? rowName("Dust") : rowName("Dirt");
    return rowName("%1 at %2").arg(kind, millimetres(dip.placeMm));
}

void addDips(std::vector<FigureRow>& all, const ProfileFigures& now, const ProfileFigures* then)
{
    const auto first = static_cast<std::ptrdiff_t>(all.size());
    std::vector<Dip> before = then ? then->dips : std::vector<Dip>();
    for (const auto& dip : now.dips) {
        FigureRow row{nameOfDip(dip), depthAndWidth(dip), {}, dip.placeMm, true};
        const auto same = std::find_if(before.begin(), before.end(), [&dip](const Dip& other) {
            return std::fabs(other.placeMm - dip.placeMm) < kSamePlaceMm;
        });
        if (then) row.then = same == before.end() ? QStringLiteral("-") : depthAndWidth(*same);
        if (same != before.end()) before.erase(same);
        all.push_back(row);
    }
    for (const auto& dip : before)
        all.push_back({nameOfDip(dip), QStringLiteral("-"), depthAndWidth(dip), dip.placeMm, true});
    std::sort(all.begin() + first, all.end(),
              [](const FigureRow& one, const FigureRow& other) { return one.placeMm < other.placeMm; });
}

} // namespace

std::vector<FigureRow> figureRows(const ProfileFigures& now, const ProfileFigures* then,
                                  link::InstrumentType type)
{
    std::vector<FigureRow> all;
    for (const auto& row : rows())
        all.push_back({rowName(row.name), row.figure(now), then ? row.figure(*then) : QString()});
    const auto setPlace = [&all](std::size_t row, double mm) {
        all.at(row).placeMm = mm;
        all.at(row).hasPlace = true;
    };
    setPlace(3, pixelPosition(type, now.lowest.pixel));
    setPlace(4, pixelPosition(type, now.highest.pixel));
    if (now.shadow) setPlace(5, now.shadow->centreMm);
    addDips(all, now, then);
    return all;
}

} // namespace quorvel::grayscale
