#include "jet/replaceable.h"

#include "jet/fixture.h"
#include "support/held_file.h"

#include <memory>

/// Whether a file may be replaced by a new one.
namespace quorvel::jet::testing {
namespace {

using test::HeldFile;
using ::testing::StartsWith;

class Replaceable : public ::testing::Test {
protected:
    std::filesystem::path put(const char* name)
    {
        save({1, 2, 3}, folder_ / name);
        return folder_ / name;
    }
    static void expectOpenElsewhere(const std::filesystem::path& path)
    {
        const auto may = replaceable(path);
        ASSERT_FALSE(may) << path;
        EXPECT_EQ(may.error(), path.string() +
                                   " is open in another program. Close it there or choose another "
                                   "name.");
    }

    Folder folder_;
};

TEST_F(Replaceable, FileThatNobodyHasOpen)
{
    EXPECT_TRUE(replaceable(put("a.mdb")));
    EXPECT_TRUE(replaceable(folder_ / "missing.mdb"));
    EXPECT_TRUE(replaceable(folder_ / "missing" / "a.mdb"));
}

TEST_F(Replaceable, NothingButAFileIs)
{
    for (const auto& path : {folder_ / ".", std::filesystem::path("/dev/null")}) {
        const auto may = replaceable(path);
        ASSERT_FALSE(may) << path;
        EXPECT_THAT(may.error(), StartsWith(path.string() + " is not a file and cannot be overwritten."));
    }
}

TEST_F(Replaceable, NoFileThatAnotherProgramHolds)
{
    for (const auto* name : {"a.mdb", "a.csv"}) {
        const auto path = put(name);
        auto holder = std::make_unique<HeldFile>(path);
        expectOpenElsewhere(path);
        holder.reset();
        EXPECT_TRUE(replaceable(path));
    }
}

TEST_F(Replaceable, NoDatabaseThatAccessHolds)
{
    for (const auto* name : {"a.mdb", "a.MDB"}) {
        const auto path = put(name);
        auto access = std::make_unique<HeldFile>(folder_ / "a.ldb");
        expectOpenElsewhere(path);
        EXPECT_TRUE(replaceable(put("a.csv"))) << "the locks of a.mdb are none of its own";
        access.reset();
        EXPECT_TRUE(replaceable(path)) << "a lock file that was left behind holds nothing";
    }
}

} // namespace
} // namespace quorvel::jet::testing
