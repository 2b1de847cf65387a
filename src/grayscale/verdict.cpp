#include "grayscale/verdict.h"

#include "text/number.h"

#include <QCoreApplication>
#include <QJsonArray>

#include <algorithm>
#include <cmath>

namespace quorvel::grayscale {

namespace {

QString words(const char* text) { return QCoreApplication::translate("Pixels", text); }

QString number(double value, const char* pattern)
{
    return QString::fromStdString(text::format(value, pattern));
}

/// "pixel 12", "pixels 12, 13 and 9 more".
QString named(const std::vector<int>& pixels)
{
    QStringList some;
    for (std::size_t i = 0; i < pixels.size() && i < static_cast<std::size_t>(kNamedDips); ++i)
        some << QString::number(pixels[i]);
    const auto more = static_cast<int>(pixels.size()) - static_cast<int>(some.size());
    const auto list = some.join(QStringLiteral(", "));
    if (more > 0) return words("pixels %1 and %2 more").arg(list).arg(more);
    return (pixels.size() == 1 ? words("pixel %1") : words("pixels %1")).arg(list);
}

QString dipInWords(const Dip& dip)
{
    const auto text = dip.seam                ? words("The seam of the two halves at %1, %2 deep.")
                      : dip.widthMm < kDirtMm ? words("Dust at %1, %2 deep.")
                                              : words("Dirt at %1, %3 wide, %2 deep.");
    const auto said = text.arg(inMm(dip.placeMm), inPercent(dip.depth));
    return said.contains(QLatin1String("%3")) ? said.arg(number(dip.widthMm, "0.00") + QStringLiteral(" mm"))
                                              : said;
}

void addLamp(QStringList& sentences, const ProfileFigures& figures)
{
    if (!figures.lamp) {
        sentences << (figures.lastPixel < figures.firstPixel
                          ? words("There are no pixels between the ends of the sensor.")
                      : figures.highest.value < kWeakLamp ? words("No light: the lamp is out, or covered.")
                                                          : words("Too few pixels to judge the lamp."));
        return;
    }
    if (!figures.saturated.empty()) {
        sentences << words("Too bright: %n pixels are at the end of the scale.")
                         .replace(QLatin1String("%n"), QString::number(figures.saturated.size()));
    }
    if (figures.lamp->level < kWeakLamp)
        sentences << words("The lamp is weak: its level is %1 of 255.").arg(number(figures.lamp->level, "0"));
    if (figures.lamp->evenness < kUneven) {
        sentences << words("The lamp is uneven: its darkest part has %1 of the brightest.")
                         .arg(inPercent(figures.lamp->evenness));
    }
}

void addDips(QStringList& sentences, const ProfileFigures& figures)
{
    std::vector<Dip> worth;
    std::copy_if(figures.dips.begin(), figures.dips.end(), std::back_inserter(worth),
                 [](const Dip& dip) { return dip.depth >= kWorthCleaning && !dip.seam; });
    std::sort(worth.begin(), worth.end(),
              [](const Dip& one, const Dip& other) { return one.depth > other.depth; });
    const auto most = std::min<std::size_t>(worth.size(), kNamedDips);
    for (std::size_t i = 0; i < most; ++i)
        sentences << dipInWords(worth[i]);
    if (worth.size() > most) sentences << words("%1 more places are dusty.").arg(worth.size() - most);
}

void addShadow(QStringList& sentences, const ProfileFigures& figures)
{
    if (!figures.lamp) return;
    if (!figures.shadow) {
        sentences << words("No shadow of a wire is seen.");
        return;
    }
    const double edge = std::max(figures.shadow->leftEdgeMm, figures.shadow->rightEdgeMm);
    if (edge >= kBlurredMm) {
        sentences
            << words("The shadow of the wire is blurred: its edge is %1 mm wide.").arg(number(edge, "0.00"));
    }
}

QString allIsWell(const ProfileFigures& figures)
{
    return words("Clean: lamp level %1, even to %2, shadow of %3 mm at %4.")
        .arg(number(figures.lamp->level, "0"), inPercent(figures.lamp->evenness),
             number(figures.shadow->widthMm, "0.00"), inMm(figures.shadow->centreMm));
}

QJsonArray numbers(const std::vector<int>& pixels)
{
    QJsonArray array;
    for (const int pixel : pixels)
        array << pixel;
    return array;
}

double rounded(double value, double parts) { return std::round(value * parts) / parts; }
double mm(double value) { return rounded(value, 1e4); }
double percent(double part) { return rounded(100 * part, 10); }

} // namespace

QString inMm(double place) { return number(place, "0.0") + QStringLiteral(" mm"); }
QString inPercent(double part) { return number(100 * part, "0") + QStringLiteral(" %"); }

QStringList verdict(const ProfileFigures& figures)
{
    QStringList sentences;
    addLamp(sentences, figures);
    addDips(sentences, figures);
    addShadow(sentences, figures);
    if (!figures.dark.empty()) sentences << words("Dark without reason: %1.").arg(named(figures.dark));
    if (!figures.damaged.empty())
        sentences << words("Arrived damaged, not judged: %1.").arg(named(figures.damaged));
    if (sentences.isEmpty()) sentences << allIsWell(figures);
    return sentences;
}

QJsonObject toJson(const ProfileFigures& figures)
{
    QJsonObject object{{"firstPixel", figures.firstPixel},
                       {"lastPixel", figures.lastPixel},
                       {"min", rounded(figures.lowest.value, 10)},
                       {"minPixel", figures.lowest.pixel},
                       {"max", rounded(figures.highest.value, 10)},
                       {"maxPixel", figures.highest.pixel},
                       {"mean", rounded(figures.mean, 10)},
                       {"darkPixels", numbers(figures.dark)},
                       {"saturatedPixels", numbers(figures.saturated)},
                       {"damagedPixels", numbers(figures.damaged)},
                       {"lamp", QJsonValue::Null},
                       {"shadow", QJsonValue::Null}};
    if (figures.lamp) {
        object["lamp"] = QJsonObject{{"level", rounded(figures.lamp->level, 10)},
                                     {"evennessPercent", percent(figures.lamp->evenness)}};
    }
    QJsonArray dips;
    for (const auto& dip : figures.dips) {
        dips << QJsonObject{{"placeMm", mm(dip.placeMm)},
                            {"widthMm", mm(dip.widthMm)},
                            {"depthPercent", percent(dip.depth)},
                            {"seam", dip.seam}};
    }
    object["dips"] = dips;
    if (const auto& shadow = figures.shadow) {
        object["shadow"] = QJsonObject{{"centreMm", mm(shadow->centreMm)},
                                       {"widthMm", mm(shadow->widthMm)},
                                       {"leftEdgeMm", mm(shadow->leftEdgeMm)},
                                       {"rightEdgeMm", mm(shadow->rightEdgeMm)},
                                       {"depthPercent", percent(shadow->depth)}};
    }
    QJsonArray sentences;
    for (const auto& sentence : verdict(figures))
        sentences << sentence;
    object["verdict"] = sentences;
    return object;
}

} // namespace quorvel::grayscale
