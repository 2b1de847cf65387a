#include "line/finder.h"

#include "link/address.h"
#include "support/scripted_readout.h"

#include <gmock/gmock.h>

namespace quorvel::line {
namespace {

using testing::ElementsAre;

constexpr double kTwoMinutes = 120; // s

/// A line on a clock moved by hand. Each answer takes a while.
class FinderByHand : public ::testing::Test {
protected:
    FinderByHand()
    {
        readout.answer = [this](const std::string& frame) {
            const int address = std::stoi(frame.substr(1, 2), nullptr, 16);
            const auto command = frame.substr(3, frame.size() - 5);
            for (const auto& one : line) {
                if (one.address != address) continue;
                const auto text = answerOf(one, frame.substr(0, 3), command);
                if (!text.empty())
                    readout.clock.plan(one.seconds, [this, text] { readout.device->receive(text); });
            }
            return std::string();
        };
    }

    struct OnTheLine {
        int address;
        double seconds; ///< from the line feed to the answer
        char type;
        int times = 1;
    };

    static std::string answerOf(const OnTheLine& one, const std::string& head, const std::string& command)
    {
        std::string text;
        for (int i = 0; i < one.times; ++i) {
            if (command == "76") text += head + "7601FF\r\n";
            if (command == "2101") text += head + "2101+1.50000-2.2500000FF\r\n";
            if (command == "2102" && one.type == 'C') text += head + "2102+1.50000-2.2500000FF\r\n";
        }
        return text;
    }

    FinderResult find(FinderTask task = {}) { return findReadouts(readout.module1, task, watcher); }
    static std::vector<int> addresses(const FinderResult& result)
    {
        std::vector<int> all;
        for (const auto& one : result.readouts) {
            all.push_back(one.address);
        }
        return all;
    }

    std::vector<OnTheLine> line;
    test::ScriptedReadout readout{[](const std::string&) { return std::string(); }};
    FinderWatcher watcher;
};

TEST_F(FinderByHand, AsksEachAddressOnceAndThoseThatAnswerForTheirReadings)
{
    line = {{5, 0.016, 'A'}, {7, 0.016, 'C'}};
    const auto result = find({4, 8});
    EXPECT_THAT(readout.frames, ElementsAre(":0476FF", ":0576FF", ":052101FF", ":052102FF", ":0676FF",
                                            ":0776FF", ":072101FF", ":072102FF", ":0876FF"));
    ASSERT_EQ(result.readouts.size(), 2U);
    EXPECT_EQ(result.readouts[0].type, "A, B or D");
    EXPECT_EQ(result.readouts[1].type, "C");
    EXPECT_EQ(result.readouts[0].remark, "");
    EXPECT_NEAR(result.readouts[0].answerMs, 16, 6);
}

TEST_F(FinderByHand, AllSilentAddressesTakeLessThanTwoMinutes)
{
    EXPECT_TRUE(find().readouts.empty());
    EXPECT_EQ(readout.frames.size(), 249U);
    EXPECT_LT(readout.clock.passed(), kTwoMinutes);
}

TEST_F(FinderByHand, TheyDoAlsoBesideTheSlowestReadout)
{
    line = {{1, 0.29, 'A'}};
    const auto result = find();
    EXPECT_THAT(addresses(result), ElementsAre(1));
    EXPECT_LT(readout.clock.passed() - 5, kTwoMinutes) << "its readings and its type apart";
}

TEST_F(FinderByHand, TheWaitFollowsTheSlowestAnswerWithinItsBounds)
{
    Patience patience;
    EXPECT_EQ(patience.seconds(), Patience::kFirst);
    patience.answeredAfter(0.016);
    EXPECT_EQ(patience.seconds(), Patience::kShortest);
    patience.answeredAfter(0.08);
    EXPECT_NEAR(patience.seconds(), 0.24, 1e-9);
    patience.answeredAfter(0.016);
    EXPECT_NEAR(patience.seconds(), 0.24, 1e-9) << "the slowest one counts";
    patience.answeredAfter(2);
    EXPECT_EQ(patience.seconds(), Patience::kLongest);
}

TEST_F(FinderByHand, AFastLineIsAskedFaster)
{
    find({1, 50});
    const double silent = readout.clock.passed();
    line = {{1, 0.016, 'A'}};
    find({1, 50});
    EXPECT_LT(readout.clock.passed() - silent, silent / 1.5);
}

TEST_F(FinderByHand, AnAnswerThatComesDuringTheNextQuestionsIsThatOfItsReadout)
{
    line = {{5, 0.016, 'A'}, {7, 0.2, 'A'}};
    const auto result = find({4, 12});
    EXPECT_THAT(addresses(result), ElementsAre(5, 7));
    EXPECT_EQ(result.readouts[1].remark, "It answers late.");
    EXPECT_NEAR(result.readouts[1].answerMs, 200, 60);
}

TEST_F(FinderByHand, TheLastAddressHasItsTimeToo)
{
    line = {{5, 0.016, 'A'}, {8, 0.3, 'A'}};
    EXPECT_THAT(addresses(find({4, 8})), ElementsAre(5, 8));
}

TEST_F(FinderByHand, TwoAnswersAreSuspectedToBeTwoReadouts)
{
    line = {{5, 0.016, 'A', 2}, {7, 0.016, 'A'}};
    const auto result = find({5, 7});
    ASSERT_EQ(result.readouts.size(), 2U);
    EXPECT_EQ(result.readouts[0].remark, "Two readouts with this address? More than one answer came.");
    EXPECT_EQ(result.readouts[1].remark, "");
}

// Both say the same when they are asked whether they are there; their readings differ.
TEST_F(FinderByHand, AnswersThatMergeAreSuspectedToBeTwoReadouts)
{
    line = {{5, 0.016, 'A'}};
    const auto alone = readout.answer;
    readout.answer = [this, alone](const std::string& frame) {
        return frame == ":052101FF" ? std::string(":052101\xBB\x01.\xFF\xFF"
                                                  "000-2.2500000FF\r\n")
                                    : alone(frame);
    };
    const auto result = find({5, 5});
    ASSERT_EQ(result.readouts.size(), 1U);
    EXPECT_EQ(result.readouts[0].remark,
              "Two readouts with this address, or a disturbed line? An answer came damaged.");
    EXPECT_EQ(result.readouts[0].type, "") << "cannot be told";
}

TEST_F(FinderByHand, ADisturbanceIsNoReadout)
{
    readout.answer = [this](const std::string& frame) {
        return frame == ":0676FF" && readout.frames.size() == 2 ? std::string("\xFE~") : std::string();
    };
    EXPECT_TRUE(find({5, 8}).readouts.empty());
    EXPECT_THAT(readout.frames, ElementsAre(":0576FF", ":0676FF", ":0676FF", ":0776FF", ":0876FF"));
}

TEST_F(FinderByHand, AnEchoIsNoReadout)
{
    readout.answer = [](const std::string& frame) {
        return frame + "\r\n" + (frame == ":0676FF" ? ":067601FF\r\n" : "");
    };
    const auto result = find({5, 8});
    EXPECT_THAT(addresses(result), ElementsAre(6));
    EXPECT_TRUE(result.echoes);
}

TEST_F(FinderByHand, ToldAreTheAddressTheTimeLeftAndWhatIsFound)
{
    line = {{6, 0.016, 'C'}};
    std::vector<int> asked;
    std::vector<double> left;
    std::vector<int> found;
    watcher.asking = [&](int address, double seconds) {
        asked.push_back(address);
        left.push_back(seconds);
    };
    watcher.found = [&](const FoundReadout& one) {
        found.push_back(one.address);
        EXPECT_EQ(asked.back(), 6) << "as soon as it is known";
    };
    find({5, 8});
    EXPECT_THAT(asked, ElementsAre(5, 6, 7, 8));
    EXPECT_THAT(found, ElementsAre(6));
    EXPECT_NEAR(left.front(), 4 * (0.075 + Patience::kFirst), 0.01);
    EXPECT_GT(left.back(), 0);
}

TEST_F(FinderByHand, StopKeepsWhatWasFound)
{
    line = {{5, 0.016, 'A'}, {9, 0.016, 'A'}};
    watcher.stop = [this] { return readout.frames.size() == 5; };
    const auto result = find();
    EXPECT_TRUE(result.stopped);
    EXPECT_EQ(readout.frames.size(), 5U);
    EXPECT_THAT(addresses(result), ElementsAre(5));
}

TEST_F(FinderByHand, APortThatVanishesEndsIt)
{
    readout.clock.plan(1, [this] { readout.device->vanish(); });
    const auto result = find();
    EXPECT_TRUE(result.lostReason.contains("pulled")) << qPrintable(result.lostReason);
    EXPECT_LT(readout.frames.size(), 5U);
}

} // namespace
} // namespace quorvel::line
