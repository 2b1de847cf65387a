#include "line/health.h"

#include "line/trace.h"
#include "link/address.h"

#include <QStringList>

#include <algorithm>
#include <cmath>
#include <numeric>

namespace quorvel::line {

namespace {

using protocol::Verdict;

constexpr double kShortest = 0.1;      // ms
constexpr double kLongest = 600'000.0; // ms
constexpr double kGrowth =
    1.0198; // of a class over the one before it: 800 reach from the shortest to the longest
constexpr double kPercentile = 95;

int classOf(double ms)
{
    const double bounded = std::clamp(ms, kShortest, kLongest);
    return static_cast<int>(std::log(bounded / kShortest) / std::log(kGrowth));
}

QString number(double ms) { return QString::number(ms, 'f', 1); }

QString rowOf(int address, const ReadoutHealth& readout)
{
    const auto& times = readout.answerMs;
    QStringList cells{QString::number(address), QString::number(readout.exchanges())};
    for (const auto verdict : {Verdict::Complete, Verdict::Silent, Verdict::Short, Verdict::NotTheAnswer}) {
        cells << QString::number(readout.endedAs(verdict));
    }
    if (times.count() > 0) {
        cells << number(times.mean()) << number(times.percentile(kPercentile)) << number(times.worst());
    } else {
        cells << QString() << QString() << QString();
    }
    cells << readout.lastGood.toString(Qt::ISODate);
    return cells.join(u',');
}

} // namespace

void Durations::add(double ms)
{
    const auto place = static_cast<std::size_t>(std::clamp(classOf(ms), 0, kClasses - 1));
    ++classes_[place];
    ++count_;
    sum_ += ms;
    worst_ = std::max(worst_, ms);
}

double Durations::percentile(double percent) const
{
    if (count_ == 0) return 0;
    const auto wanted = static_cast<std::int64_t>(std::ceil(static_cast<double>(count_) * percent / 100));
    if (wanted >= count_) return worst_; // few durations: not a little less than the only one
    std::int64_t passed = 0;
    for (int i = 0; i < kClasses; ++i) {
        passed += classes_[static_cast<std::size_t>(i)];
        // the middle of the class, in the measure in which classes grow
        if (passed >= wanted) return std::min(worst_, kShortest * std::pow(kGrowth, i + 0.5));
    }
    return worst_;
}

std::int64_t ReadoutHealth::exchanges() const
{
    return std::accumulate(ended.begin(), ended.end(), std::int64_t{0});
}

void Health::ended(const link::Exchange& exchange)
{
    const int address = protocol::addressOf(exchange.transaction.frame);
    const auto verdict = protocol::verdictOf(exchange);
    if (!link::isAddress(address)) return;
    if (verdict == Verdict::Refused || verdict == Verdict::Abandoned) return;
    auto& readout = readouts_[address];
    ++readout.ended[static_cast<std::size_t>(verdict)];
    if (verdict != Verdict::Complete) return;
    readout.lastGood = exchange.begun;
    if (const auto ms = lastCharacterMs(exchange)) readout.answerMs.add(*ms);
}

QString Health::csv() const
{
    QStringList rows{
        QStringLiteral("address,exchanges,complete,silent,short,notTheAnswer,meanMs,p95Ms,worstMs,lastGood")};
    for (const auto& [address, readout] : readouts_) {
        rows << rowOf(address, readout);
    }
    return rows.join(u'\n') + u'\n';
}

} // namespace quorvel::line
