#include "site/limittext.h"

#include "link/bytes.h"
#include "text/number.h"

#include <QRegularExpression>

#include <cmath>

namespace quorvel::site {

namespace {

QString numberText(double mm) { return link::shown(text::general(mm)); }

} // namespace

QString limitText(const Limit& limit)
{
    if (!limit.isSet()) return {};
    QStringList words;
    if (limit.low) words << numberText(*limit.low);
    words << QStringLiteral("to");
    if (limit.high) words << numberText(*limit.high);
    return words.join(u' ');
}

std::optional<Limit> limitOf(const QString& text)
{
    static const QRegularExpression form(QStringLiteral(
        R"(^\s*(?:(?:\+-|±)\s*(\d+(?:\.\d*)?|\.\d+)|([+-]?(?:\d+(?:\.\d*)?|\.\d+))?\s*to\s*([+-]?(?:\d+(?:\.\d*)?|\.\d+))?)\s*$)"));
    if (text.trimmed().isEmpty()) return Limit();
    const auto match = form.match(text);
    if (!match.hasMatch()) return std::nullopt;
    const auto side = [&match](int group) -> std::optional<double> {
        const auto digits = match.captured(group);
        return digits.isEmpty() ? std::nullopt : std::optional(text::Val(link::bytes(digits)));
    };
    Limit limit{side(2), side(3)};
    if (const auto both = side(1)) limit = {-*both, *both};
    const auto isFar = [](const std::optional<double>& mm) { return mm && std::abs(*mm) > kMostLimitMm; };
    if (!limit.isSet() || isFar(limit.low) || isFar(limit.high)) return std::nullopt;
    if (limit.low && limit.high && *limit.low > *limit.high) return std::nullopt;
    return limit;
}

QString passedText(const Limit& limit, double mm)
{
    if (limit.high && mm > *limit.high) return QStringLiteral("above %1").arg(numberText(*limit.high));
    if (limit.low && mm < *limit.low) return QStringLiteral("below %1").arg(numberText(*limit.low));
    return {};
}

} // namespace quorvel::site
