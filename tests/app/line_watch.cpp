#include "app/line_watch.h"

#include <gtest/gtest.h>

#include <cmath>

namespace quorvel::test {

namespace {

constexpr double kSecondsPerDay = 86400;

} // namespace

double FastClock::timeOfDay() const { return std::fmod(machine_.timeOfDay() * kTimesFaster, kSecondsPerDay); }

QDateTime FastClock::now() const
{
    const auto now = machine_.now();
    return now.addMSecs((kTimesFaster - 1) * start_.msecsTo(now));
}

void LineWatch::sending(const link::Exchange& /*exchange*/)
{
    EXPECT_FALSE(underWay_) << "two exchanges at once";
    underWay_ = true;
    ++exchanges_;
}

void LineWatch::ended(const link::Exchange& exchange)
{
    if (exchange.outcome == link::Outcome::Refused) return;
    EXPECT_TRUE(underWay_) << "two exchanges at once";
    underWay_ = false;
    complete_ += exchange.complete() ? 1 : 0;
    if (exchange.frameWentOut()) {
        // what had waited before it can be the whole reply to a search
        const bool unsure = !exchange.complete() || exchange.transaction.kind == link::Kind::Search;
        sent_.push_back({QString::fromLatin1(exchange.transaction.frame.c_str()).trimmed(), unsure});
    } else {
        brokenOff_ += static_cast<int>(exchange.sent);
    }
}

void LineWatch::compare(SimulatedBus& bus)
{
    const auto answer = bus.command(QStringLiteral("frames"));
    EXPECT_LE(answer.value("dropped").toInt(), brokenOff_) << "frames ran into each other";
    for (const auto& frame : answer.value("frames").toArray())
        received_.push_back(frame.toObject().value("text").toString().trimmed());
    while (!received_.empty() && !sent_.empty()) {
        const auto& next = sent_.front();
        if (next.frame == received_.front()) {
            received_.pop_front();
        } else if (!next.mayBeMissing) {
            ADD_FAILURE() << "the bus received " << qPrintable(received_.front()) << " when "
                          << qPrintable(next.frame) << " was sent";
        }
        sent_.pop_front();
    }
    // one may have come in whose exchange has not ended
    EXPECT_LE(received_.size(), underWay_ ? 1U : 0U) << "the bus received what nobody sent";
}

} // namespace quorvel::test
