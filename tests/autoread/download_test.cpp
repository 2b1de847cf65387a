#include "autoread/download.h"

#include "support/scripted_readout.h"
#include "text/number.h"

#include <gmock/gmock.h>

namespace quorvel::autoread {

using namespace protocol;

namespace {

using test::ScriptedReadout;
using ::testing::ElementsAre;

/// Keeps what it is given, and fails at will.
class KeptRecords final : public RecordSink {
public:
    jet::Status append(const Record& record) override
    {
        if (static_cast<int>(records.size()) == room) return jet::Failure{"The disk is full."};
        records.push_back(record);
        return {};
    }
    jet::Status close() override
    {
        ++closed;
        return closing;
    }

    std::vector<Record> records;
    int room = 100'000; ///< records that find a place
    int closed = 0;
    jet::Status closing;
};

/// The reply of a record whose x is its index and whose second is the remainder by 60.
std::string recordOf(const std::string& frame)
{
    const auto index = frame.substr(5, 4);
    const int number = text::integerOf(index);
    return ":0124" + index + "2405170905" + text::format(number % 60, "00") + "+" +
           text::format(number, "000.000") + "-001.500FF\r\n";
}

class Download : public ::testing::Test {
protected:
    Outcome fetch(const RecordSpan& span)
    {
        RecordReader reader(readout.module1, "01", layout, asking);
        return fetchRecords(reader, span, sink,
                            {.stop = [this] { return stop; },
                             .progress = [this](const Progress& progress) { told(progress); },
                             .remark = [this](const std::string& words) { remarks.push_back(words); }});
    }
    void told(const Progress& progress)
    {
        const int received = progress.received;
        EXPECT_EQ(static_cast<int>(sink.records.size()), received) << "told before it was stored";
        EXPECT_EQ(progress.latest != nullptr, received > 0);
        if (received == 0) return;
        counts.push_back(received);
        if (onCount) onCount(received);
    }
    std::vector<float> xs() const
    {
        std::vector<float> values;
        for (const auto& record : sink.records) {
            values.push_back(record.readings[0].value_or(-1));
        }
        return values;
    }

    ScriptedReadout readout{recordOf};
    KeptRecords sink;
    RecordLayout layout = kTwoDirections;
    Asking asking{.asPrescribed = true};
    bool stop = false;
    std::vector<std::string> remarks;
    std::vector<int> counts;
    std::function<void(int)> onCount;
};

TEST_F(Download, FetchesRecordByRecord)
{
    const auto outcome = fetch({1000, 10, 15});
    EXPECT_EQ(outcome.ending, Ending::Complete);
    EXPECT_EQ(outcome.received(), 5);
    EXPECT_EQ(outcome.reason, "");
    EXPECT_THAT(readout.frames,
                ElementsAre(":01240010FF", ":01240011FF", ":01240012FF", ":01240013FF", ":01240014FF"));
    EXPECT_THAT(xs(), ElementsAre(10, 11, 12, 13, 14));
    EXPECT_THAT(counts, ElementsAre(1, 2, 3, 4, 5));
    EXPECT_EQ(sink.closed, 1);
}

TEST_F(Download, WrappedRingComesWholeFromItsOldestRecord)
{
    const auto outcome = fetch(spanOf({1000, 998, 2}));
    EXPECT_EQ(outcome.received(), 1000);
    ASSERT_EQ(readout.frames.size(), 1000U);
    EXPECT_EQ(readout.frames[0], ":01240998FF");
    EXPECT_EQ(readout.frames[1], ":01240999FF");
    EXPECT_EQ(readout.frames[2], ":01240000FF");
    EXPECT_EQ(readout.frames[999], ":01240997FF");
}

TEST_F(Download, AsksForTheNextRecordOnlyWhenTheLastIsStored)
{
    readout.answer = [this](const std::string& frame) {
        EXPECT_EQ(sink.records.size() + 1, readout.frames.size());
        return recordOf(frame);
    };
    EXPECT_EQ(fetch({1000, 0, 4}).received(), 4);
}

class BrokenAt : public Download, public ::testing::WithParamInterface<int> {};

TEST_P(BrokenAt, SilenceKeepsTheRecordsBefore)
{
    readout.answer = [this](const std::string& frame) {
        return static_cast<int>(readout.frames.size()) == GetParam() + 1 ? std::string() : recordOf(frame);
    };
    const auto outcome = fetch({1000, 0, 5});
    EXPECT_EQ(outcome.ending, Ending::CommError);
    EXPECT_EQ(outcome.received(), GetParam());
    EXPECT_EQ(outcome.reason, std::to_string(GetParam()) + " records have been received, Comm Error");
    EXPECT_EQ(static_cast<int>(sink.records.size()), GetParam());
    EXPECT_EQ(sink.closed, 1);
}

TEST_P(BrokenAt, ShortReplyKeepsTheRecordsBefore)
{
    readout.answer = [this](const std::string& frame) {
        const auto whole = recordOf(frame);
        return static_cast<int>(readout.frames.size()) == GetParam() + 1 ? whole.substr(0, 40) : whole;
    };
    EXPECT_EQ(fetch({1000, 0, 5}).reason,
              std::to_string(GetParam()) + " records have been received, Comm Error");
    EXPECT_EQ(static_cast<int>(sink.records.size()), GetParam());
}

INSTANTIATE_TEST_SUITE_P(FirstMiddleAndLast, BrokenAt, ::testing::Values(0, 2, 4));

TEST_F(Download, LongRepliesDoNotShiftTheNextOnes)
{
    readout.answer = [](const std::string& frame) { return recordOf(frame) + recordOf(frame); };
    EXPECT_EQ(fetch({1000, 0, 3}).ending, Ending::Complete);
    EXPECT_THAT(xs(), ElementsAre(0, 1, 2));
}

TEST_F(Download, FieldThatCannotBeReadStaysEmptyAndTheRestFollows)
{
    readout.answer = [](const std::string& frame) {
        auto reply = recordOf(frame);
        if (frame == ":01240011FF") reply.replace(21, 8, "XYZABCDE");
        return frame == ":01240012FF" ? reply.replace(9, 12, "230229000000") : reply;
    };
    const auto outcome = fetch({1000, 10, 15});
    EXPECT_EQ(outcome.ending, Ending::Complete);
    EXPECT_EQ(outcome.reason, "");
    EXPECT_THAT(remarks, ElementsAre("Record 0011: no number for x: \"XYZABCDE\".",
                                     "Record 0012: no valid date and time: \"230229000000\"."));
    EXPECT_THAT(xs(), ElementsAre(10, -1, 12, 13, 14));
    EXPECT_TRUE(sink.records[1].time);
    EXPECT_EQ(sink.records[1].readings[1], -1.5F);
    EXPECT_FALSE(sink.records[2].time);
    EXPECT_FALSE(outcome.stored[1].isSound());
    EXPECT_TRUE(outcome.stored[3].isSound());
}

TEST_F(Download, FullDiskStopsItAndTheReadoutIsLeftAlone)
{
    sink.room = 2;
    const auto outcome = fetch({1000, 0, 5});
    EXPECT_EQ(outcome.ending, Ending::FileFailed);
    EXPECT_EQ(outcome.received(), 2);
    EXPECT_EQ(outcome.reason,
              "The disk is full. The download has stopped; the file holds the 2 records received before. The "
              "readout still has all its data.");
    EXPECT_EQ(readout.frames.size(), 3U);
    EXPECT_THAT(counts, ElementsAre(1, 2));
}

TEST_F(Download, FailingCloseIsTold)
{
    sink.closing = jet::Failure{"The disk is gone."};
    const auto outcome = fetch({1000, 0, 1});
    EXPECT_EQ(outcome.ending, Ending::FileFailed);
    EXPECT_THAT(outcome.reason, ::testing::StartsWith("The disk is gone."));
}

TEST_F(Download, StopsAfterTheRecordInFlight)
{
    readout.answer = [this](const std::string& frame) {
        stop = frame == ":01240002FF";
        return recordOf(frame);
    };
    const auto outcome = fetch({1000, 0, 5});
    EXPECT_EQ(outcome.ending, Ending::Stopped);
    EXPECT_EQ(outcome.received(), 3);
    EXPECT_EQ(outcome.reason, "");
    EXPECT_EQ(readout.frames.size(), 3U);
    EXPECT_EQ(sink.closed, 1);
}

TEST_F(Download, PulledAdapterEndsItWithoutWaiting)
{
    onCount = [this](int received) {
        if (received == 2) std::exchange(readout.device, nullptr)->vanish();
    };
    const double before = readout.clock.passed();
    const auto outcome = fetch({1000, 0, 5});
    EXPECT_EQ(outcome.reason, "2 records have been received, Comm Error");
    EXPECT_LT(readout.clock.passed() - before, 1);
}

class ThreeDirections : public Download {
protected:
    static std::string threeOf(const std::string& frame)
    {
        return ":0124" + frame.substr(5, 4) + "240517090530+001.000+002.000+003.000+004.000FF\r\n";
    }
    Outcome fetchThree(const RecordSpan& span)
    {
        layout = kThreeDirections;
        return fetch(span);
    }
};

TEST_F(ThreeDirections, AwaitTheirLength)
{
    readout.answer = threeOf;
    EXPECT_EQ(fetchThree({1000, 0, 2}).received(), 2);
    EXPECT_THAT(sink.records[1].readings, ElementsAre(1, 2, 3, 4));
}

TEST_F(ThreeDirections, CutAnywhereAreNoRecordOfTwo)
{
    for (std::size_t length = 41; length < 57; ++length) {
        sink.records.clear();
        readout.frames.clear();
        readout.answer = [&](const std::string& frame) {
            const auto whole = threeOf(frame);
            return readout.frames.size() == 2 ? whole.substr(0, length) : whole;
        };
        EXPECT_EQ(fetchThree({1000, 0, 3}).reason, "1 records have been received, Comm Error") << length;
        EXPECT_EQ(sink.records.size(), 1U) << length;
    }
}

} // namespace

} // namespace quorvel::autoread
