#include "autoread/ledger.h"

#include <gtest/gtest.h>

namespace quorvel::autoread {

using namespace protocol;

namespace {

TEST(Ledger, KnowsNothingBeforeItsReadoutWasAsked)
{
    const Ledger ledger;
    EXPECT_EQ(ledger.missing("5"), -1);
    EXPECT_EQ(ledger.text("5"), "The records stored in readout 5 have not been downloaded in this window.");
}

/// A ledger of readout 5, asked and downloaded by its ring's pointers.
class LedgerOfOne : public ::testing::Test {
protected:
    /// @param passed  seconds since the readout was last asked.
    void see(const RingPointers& pointers, int passed = 10)
    {
        pointers_ = pointers;
        ledger.seen("5", pointers, now_ += passed);
    }
    /// The first records of the ring as it was last seen.
    void download(int records)
    {
        const auto span = spanOf(pointers_);
        for (int i = 0; i < records; ++i) {
            ledger.downloaded("5", span, span.first + i);
        }
    }
    void downloadAll() { download(spanOf(pointers_).count()); }
    int missing() const { return ledger.missing("5"); }

    Ledger ledger;

private:
    RingPointers pointers_;
    std::int64_t now_ = 1'700'000'000;
};

TEST_F(LedgerOfOne, CountsWhatIsNotDownloaded)
{
    see({1000, 10, 15});
    EXPECT_EQ(ledger.text("5"), "Readout 5 holds 5 records that this window has not downloaded.");
    download(2);
    EXPECT_EQ(ledger.text("5"), "Readout 5 holds 3 records that this window has not downloaded.");
    downloadAll();
    EXPECT_EQ(ledger.text("5"),
              "All 5 records that readout 5 held when it was last asked have been downloaded.");
    EXPECT_EQ(ledger.missing("12"), -1);
}

TEST_F(LedgerOfOne, ShorterSecondDownloadTakesNothingBack)
{
    see({1000, 10, 15});
    downloadAll();
    see({1000, 10, 15});
    download(1);
    EXPECT_EQ(missing(), 0);
}

TEST_F(LedgerOfOne, NewRecordsSinceTheDownloadAreMissing)
{
    see({1000, 10, 15});
    downloadAll();
    see({1000, 10, 18});
    EXPECT_EQ(missing(), 3);
}

/// A full ring that was downloaded, the same ring later, and what is missing then.
struct Turn {
    const char* name;
    RingPointers before;
    RingPointers after;
    int missing;
};

class FullRing : public LedgerOfOne, public ::testing::WithParamInterface<Turn> {};

TEST_P(FullRing, IsMissingOnlyWhatWasWrittenSince)
{
    see(GetParam().before);
    downloadAll();
    see(GetParam().after);
    EXPECT_EQ(missing(), GetParam().missing);
}

INSTANTIATE_TEST_SUITE_P(Ledger, FullRing,
                         ::testing::Values(Turn{"Unchanged", {1000, 998, 997}, {1000, 998, 997}, 0},
                                           Turn{"OneReading", {1000, 998, 997}, {1000, 999, 998}, 1},
                                           Turn{"PastTheLastSlot", {1000, 999, 998}, {1000, 2, 1}, 3},
                                           Turn{"NextInTheLastSlot", {1000, 999, 998}, {1000, 0, 999}, 1},
                                           Turn{"FromTheLastSlot", {1000, 0, 999}, {1000, 1, 0}, 1},
                                           Turn{"ManyReadings", {1000, 998, 2}, {1000, 500, 499}, 497},
                                           Turn{"FilledSinceTheDownload", {1000, 10, 15}, {1000, 2, 1}, 995},
                                           Turn{"OtherCapacity", {1000, 998, 997}, {500, 300, 299}, 500}),
                         [](const auto& turn) { return turn.param.name; });

TEST_F(LedgerOfOne, FullRingThatMayHaveGoneRoundIsMissingUpToAsAWhole)
{
    see({1000, 998, 997});
    downloadAll();
    see({1000, 999, 998}, 998);
    EXPECT_EQ(ledger.text("5"), "Readout 5 holds 1 records that this window has not downloaded.");
    downloadAll();
    see({1000, 0, 999}, 999);
    EXPECT_EQ(ledger.text("5"), "Readout 5 holds up to 999 records that this window has not downloaded.");
    see({1000, 0, 999}, 999);
    EXPECT_EQ(ledger.text("5"), "Readout 5 holds up to 999 records that this window has not downloaded.");
    downloadAll();
    see({1000, 0, 999}, -60);
    EXPECT_EQ(ledger.text("5"), "Readout 5 holds up to 999 records that this window has not downloaded.");
}

TEST_F(LedgerOfOne, RingWithRoomHasNotGoneRoundHoweverLate)
{
    see({1000, 10, 15});
    downloadAll();
    see({1000, 10, 18}, 100'000);
    EXPECT_EQ(ledger.text("5"), "Readout 5 holds 3 records that this window has not downloaded.");
}

TEST_F(LedgerOfOne, RingWithRoomThatBeginsElsewhereIsMissingAsAWhole)
{
    see({1000, 10, 15});
    downloadAll();
    see({1000, 0, 20});
    EXPECT_EQ(ledger.text("5"), "Readout 5 holds 20 records that this window has not downloaded.");
}

TEST_F(LedgerOfOne, ShorterRingIsMissingAsAWhole)
{
    see({1000, 0, 15});
    downloadAll();
    see({1000, 0, 12});
    EXPECT_EQ(missing(), 12);
}

TEST_F(LedgerOfOne, RecordsOfAnotherSpanAreNotCounted)
{
    see({1000, 10, 15});
    ledger.downloaded("5", {1000, 10, 20}, 10);
    ledger.downloaded("12", {1000, 10, 15}, 10);
    EXPECT_EQ(missing(), 5);
    EXPECT_EQ(ledger.missing("12"), -1);
}

TEST_F(LedgerOfOne, DeletedRecordsAreNotMissing)
{
    see({1000, 10, 15});
    ledger.deleted("5");
    EXPECT_EQ(missing(), 0);
    EXPECT_EQ(ledger.text("5"), "Readout 5 held no records when it was last asked.");
    see({1000, 10, 15});
    EXPECT_EQ(missing(), 5);
}

TEST_F(LedgerOfOne, ForgottenReadoutWasNeverAsked)
{
    see({1000, 0, 5});
    downloadAll();
    ledger.forget("5");
    EXPECT_EQ(missing(), -1);
    see({1000, 0, 5});
    EXPECT_EQ(missing(), 5);
}

} // namespace

} // namespace quorvel::autoread
