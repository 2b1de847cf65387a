#include "site/sweep.h"
#include "support/scripted_readout.h"

#include <gmock/gmock.h>

#include <map>

namespace quorvel::site {
namespace {

using protocol::Sensor;
using ::testing::ElementsAre;

Readout readoutOf(int address, link::InstrumentType type)
{
    Readout readout;
    readout.address = address;
    readout.type = type;
    return readout;
}

/// A bus whose readouts answer each frame with a text of a table, without a line end; silence for any other.
class Sweeps : public ::testing::Test {
protected:
    Reading read(const Readout& readout) { return takeReading(bus.module1, readout); }

    std::map<std::string, std::string> answers{{":052101FF", ":052101+1.50000-0.2500000FF"},
                                               {":0C2101FF", ":0C2101+2.50000+3.5000000FF"},
                                               {":0C2102FF", ":0C2102-4.50000+5.5000000FF"}};
    test::ScriptedReadout bus{[this](const std::string& frame) {
        const auto found = answers.find(frame);
        return found == answers.end() ? std::string() : found->second + "\r\n";
    }};
    std::vector<Readout> readouts{readoutOf(5, link::TypeA), readoutOf(77, link::TypeB),
                                  readoutOf(12, link::TypeC)};
};

TEST_F(Sweeps, AskEachReadoutOnceAndKeepTheDigitsReceived)
{
    const auto sweep = takeSweep(bus.module1, readouts, {});
    EXPECT_FALSE(sweep.stopped);
    ASSERT_EQ(sweep.readings.size(), 3U);
    EXPECT_EQ(sweep.readings[0].outcome, "complete");
    EXPECT_THAT(sweep.readings[0].received, ElementsAre("+1.50000", "-0.25000", std::nullopt, std::nullopt));
    EXPECT_EQ(sweep.readings[0].mm(Sensor::Y), -0.25);
    EXPECT_EQ(sweep.readings[1].outcome, "silent");
    EXPECT_EQ(sweep.readings[1].mm(Sensor::X), std::nullopt);
    EXPECT_THAT(sweep.readings[2].received, ElementsAre("+2.50000", "+3.50000", "-4.50000", "+5.50000"));
    EXPECT_THAT(bus.frames, ElementsAre(":052101FF", ":4D2101FF", ":0C2101FF", ":0C2102FF"));
}

TEST_F(Sweeps, CostTheirPausesAndTheTimeOutOfASilentReadout)
{
    const auto begun = bus.clock.passed();
    takeSweep(bus.module1, {readoutOf(5, link::TypeA)}, {});
    EXPECT_NEAR(bus.clock.passed() - begun, 0.085, 0.001); // the frame; the answer costs nothing here
    const auto silent = bus.clock.passed();
    takeSweep(bus.module1, {readoutOf(77, link::TypeC)}, {});
    EXPECT_NEAR(bus.clock.passed() - silent, 0.085 + 1.5 + 0.1, 0.001) << "not asked for Z";
}

TEST_F(Sweeps, SayWhenEachReadoutWasAsked)
{
    const auto sweep = takeSweep(bus.module1, readouts, {});
    EXPECT_EQ(sweep.begun, sweep.readings[0].time);
    EXPECT_NEAR(static_cast<double>(sweep.begun.msecsTo(sweep.readings[1].time)), 85, 1);
    EXPECT_GT(sweep.ended, sweep.readings[2].time);
    EXPECT_TRUE(sweep.readings[0].answerMs.has_value());
    EXPECT_FALSE(sweep.readings[1].answerMs.has_value());
}

TEST_F(Sweeps, StopAtOnceBetweenTwoExchanges)
{
    std::vector<int> taken;
    const auto sweep = takeSweep(bus.module1, readouts,
                                 {[&taken] { return taken.size() == 1; },
                                  [&taken](const Reading& reading) { taken.push_back(reading.address); }});
    EXPECT_TRUE(sweep.stopped);
    EXPECT_THAT(taken, ElementsAre(5));
    EXPECT_EQ(bus.frames.size(), 1U);
}

TEST_F(Sweeps, NameEveryFailureInTheWordsOfTheExchange)
{
    const auto outcome = [this](const std::string& answer) {
        answers[":052101FF"] = answer;
        const auto reading = read(readouts[0]);
        EXPECT_TRUE(reading.complete() || !reading.mm(Sensor::X)) << reading.outcome;
        return reading.outcome;
    };
    EXPECT_EQ(outcome(":052101+1.50000-0.25000FF"), "complete") << "older readouts";
    EXPECT_EQ(outcome(":052101+1.500"), "short 15 of 27");
    EXPECT_EQ(outcome(":0C2101+1.50000-0.2500000FF"), "not the answer");
    EXPECT_EQ(outcome(":052101+1.50000-0.2500000F"), "not the answer");
    EXPECT_EQ(outcome(":052101+1.50000-0.2500000FFF"), "not the answer");
    EXPECT_EQ(outcome(":052101abcdefgh-0.2500000FF"), "no value");
}

TEST_F(Sweeps, AFailureOfZKeepsXAndY)
{
    answers.erase(":0C2102FF");
    const auto reading = read(readouts[2]);
    EXPECT_EQ(reading.outcome, "silent");
    EXPECT_THAT(reading.received, ElementsAre("+2.50000", "+3.50000", std::nullopt, std::nullopt));
}

TEST_F(Sweeps, ATypeWithoutYHasNone)
{
    EXPECT_THAT(read(readoutOf(5, link::TypeD)).received,
                ElementsAre("+1.50000", std::nullopt, std::nullopt, std::nullopt));
}

TEST_F(Sweeps, LateCharactersAreNotTakenForTheNextAnswer)
{
    // 0.05 s behind its time-out
    bus.clock.plan(0.085 + 1.5 + 0.05, [this] {
        if (bus.device) bus.device->receive(":4D2101+9.00000+9.0000000FF\r\n");
    });
    EXPECT_EQ(read(readouts[1]).outcome, "silent");
    EXPECT_EQ(read(readouts[0]).mm(Sensor::X), 1.5);
}

TEST_F(Sweeps, OfAClosedPortSendNothing)
{
    bus.device->vanish();
    const auto sweep = takeSweep(bus.module1, readouts, {});
    for (const auto& reading : sweep.readings)
        EXPECT_EQ(reading.outcome, "port lost");
    EXPECT_EQ(sweep.readings.size(), 3U);
    EXPECT_TRUE(bus.frames.empty());
    EXPECT_EQ(sweep.begun, sweep.ended);
}

TEST_F(Sweeps, PassedLimitsAreNamed)
{
    auto readout = readouts[2];
    readout.limit(Sensor::X) = {-2, 2};
    readout.limit(Sensor::Y) = {-4, 4};
    readout.limit(Sensor::Z1) = {-4, std::nullopt};
    EXPECT_THAT(limitsPassed(readout, read(readout)), ElementsAre(Sensor::X, Sensor::Z1));
    answers.clear();
    EXPECT_THAT(limitsPassed(readout, read(readout)), ElementsAre());
}

} // namespace
} // namespace quorvel::site
