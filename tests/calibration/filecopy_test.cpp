#include "calibration/filecopy.h"

#include "calibration/calibration_files.h"
#include "support/held_file.h"

namespace quorvel::calibration {
namespace {

using FileCopy = FolderOfFiles;
using Names = std::vector<std::string>;

TEST_F(FileCopy, ReplacesTheWholeFile)
{
    const std::string content(200'000, 'x');
    put(at("from"), content);
    put(at("to"), "what was there");
    const auto copied = copyWhole(at("from"), at("to"));
    ASSERT_TRUE(copied) << copied.error();
    EXPECT_EQ(contentOf(at("to")), content);
    EXPECT_EQ(names(), (Names{"from", "to"}));
}

TEST_F(FileCopy, OntoItselfChangesNothing)
{
    put(at("same"), "content");
    EXPECT_TRUE(copyWhole(at("same"), at("same")));
    EXPECT_EQ(contentOf(at("same")), "content");
}

TEST_F(FileCopy, ThatCannotReadLeavesTheTargetAlone)
{
    put(at("to"), "what was there");
    const auto copied = copyWhole(at("missing"), at("to"));
    ASSERT_FALSE(copied);
    EXPECT_NE(copied.error().find("missing could not be read"), std::string::npos) << copied.error();
    EXPECT_EQ(contentOf(at("to")), "what was there");
    EXPECT_FALSE(copyWhole(at("."), at("to")));
    EXPECT_EQ(contentOf(at("to")), "what was there");
    EXPECT_EQ(names(), (Names{"to"}));
}

TEST_F(FileCopy, ThatCannotWriteSaysWhere)
{
    put(at("from"), "content");
    const auto copied = copyWhole(at("from"), at("no folder/to"));
    ASSERT_FALSE(copied);
    EXPECT_NE(copied.error().find("no folder/to could not be written"), std::string::npos) << copied.error();
    EXPECT_EQ(names(), (Names{"from"}));
}

TEST_F(FileCopy, LeavesATargetAloneThatIsOpenElsewhere)
{
    put(at("from"), "content");
    put(at("to.mdb"), "what was there");
    for (const auto* held : {"to.mdb", "to.ldb"}) {
        const test::HeldFile holder(at(held));
        const auto copied = copyWhole(at("from"), at("to.mdb"));
        ASSERT_FALSE(copied) << held;
        EXPECT_NE(copied.error().find("to.mdb is open in another program"), std::string::npos)
            << copied.error();
    }
    EXPECT_EQ(contentOf(at("to.mdb")), "what was there");
    EXPECT_EQ(names(), (Names{"from", "to.ldb", "to.mdb"}));
}

TEST_F(FileCopy, KeepsAFileAsideUnderAFreeName)
{
    put(at("XDirection.mdb"), "first");
    const auto first = keepAside(at("XDirection.mdb"), "older");
    ASSERT_TRUE(first) << first.error();
    EXPECT_EQ(*first, at("XDirection.older.mdb"));
    ASSERT_TRUE(copyWhole(at("XDirection.older.mdb"), at("copy")));
    std::filesystem::remove(at("XDirection.mdb"));
    put(at("XDirection.mdb"), "second");
    const auto second = keepAside(at("XDirection.mdb"), "older");
    ASSERT_TRUE(second) << second.error();
    EXPECT_EQ(*second, at("XDirection.older-2.mdb"));
    EXPECT_EQ(contentOf(at("XDirection.older.mdb")), "first");
    EXPECT_EQ(contentOf(at("XDirection.older-2.mdb")), "second");
}

TEST_F(FileCopy, KeepsNothingAsideOfAFileThatIsMissing)
{
    EXPECT_FALSE(keepAside(at("XDirection.mdb"), "older"));
    EXPECT_TRUE(names().empty());
}

} // namespace
} // namespace quorvel::calibration
