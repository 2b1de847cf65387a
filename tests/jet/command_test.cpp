#include "jet/fixture.h"
#include "jet/other_programs.h"

/// The mdb command on files that are damaged.
namespace quorvel::jet::testing {
namespace {

using ::testing::StartsWith;

class OurOwnCommand : public ::testing::Test {
protected:
    /// A file of rows 0 to `rows`-1.
    ByteVector& fileOf(int rows)
    {
        disk_ = {};
        makeFile(disk_);
        fill(disk_, 0, rows);
        return disk_.files[kPath.string()];
    }
    std::string path() const { return (folder_ / "t.mdb").string(); }
    std::string command() const { return QUORVEL_MDB_COMMAND " mdb " + path(); }

    Folder folder_;

private:
    Disk disk_;
};

TEST_F(OurOwnCommand, LeavesOutARowThatCannotBeReadAndGoesOn)
{
    auto& file = fileOf(5);
    put16(file, 18 * kPageSize + (get16(file, 18 * kPageSize + 14 + std::size_t{2} * 1) & 0x1FFFU),
          0xFFFF); // its columns
    save(file, folder_ / "t.mdb");
    EXPECT_EQ(outputOf(command() + " data 2>/dev/null; echo status $?"),
              "time,x,y\n,0,\n,2,\n,3,\n,4,\nstatus 1\n");
    EXPECT_THAT(outputOf(command() + " data 2>&1 >/dev/null || true"),
                StartsWith("Left out 1 of 5 rows: " + path() + " is damaged: a row of the table"));
}

TEST_F(OurOwnCommand, PrintsTheRowsThatAreLeftAndSaysHowManyAreMissing)
{
    auto& file = fileOf(196);
    std::fill_n(file.begin() + 18 * kPageSize, kPageSize, std::uint8_t{0});
    save(file, folder_ / "t.mdb");
    EXPECT_EQ(outputOf(command() + " data 2>/dev/null; echo status $?"),
              "time,x,y\n,194,\n,195,\nstatus 1\n");
    EXPECT_EQ(outputOf(command() + " data 2>&1 >/dev/null || true"),
              path() +
                  " is damaged: 194 of the 196 rows of a table are missing. Use \"Compact and Repair\" in "
                  "Access, or an earlier copy.\n");
}

TEST_F(OurOwnCommand, SaysThatItsOutputCouldNotBeWritten)
{
    for (const int rows : {1, 20000}) {
        save(fileOf(rows), folder_ / "t.mdb");
        for (const auto* what : {"", " data", " --json", " --json data"}) {
            EXPECT_EQ(outputOf(command() + what + " 2>&1 >/dev/full; echo status $?"),
                      "The answer cannot be written: No space left on device.\nstatus 1\n")
                << what;
        }
        std::filesystem::remove(folder_ / "t.mdb");
    }
    save(fileOf(1), folder_ / "t.mdb");
    // what else the program has open may have taken the number of a closed output
    const auto closed = outputOf(command() + " data 2>&1 >&-; echo status $?");
    EXPECT_TRUE(closed.starts_with("The answer cannot be written: ")) << closed;
    EXPECT_TRUE(closed.ends_with("status 1\n")) << closed;
}

} // namespace
} // namespace quorvel::jet::testing
