#include "autoread/check.h"

#include "autoread/visit_fixture.h"

#include <fstream>

namespace quorvel::autoread {

namespace {

using test::VisitTo;
using ::testing::HasSubstr;
using ::testing::StartsWith;

class Check : public VisitTo {
protected:
    CheckResult check(std::initializer_list<const char*> names)
    {
        std::vector<std::filesystem::path> files;
        for (const auto* name : names) {
            files.push_back(file(name));
        }
        return visit().check(files);
    }
};

TEST_F(Check, SaysYesWhenEveryRecordIsInTheFile)
{
    readout.take(8);
    for (const char* name : {"a.csv", "a.mdb"}) {
        download(name);
        const auto result = check({name});
        EXPECT_TRUE(result.safe) << result.words;
        EXPECT_EQ(result.words, "Safe to delete: all 8 records that readout 1 holds are in " +
                                    file(name).string() + ", read back on " +
                                    result.at.toString("yyyy-MM-dd HH:mm:ss").toStdString() + ".");
        EXPECT_EQ(result.held, 8);
        EXPECT_EQ(result.inFiles, 8);
    }
    EXPECT_EQ(book.text(1), "All 8 records that readout 1 held when it was last asked are in " +
                                file("a.csv").string() + " and " + file("a.mdb").string() + ".");
}

TEST_F(Check, HoldsOnARingThatHasWrappedAndWentOn)
{
    readout.take(25);
    download("a.mdb");
    EXPECT_TRUE(check({"a.mdb"}).safe) << check({"a.mdb"}).words;
    readout.take(7);
    EXPECT_FALSE(check({"a.mdb"}).safe);
    goOn("a.mdb");
    EXPECT_TRUE(check({"a.mdb"}).safe) << check({"a.mdb"}).words;
}

TEST_F(Check, SaysHowManyWereTakenSince)
{
    readout.take(8);
    download("a.csv");
    readout.take(3);
    const auto result = check({"a.csv"});
    EXPECT_FALSE(result.safe);
    EXPECT_EQ(result.words, "Not safe to delete: 3 of the 11 records that readout 1 holds are in no file: " +
                                file("a.csv").string() +
                                " was read. 3 were taken since the newest row of the file.");
    EXPECT_EQ(result.inFiles, 8);
}

TEST_F(Check, SaysNoForABrokenDownload)
{
    readout.take(8);
    for (int stop = 0; stop < 8; ++stop) {
        std::filesystem::remove(file("a.csv"));
        download("a.csv", stopAfter(stop));
        const auto result = check({"a.csv"});
        EXPECT_FALSE(result.safe) << stop;
        EXPECT_EQ(result.inFiles, stop);
    }
}

TEST_F(Check, SaysNoForAFileThatLacksRows)
{
    readout.take(8);
    download("a.csv");
    for (const int missing : {1, 4, 8}) {
        auto lines = test::linesOf(content("a.csv"));
        lines.erase(lines.begin() + missing);
        std::ofstream torn(file("b.csv"));
        for (const auto& line : lines) {
            torn << line << "\n";
        }
        torn.close();
        EXPECT_FALSE(check({"b.csv"}).safe) << missing;
    }
}

TEST_F(Check, SaysNoForAnotherReadoutsFileAndWithoutAny)
{
    readout.take(8);
    download("a.csv");
    readout.becomeAnother();
    readout.take(8);
    EXPECT_FALSE(check({"a.csv"}).safe);
    EXPECT_EQ(check({}).words,
              "Not safe to delete: 8 of the 8 records that readout 1 holds are in no file that was named.");
    EXPECT_THAT(check({"missing.mdb"}).words, StartsWith("Not safe to delete: "));
    std::filesystem::remove(file("a.csv"));
    EXPECT_FALSE(check({"a.csv"}).safe);
}

TEST_F(Check, TakesSeveralFilesTogether)
{
    readout.take(8);
    download("a.csv", stopAfter(5));
    std::filesystem::copy(file("a.csv"), file("b.csv"));
    goOn("b.csv");
    auto lines = test::linesOf(content("b.csv"));
    std::ofstream(file("rest.csv")) << lines[0] << "\n"
                                    << lines[6] << "\n"
                                    << lines[7] << "\n"
                                    << lines[8] << "\n";
    EXPECT_FALSE(check({"a.csv"}).safe);
    EXPECT_FALSE(check({"rest.csv"}).safe);
    EXPECT_TRUE(check({"a.csv", "rest.csv"}).safe) << check({"a.csv", "rest.csv"}).words;
}

TEST_F(Check, ClockThatWasSetBackDoesNotHideRows)
{
    readout.take(6);
    readout.now = readout.now.addSecs(-4 * 3600 - 60);
    readout.take(3);
    download("a.csv");
    EXPECT_TRUE(check({"a.csv"}).safe) << check({"a.csv"}).words;
}

TEST_F(Check, EmptyFieldsCountWhenTheReadoutHasNoMoreToSay)
{
    readout.take(8);
    readout.spoil = [](const std::string& frame, std::string reply) {
        return frame == ":01240004FF" ? reply.replace(21, 8, "XYZABCDE") : reply;
    };
    download("a.csv");
    EXPECT_TRUE(check({"a.csv"}).safe) << check({"a.csv"}).words;
    readout.spoil = nullptr;
    const auto result = check({"a.csv"});
    EXPECT_FALSE(result.safe);
    EXPECT_THAT(result.words,
                HasSubstr("has empty fields that the readout can give: record 0004. Download it again."));
}

TEST_F(Check, NoticesAReadingThatIsTakenMeanwhile)
{
    readout.take(8);
    download("a.csv");
    readout.spoil = [this](const std::string& frame, std::string reply) {
        if (frame == ":01240007FF") readout.take();
        return reply;
    };
    const auto result = check({"a.csv"});
    EXPECT_FALSE(result.safe);
    EXPECT_THAT(result.words, HasSubstr("has taken a reading meanwhile"));
}

TEST_F(Check, FileWithoutColumnsForZIsNotSafe)
{
    test::RingReadout three(20, true);
    three.take(3);
    std::ofstream(file("a.csv"))
        << "time,x,y\n2024-01-01T00:00:00,1,-1.5\n2024-01-01T01:00:00,2,-1.5\n2024-01-01T02:00:00,3,-1.5\n";
    Visit visit(three.line.module1, 1, link::TypeA, book, {});
    const auto result = visit.check({file("a.csv")});
    EXPECT_FALSE(result.safe);
    EXPECT_THAT(result.words, HasSubstr("the file has no columns for Z"));
    ASSERT_TRUE(visit.download(file("b.csv"), Existing::Keep, {}).complete());
    EXPECT_TRUE(visit.check({file("b.csv")}).safe);
}

TEST_F(Check, EmptyRingIsSafe) { EXPECT_EQ(check({}).words, "Readout 1 holds no records."); }

TEST_F(Check, DeletionIsFollowedByALook)
{
    readout.take(8);
    const auto deletion = visit().deleteRecords();
    EXPECT_TRUE(deletion.certain());
    EXPECT_EQ(deletion.words, "Readout 1 confirmed the deletion of its records. It holds no records now.");
    EXPECT_EQ(book.text(1), deletion.words);
}

TEST_F(Check, DeletionThatIsOnlyConfirmedIsSeenThrough)
{
    readout.take(8);
    readout.deletes = false;
    const auto deletion = visit().deleteRecords();
    EXPECT_TRUE(deletion.confirmed);
    EXPECT_FALSE(deletion.certain());
    EXPECT_EQ(deletion.left, 8);
    EXPECT_THAT(deletion.words, HasSubstr("It holds 8 records now, taken since or not deleted."));
}

TEST_F(Check, NineOtherCharactersAreNoDeletion)
{
    readout.take(8);
    readout.deletes = false;
    readout.spoil = [](const std::string& frame, std::string reply) {
        return frame == ":0125FF" ? std::string(":0135FF\r\n") : reply;
    };
    const auto deletion = visit().deleteRecords();
    EXPECT_TRUE(deletion.answered);
    EXPECT_FALSE(deletion.confirmed);
    EXPECT_THAT(deletion.words,
                StartsWith("Readout 1 answered the deletion with other characters, \":0135FF\\x0D\\x0A\""));
}

} // namespace

} // namespace quorvel::autoread
