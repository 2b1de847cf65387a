#include "line/diagnosis.h"

#include "line/conclusion.h"
#include "link/address.h"
#include "protocol/meaning.h"
#include "support/scripted_readout.h"

#include <gmock/gmock.h>

namespace quorvel::line {
namespace {

using protocol::Shape;
using testing::ElementsAre;

const std::string kState = "7601FF\r\n";
const std::string kReadings = "2101+1.50000-2.2500000FF\r\n";
const std::string kTime = "04240517090530FF\r\n";

/// A line with well readouts 5 and 12, on a clock moved by hand.
class DiagnosisByHand : public ::testing::Test {
protected:
    static std::string answerOf(const std::string& frame)
    {
        if (frame == ":FF01FF") return ":0501FF\r\n:0C01FF\r\n";
        const auto address = frame.substr(0, 3);
        if (address != ":05" && address != ":0C") return {};
        const auto command = frame.substr(3, frame.size() - 5);
        if (command == "76") return address + kState;
        if (command == "2101") return address + kReadings;
        return command == "04" ? address + kTime : std::string();
    }

    Findings diagnose(int address = 5)
    {
        task.address = address;
        return line::diagnose(readout.module1, task, watcher);
    }
    Fault fault(int address = 5) { return conclude(diagnose(address)).fault; }

    test::ScriptedReadout readout{answerOf};
    DiagnosisTask task{"COM1 by hand", {}, {}, {}, {}};
    DiagnosisWatcher watcher;
};

TEST_F(DiagnosisByHand, AsksHarmlessQueriesStepByStep)
{
    QStringList results;
    watcher.ended = [&](Step step, const Findings& found) {
        results << nameOf(step) + ": " + resultOf(step, found);
    };
    EXPECT_EQ(fault(), Fault::None);
    EXPECT_THAT(readout.frames, ElementsAre(":0076FF", ":FF01FF", ":0576FF", ":052101FF", ":052101FF",
                                            ":052101FF", ":0504FF", ":0C76FF", ":052102FF"));
    for (const auto& frame : readout.frames) {
        const auto kind = protocol::commandOf(frame + "\r\n")->kind;
        EXPECT_TRUE(kind == link::Kind::Query || kind == link::Kind::Search) << frame;
    }
    const char* const answered =
        "Readout: \"Read the reference feature\": answered. \"Read X and Y\": answered. "
        "\"Read the clock\": answered.";
    EXPECT_EQ(
        results,
        QStringList({"Port: COM1 by hand is open.", "Adapter: What is sent does not come back.",
                     "Noise: Nothing comes while nothing is sent.", "Search: Answers: 5 and 12.", answered,
                     "Other readouts: 12: answered.", "Type: Z is not answered: type A, B or D."}));
}

TEST_F(DiagnosisByHand, TheTimeLeftIsAboutTheTimeThatItTakes)
{
    std::vector<double> left;
    watcher.begun = [&left](Step, double seconds) { left.push_back(seconds); };
    diagnose();
    EXPECT_NEAR(readout.clock.passed(), left.front(), 1.5);
    EXPECT_TRUE(std::is_sorted(left.rbegin(), left.rend()));
}

TEST_F(DiagnosisByHand, ASilentReadoutTakesLongerAndTheTimeLeftSaysSo)
{
    double told = 0;
    watcher.begun = [&](Step step, double seconds) {
        if (step == Step::Readout) told = std::max(told, readout.clock.passed() + seconds);
    };
    EXPECT_EQ(fault(7), Fault::ReadoutSilent);
    EXPECT_NEAR(readout.clock.passed(), told, 3);
    EXPECT_LT(readout.clock.passed(), 20);
}

TEST_F(DiagnosisByHand, AnAdapterThatSendsBackWhatItSendsIsFoundBeforeItsReadouts)
{
    readout.answer = [](const std::string& frame) { return frame + "\r\n" + answerOf(frame); };
    const auto found = diagnose();
    EXPECT_TRUE(found.echoes);
    EXPECT_THAT(found.searched, ElementsAre(5, 12));
    EXPECT_FALSE(found.readout.front().fault()) << "the answer behind the echo is well";
    EXPECT_EQ(conclude(found).fault, Fault::Echo);
}

TEST_F(DiagnosisByHand, AnEchoWithoutAnswersIsSomethingElse)
{
    readout.answer = [](const std::string& frame) { return frame + "\r\n"; };
    EXPECT_EQ(fault(), Fault::EchoOnly);
}

TEST_F(DiagnosisByHand, CharactersThatComeUnaskedAreNoise)
{
    for (int i = 1; i < 20; ++i) {
        readout.clock.plan(i * 0.3, [this] { readout.device->receive("\xFE~"); });
    }
    const auto verdict = conclude(diagnose());
    EXPECT_EQ(verdict.fault, Fault::Noise);
    EXPECT_TRUE(verdict.what.contains("\"\\xFE~\\xFE~\\xFE~")) << qPrintable(verdict.what);
}

TEST_F(DiagnosisByHand, WhatWaitedFromBeforeIsNoNoise)
{
    readout.device->receive(":0571+1.50000FF\r\n");
    EXPECT_EQ(fault(), Fault::None);
}

TEST_F(DiagnosisByHand, ALateAnswerIsToldWithItsTime)
{
    readout.answer = [this](const std::string& frame) -> std::string {
        if (frame != ":052101FF") return answerOf(frame);
        readout.clock.plan(2.6, [this] { readout.device->receive(":05" + kReadings); });
        return {};
    };
    const auto found = diagnose();
    ASSERT_TRUE(found.readout[1].lateSeconds);
    EXPECT_NEAR(*found.readout[1].lateSeconds, 2.6, 0.1);
    EXPECT_EQ(conclude(found).fault, Fault::Late);
}

TEST_F(DiagnosisByHand, AReadoutThatAnswersNothingButTheSearch)
{
    readout.answer = [](const std::string& frame) {
        return frame.starts_with(":05") ? std::string() : answerOf(frame);
    };
    EXPECT_EQ(fault(), Fault::SearchOnly);
}

TEST_F(DiagnosisByHand, AnOlderReadoutIsToldByTheLengthOfItsReading)
{
    readout.answer = [](const std::string& frame) {
        return frame == ":052101FF" ? ":052101+1.50000-2.25000FF\r\n" : answerOf(frame);
    };
    EXPECT_EQ(fault(), Fault::ShortReading);
}

TEST_F(DiagnosisByHand, AskedForOtherReadoutsItStopsAtSixteen)
{
    readout.answer = [](const std::string& frame) {
        std::string all;
        for (int address = 5; frame == ":FF01FF" && address < 55; ++address) {
            all += ":" + link::AddressToHex(address) + "\r\n";
        }
        return all.empty() ? answerOf(frame) : all;
    };
    EXPECT_EQ(diagnose().others.size(), static_cast<std::size_t>(kMostOthers));
}

TEST_F(DiagnosisByHand, StopEndsItBeforeTheNextExchange)
{
    bool stop = false;
    watcher.stop = [&stop] { return stop; };
    watcher.begun = [&stop](Step step, double) { stop = step == Step::Search; };
    QStringList ended;
    watcher.ended = [&ended](Step step, const Findings&) { ended << nameOf(step); };
    EXPECT_EQ(fault(), Fault::Stopped);
    EXPECT_THAT(readout.frames, ElementsAre(":0076FF"));
    EXPECT_EQ(ended, QStringList({"Port", "Adapter", "Noise"}));
}

TEST_F(DiagnosisByHand, APortThatVanishesEndsIt)
{
    readout.answer = [this](const std::string& frame) -> std::string {
        if (frame != ":FF01FF") return answerOf(frame);
        readout.clock.plan(1, [this] { readout.device->vanish(); });
        return {};
    };
    const auto verdict = conclude(diagnose());
    EXPECT_EQ(verdict.fault, Fault::PortLost);
    EXPECT_TRUE(verdict.what.contains("pulled")) << qPrintable(verdict.what);
}

TEST_F(DiagnosisByHand, AClosedPortIsNotOpenedAndNothingIsSent)
{
    readout.port.setPortOpen(false);
    EXPECT_EQ(fault(), Fault::PortClosed);
    EXPECT_FALSE(readout.port.PortOpen());
    EXPECT_TRUE(readout.frames.empty());
}

TEST_F(DiagnosisByHand, WithoutAnAddressTheLineAloneIsTested)
{
    task.notAnAddress = "250";
    EXPECT_EQ(conclude(line::diagnose(readout.module1, task, watcher)).fault, Fault::NotAnAddress);
    task.notAnAddress.clear();
    EXPECT_EQ(conclude(line::diagnose(readout.module1, task, watcher)).fault, Fault::LineGood);
    readout.answer = [](const std::string&) { return std::string(); };
    EXPECT_EQ(conclude(line::diagnose(readout.module1, task, watcher)).fault, Fault::NothingAnswers);
}

} // namespace
} // namespace quorvel::line
