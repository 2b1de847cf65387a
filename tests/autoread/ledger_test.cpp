#include "autoread/ledger.h"

#include <gtest/gtest.h>

namespace quorvel::autoread {

namespace {

TEST(Ledger, KnowsNothingBeforeItsReadoutWasAsked)
{
    const Ledger ledger;
    EXPECT_EQ(ledger.missing("5"), -1);
    EXPECT_EQ(ledger.text("5"), "The records stored in readout 5 have not been downloaded in this window.");
}

TEST(Ledger, CountsWhatIsNotDownloaded)
{
    Ledger ledger;
    ledger.seen("5", {1000, 10, 15});
    EXPECT_EQ(ledger.text("5"), "Readout 5 holds 5 records that this window has not downloaded.");
    ledger.downloaded("5", 12);
    EXPECT_EQ(ledger.text("5"), "Readout 5 holds 3 records that this window has not downloaded.");
    ledger.downloaded("5", 15);
    EXPECT_EQ(ledger.text("5"),
              "All 5 records that readout 5 held when it was last asked have been downloaded.");
    EXPECT_EQ(ledger.missing("12"), -1);
}

TEST(Ledger, ShorterSecondDownloadTakesNothingBack)
{
    Ledger ledger;
    ledger.seen("5", {1000, 10, 15});
    ledger.downloaded("5", 15);
    ledger.seen("5", {1000, 10, 15});
    ledger.downloaded("5", 11);
    EXPECT_EQ(ledger.missing("5"), 0);
}

TEST(Ledger, NewRecordsSinceTheDownloadAreMissing)
{
    Ledger ledger;
    ledger.seen("5", {1000, 10, 15});
    ledger.downloaded("5", 15);
    ledger.seen("5", {1000, 10, 18});
    EXPECT_EQ(ledger.missing("5"), 3);
}

TEST(Ledger, RingThatBeginsElsewhereIsMissingAsAWhole)
{
    Ledger ledger;
    ledger.seen("5", {1000, 998, 1998});
    ledger.downloaded("5", 1998);
    ledger.seen("5", {1000, 999, 1999});
    EXPECT_EQ(ledger.missing("5"), 1000);
    ledger.downloaded("5", 1999);
    ledger.seen("5", {1000, 999, 1001});
    EXPECT_EQ(ledger.missing("5"), 2);
}

TEST(Ledger, DeletedRecordsAreNotMissing)
{
    Ledger ledger;
    ledger.seen("5", {1000, 10, 15});
    ledger.deleted("5");
    EXPECT_EQ(ledger.missing("5"), 0);
    EXPECT_EQ(ledger.text("5"), "Readout 5 held no records when it was last asked.");
}

} // namespace

} // namespace quorvel::autoread
