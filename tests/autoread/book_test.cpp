#include "autoread/book.h"

#include <QTemporaryDir>

#include <gmock/gmock.h>

#include <fstream>
#include <functional>

namespace quorvel::autoread {

using namespace protocol;

namespace {

TEST(Book, KnowsNothingBeforeItsReadoutWasAsked)
{
    const Book book;
    EXPECT_EQ(book.missing(5), -1);
    EXPECT_EQ(book.text(5),
              "Readout 5 has not been asked for its stored records since the program was started.");
    EXPECT_TRUE(book.files(5).empty());
}

TEST(Book, IgnoresWhatIsNoAddress)
{
    Book book;
    for (const int address : {0, -1, 250, 257}) {
        book.asked(address, {1000, 0, 5}, 0);
        book.kept(address, "a");
        EXPECT_EQ(book.missing(address), -1) << address;
    }
}

/// A book on readout 5, asked and downloaded by its ring's pointers.
class BookOfOne : public ::testing::Test {
protected:
    /// @param passed  seconds since the readout was last asked.
    void see(const RingPointers& pointers, int passed = 10)
    {
        pointers_ = pointers;
        book.asked(5, pointers, now_ += passed);
    }
    /// The first records of the ring as it was last seen, into a file.
    void download(int records, const char* name = "a.mdb")
    {
        write(name, std::to_string(records) + " records");
        book.began(file(name));
        const auto span = spanOf(pointers_);
        for (int i = 0; i < records; ++i) {
            book.stored(5, file(name), span, span.first + i);
        }
        book.finished(file(name));
    }
    void downloadAll() { download(spanOf(pointers_).count()); }
    int missing() const { return book.missing(5); }
    std::filesystem::path file(const char* name) const { return folder.filePath(name).toStdString(); }
    void write(const char* name, const std::string& text) const { std::ofstream(file(name)) << text; }
    /// A sentence with "FILE" in place of the file's path.
    std::string said() const
    {
        auto words = book.text(5);
        for (const char* name : {"a.mdb", "b.mdb"}) {
            const auto path = file(name).string();
            if (const auto at = words.find(path); at != std::string::npos)
                words.replace(at, path.size(), name);
        }
        return words;
    }

    QTemporaryDir folder;
    Book book;

private:
    RingPointers pointers_;
    std::int64_t now_ = 1'700'000'000;
};

TEST_F(BookOfOne, SaysWhichFileHoldsWhat)
{
    see({1000, 10, 15});
    EXPECT_EQ(said(),
              "None of the 5 records that readout 5 held when it was last asked is in a file that stands as "
              "this program wrote it.");
    download(2);
    EXPECT_EQ(said(),
              "2 of the 5 records that readout 5 held when it was last asked are in a.mdb; 3 are not, or not "
              "whole.");
    downloadAll();
    EXPECT_EQ(said(), "All 5 records that readout 5 held when it was last asked are in a.mdb.");
    EXPECT_EQ(book.missing(12), -1);
}

TEST_F(BookOfOne, FileThatWasRemovedReplacedOrChangedCountsNoMore)
{
    const std::function<void()> spoilers[] = {
        [this] { std::filesystem::remove(file("a.mdb")); },
        [this] { write("a.mdb", "another"); },
        [this] {
            std::filesystem::last_write_time(file("a.mdb"), std::filesystem::last_write_time(file("a.mdb")) +
                                                                std::chrono::seconds(1));
        },
        [this] { download(1); },
    };
    for (const auto& spoil : spoilers) {
        see({1000, 10, 15});
        downloadAll();
        ASSERT_EQ(missing(), 0);
        spoil();
        EXPECT_GE(missing(), 4);
        EXPECT_THAT(said(), ::testing::Not(::testing::StartsWith("All")));
    }
}

TEST_F(BookOfOne, RecordsInSeveralFilesCountTogether)
{
    see({1000, 10, 12});
    downloadAll();
    see({1000, 10, 15});
    const auto span = spanOf({1000, 10, 15});
    write("b.mdb", "rest");
    for (int place = 12; place < 15; ++place) {
        book.stored(5, file("b.mdb"), span, place);
    }
    EXPECT_EQ(said(), "All 5 records that readout 5 held when it was last asked are in b.mdb and a.mdb.");
    std::filesystem::remove(file("b.mdb"));
    EXPECT_EQ(missing(), 3);
}

TEST_F(BookOfOne, FileThatWasKeptIsNamed)
{
    book.kept(5, "/x/a.2024-05-17.mdb");
    see({1000, 0, 0});
    EXPECT_EQ(said(),
              "Readout 5 held no records when it was last asked. The file that was there before is kept as "
              "/x/a.2024-05-17.mdb.");
    book.kept(5, {});
    EXPECT_EQ(said(), "Readout 5 held no records when it was last asked.");
}

TEST_F(BookOfOne, ShorterDownloadIntoAnotherFileTakesNothingBack)
{
    see({1000, 10, 15});
    downloadAll();
    see({1000, 10, 15});
    download(1, "b.mdb");
    EXPECT_EQ(missing(), 0);
}

TEST_F(BookOfOne, NewRecordsSinceTheDownloadAreMissing)
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

class FullRing : public BookOfOne, public ::testing::WithParamInterface<Turn> {};

TEST_P(FullRing, IsMissingOnlyWhatWasWrittenSince)
{
    see(GetParam().before);
    downloadAll();
    see(GetParam().after);
    EXPECT_EQ(missing(), GetParam().missing);
}

INSTANTIATE_TEST_SUITE_P(Book, FullRing,
                         ::testing::Values(Turn{"Unchanged", {1000, 998, 997}, {1000, 998, 997}, 0},
                                           Turn{"OneReading", {1000, 998, 997}, {1000, 999, 998}, 1},
                                           Turn{"PastTheLastSlot", {1000, 999, 998}, {1000, 2, 1}, 3},
                                           Turn{"NextInTheLastSlot", {1000, 999, 998}, {1000, 0, 999}, 1},
                                           Turn{"FromTheLastSlot", {1000, 0, 999}, {1000, 1, 0}, 1},
                                           Turn{"ManyReadings", {1000, 998, 2}, {1000, 500, 499}, 497},
                                           Turn{"FilledSinceTheDownload", {1000, 10, 15}, {1000, 2, 1}, 995},
                                           Turn{"OtherCapacity", {1000, 998, 997}, {500, 300, 299}, 500}),
                         [](const auto& turn) { return turn.param.name; });

constexpr auto kRound =
    "Up to 999 of the 999 records that readout 5 held when it was last asked are in no file: since "
    "the download it may have gone round its ring.";

TEST_F(BookOfOne, FullRingThatMayHaveGoneRoundIsMissingUpToAsAWhole)
{
    see({1000, 0, 999});
    downloadAll();
    see({1000, 0, 999}, 998);
    EXPECT_EQ(missing(), 0);
    see({1000, 0, 999}, 999);
    EXPECT_EQ(said(), kRound);
    see({1000, 0, 999}, 999);
    EXPECT_EQ(said(), kRound);
    downloadAll();
    EXPECT_EQ(missing(), 0);
    see({1000, 0, 999}, -60);
    EXPECT_EQ(said(), kRound);
}

TEST_F(BookOfOne, RingWithRoomHasNotGoneRoundHoweverLate)
{
    see({1000, 10, 15});
    downloadAll();
    see({1000, 10, 18}, 100'000);
    EXPECT_EQ(missing(), 3);
}

TEST_F(BookOfOne, RingWithRoomThatBeginsElsewhereIsMissingAsAWhole)
{
    see({1000, 10, 15});
    downloadAll();
    see({1000, 0, 20});
    EXPECT_EQ(missing(), 20);
}

TEST_F(BookOfOne, ShorterRingIsMissingAsAWhole)
{
    see({1000, 0, 15});
    downloadAll();
    see({1000, 0, 12});
    EXPECT_EQ(missing(), 12);
}

TEST_F(BookOfOne, RecordsOfAnotherRingAreNotCounted)
{
    see({1000, 10, 15});
    book.stored(5, file("a.mdb"), {500, 10, 20}, 10);
    book.stored(12, file("a.mdb"), {1000, 10, 15}, 10);
    EXPECT_EQ(missing(), 5);
    EXPECT_EQ(book.missing(12), -1);
}

TEST_F(BookOfOne, DeletionIsSaidAsItWasAnswered)
{
    for (const auto* words :
         {"Readout 5 confirmed the deletion of its records.", "Readout 5 did not confirm."}) {
        see({1000, 10, 15});
        downloadAll();
        Deletion deletion;
        deletion.words = words;
        book.deleted(5, deletion);
        EXPECT_EQ(missing(), -1);
        EXPECT_EQ(said(), words);
        see({1000, 10, 15});
        EXPECT_EQ(missing(), 5) << "records taken afterwards are not those of the file";
    }
}

TEST_F(BookOfOne, CheckThatHeldCountsAsKnown)
{
    write("a.mdb", "rows");
    CheckResult check{.safe = true, .address = 5, .files = {file("a.mdb")}, .pointers = {1000, 10, 15}};
    book.checked(check, 1'700'000'100);
    EXPECT_EQ(said(), "All 5 records that readout 5 held when it was last asked are in a.mdb.");
    ASSERT_NE(book.lastCheck(5), nullptr);
    EXPECT_TRUE(book.lastCheck(5)->safe);
    check.safe = false;
    check.pointers = {1000, 0, 3};
    book.checked(check, 1'700'000'200);
    EXPECT_EQ(missing(), 3);
}

} // namespace

} // namespace quorvel::autoread
