#include "chart/colours.h"

#include <array>

namespace quorvel::chart {

namespace {

constexpr int kHalfLight = 128; // of 255
constexpr float kInkPart = 0.82F;
constexpr float kGridPart = 0.13F;
constexpr int kVeilAlpha = 205;

/// Each has at least three times the contrast against the paper that it is for.
struct RoleColour {
    QRgb onLight;
    QRgb onDark;
};
constexpr std::array<RoleColour, 6> kRoles{{
    {0xff1b5ea8, 0xff6db3f2}, // First
    {0xff2a8a4a, 0xff6fcf8b}, // Second
    {0xffa35c00, 0xfff0b45a}, // Third
    {0xff8a8f96, 0xff8d949c}, // Behind
    {0xffc62828, 0xffff7a7a}, // Mark
    {0xffff0000, 0xffff0000}, // End
}};

QColor mixed(const QColor& one, const QColor& other, float part)
{
    const auto mix = [part](float a, float b) { return a * part + b * (1 - part); };
    return QColor::fromRgbF(mix(one.redF(), other.redF()), mix(one.greenF(), other.greenF()),
                            mix(one.blueF(), other.blueF()));
}

Colours coloursOf(const QColor& paper, const QColor& text)
{
    Colours colours;
    colours.paper = paper;
    colours.ink = mixed(text, paper, kInkPart);
    colours.grid = mixed(text, paper, kGridPart);
    colours.veil = paper;
    colours.veil.setAlpha(kVeilAlpha);
    colours.dark = qGray(paper.rgb()) < kHalfLight;
    return colours;
}

} // namespace

QColor Colours::of(Role role) const
{
    const auto& row = kRoles.at(static_cast<std::size_t>(role));
    return QColor::fromRgb(dark ? row.onDark : row.onLight);
}

Colours coloursOf(const QPalette& palette)
{
    return coloursOf(palette.color(QPalette::Base), palette.color(QPalette::Text));
}

Colours coloursOnPaper() { return coloursOf(QColor(Qt::white), QColor(Qt::black)); }

} // namespace quorvel::chart
