#include "autoread/record_reader.h"

#include "autoread/ring_readout.h"
#include "autoread/ring_state.h"

#include <gmock/gmock.h>

#include <deque>

namespace quorvel::autoread {

namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

/// What becomes of one reply after the other; behind the last one all are well.
using Spoilers = std::deque<std::function<std::string(std::string)>>;

std::string well(std::string reply) { return reply; }
std::string silent(const std::string&) { return {}; }
std::string cut(const std::string& reply) { return reply.substr(0, reply.size() - 1); }
std::function<std::string(std::string)> with(std::size_t at, const char* characters)
{
    return [=](std::string reply) { return reply.replace(at, std::string(characters).size(), characters); };
}

class Reader : public ::testing::Test {
protected:
    Reader()
    {
        readout.take(5);
        readout.spoil = [this](const std::string&, std::string reply) {
            if (spoilers.empty()) return reply;
            auto spoiler = spoilers.front();
            spoilers.pop_front();
            return spoiler(std::move(reply));
        };
    }
    Answer ask(const Asking& asking, Spoilers spoiling)
    {
        spoilers = std::move(spoiling);
        readout.line.frames.clear();
        RecordReader reader(readout.line.module1, "01", protocol::kTwoDirections, asking);
        auto answer = reader.ask(3);
        counts = reader.counts();
        return answer;
    }
    std::size_t questions() const { return readout.line.frames.size(); }

    test::RingReadout readout{20};
    Spoilers spoilers;
    LineCounts counts;
};

TEST_F(Reader, AsksOnceOnAGoodLine)
{
    const auto answer = ask({.retries = 3}, {});
    EXPECT_EQ(answer.kind, Answer::Kind::Record);
    EXPECT_EQ(answer.record.readings[0], 4.0F);
    EXPECT_THAT(answer.unreadable, IsEmpty());
    EXPECT_EQ(questions(), 1U);
    EXPECT_EQ(counts.askedAgain, 0);
}

/// A reply that is not the record asked for.
struct Bad {
    const char* name;
    std::function<std::string(std::string)> spoiler;
    Answer::Kind withoutRetry;
};

class BadReply : public Reader, public ::testing::WithParamInterface<Bad> {};

TEST_P(BadReply, IsAskedForAgain)
{
    const auto answer = ask({.retries = 2}, {GetParam().spoiler, GetParam().spoiler});
    EXPECT_EQ(answer.kind, Answer::Kind::Record) << answer.words;
    EXPECT_EQ(answer.record.readings[0], 4.0F);
    EXPECT_EQ(questions(), 3U);
    EXPECT_EQ(counts.askedAgain, 2);
}

TEST_P(BadReply, IsNotTakenWithoutARetry)
{
    const auto answer = ask({}, {GetParam().spoiler});
    EXPECT_EQ(answer.kind, GetParam().withoutRetry);
    EXPECT_THAT(answer.words, HasSubstr("Record 0003"));
    EXPECT_EQ(questions(), 1U);
}

INSTANTIATE_TEST_SUITE_P(RecordReader, BadReply,
                         ::testing::Values(Bad{"Silence", silent, Answer::Kind::Incomplete},
                                           Bad{"Cut", cut, Answer::Kind::Incomplete},
                                           Bad{"AnotherReadout", with(1, "03"), Answer::Kind::Misfit},
                                           Bad{"AnotherCommand", with(3, "20"), Answer::Kind::Misfit},
                                           Bad{"AnotherSlot", with(8, "1"), Answer::Kind::Misfit},
                                           Bad{"NoEnd", with(39, "~~"), Answer::Kind::Misfit}),
                         [](const auto& bad) { return std::string(bad.param.name); });

TEST_F(Reader, UnreadableFieldIsAskedForAgain)
{
    const auto answer = ask({.retries = 1}, {with(22, "X")});
    EXPECT_THAT(answer.unreadable, IsEmpty());
    EXPECT_EQ(answer.record.readings[0], 4.0F);
}

TEST_F(Reader, RecordThatIsStoredUnreadableIsTakenWithTheRest)
{
    const auto bad = with(9, "241332");
    for (const int retries : {0, 1, 3}) {
        const auto answer = ask({.retries = retries}, {bad, bad, bad, bad});
        EXPECT_EQ(answer.kind, Answer::Kind::Record);
        EXPECT_FALSE(answer.record.time);
        EXPECT_EQ(answer.record.readings[0], 4.0F);
        EXPECT_EQ(answer.unreadable.size(), 1U);
        EXPECT_EQ(questions(), retries == 0 ? 1U : 2U) << "the same twice is what it is";
    }
}

TEST_F(Reader, SlotThatIsAlwaysWrittenOtherwiseIsTheReadoutsWay)
{
    const auto odd = with(5, "    ");
    const auto answer = ask({.retries = 2}, {odd, odd, odd});
    EXPECT_EQ(answer.kind, Answer::Kind::Record);
    EXPECT_THAT(answer.misfits, ElementsAre("it is of slot     "));
    const auto foreign = ask({.retries = 2}, {with(1, "03"), with(1, "03"), with(1, "03")});
    EXPECT_EQ(foreign.kind, Answer::Kind::Misfit);
    EXPECT_EQ(foreign.words,
              "Record 0003 was asked for, but the reply is not its answer: it is of the readout at 03.");
}

TEST_F(Reader, VerifyTakesTwoRepliesThatAgree)
{
    EXPECT_EQ(ask({.verify = true}, {}).record.readings[0], 4.0F);
    EXPECT_EQ(questions(), 2U);
    EXPECT_EQ(counts.askedAgain, 0);
    const auto flipped = with(26, "5");
    const auto answer = ask({.retries = 1, .verify = true}, {flipped, well, well});
    EXPECT_EQ(answer.record.readings[0], 4.0F);
    EXPECT_EQ(questions(), 3U);
    EXPECT_EQ(counts.disagreements, 1);
    const auto never = ask({.retries = 1, .verify = true}, {with(26, "5"), with(26, "6"), with(26, "7")});
    EXPECT_EQ(never.kind, Answer::Kind::Misfit);
    EXPECT_EQ(never.words, "Record 0003 came differently each time.");
}

TEST_F(Reader, FlippedDigitPassesWithoutVerify)
{
    EXPECT_EQ(ask({.retries = 3}, {with(26, "5")}).record.readings[0], 4.5F);
}

TEST_F(Reader, AnswerAheadIsGivenOnce)
{
    RecordReader reader(readout.line.module1, "01", std::nullopt, {});
    EXPECT_EQ(reader.askAhead(2).record.readings[0], 3.0F);
    EXPECT_EQ(reader.layout(), protocol::kTwoDirections);
    EXPECT_EQ(reader.ask(2).record.readings[0], 3.0F);
    EXPECT_EQ(questions(), 1U);
    EXPECT_EQ(reader.ask(2).record.readings[0], 3.0F);
    EXPECT_EQ(questions(), 2U);
}

TEST_F(Reader, PulledAdapterIsNotAskedAgain)
{
    readout.line.port.setPortOpen(false);
    const auto answer = ask({.retries = 9}, {});
    EXPECT_EQ(answer.kind, Answer::Kind::Incomplete);
    EXPECT_EQ(counts.questions, 1);
}

TEST(ReaderOfThree, LearnsItsLayoutFromTheFirstRecordOrTheQueryOfZ)
{
    test::RingReadout readout(20, true);
    readout.take(3);
    {
        RecordReader reader(readout.line.module1, "01", std::nullopt, {});
        EXPECT_EQ(reader.ask(0).record.readings[2], 3.0F);
        EXPECT_EQ(reader.layout(), protocol::kThreeDirections);
    }
    readout.spoil = [](const std::string& frame, std::string reply) {
        return frame == ":01240000FF" ? reply.replace(53, 4, "~~~~") : reply;
    };
    RecordReader reader(readout.line.module1, "01", std::nullopt, {});
    EXPECT_EQ(reader.ask(0).kind, Answer::Kind::Misfit);
    EXPECT_EQ(reader.layout(), protocol::kThreeDirections);
    EXPECT_EQ(readout.line.frames.back(), ":012102FF");
}

TEST(Pointers, AreTakenWhenTwoAnswersAgree)
{
    test::RingReadout readout(20);
    readout.take(15);
    int asked = 0;
    readout.spoil = [&](const std::string&, std::string reply) {
        return ++asked == 1 ? reply.replace(13, 4, "0011") : reply; // one flipped bit: 11 for 15
    };
    const auto pointers = askPointers(readout.line.module1, "01", {.retries = 1});
    ASSERT_TRUE(pointers);
    EXPECT_EQ(pointers->next, 15);
    EXPECT_EQ(asked, 3);
}

TEST(Pointers, ThatDifferEachTimeAreNotTaken)
{
    test::RingReadout readout(20);
    readout.take(15);
    int asked = 0;
    readout.spoil = [&](const std::string&, std::string reply) {
        return reply.replace(13, 4, text::format(++asked, "0000"));
    };
    const auto pointers = askPointers(readout.line.module1, "01", {.retries = 2});
    ASSERT_FALSE(pointers);
    EXPECT_THAT(pointers.error(), HasSubstr("differently each time"));
}

} // namespace

} // namespace quorvel::autoread
