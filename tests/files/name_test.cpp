#include "files/name.h"

#include "files/folder.h"

namespace quorvel::files {
namespace {

using Name = FolderOfFiles;

TEST_F(Name, IsTextForPeopleInUtf8)
{
    EXPECT_EQ(inWords(std::filesystem::path(u8"标定/a.mdb")), "标定/a.mdb");
}

TEST_F(Name, IsThereEvenOfALinkThatLeadsNowhere)
{
    std::filesystem::create_symlink("nowhere", at("link"));
    put("file", "");
    EXPECT_TRUE(isThere(at("link")));
    EXPECT_TRUE(isThere(at("file")));
    EXPECT_FALSE(isThere(at("nowhere")));
}

TEST_F(Name, LeadsThroughAllLinksToAFileThatNeedNotExist)
{
    std::filesystem::create_directory(at("sub"));
    std::filesystem::create_symlink("sub/second", at("first"));
    std::filesystem::create_symlink(at("nowhere"), at("sub/second"));
    const auto target = targetOf(at("first"));
    ASSERT_TRUE(target) << target.error();
    EXPECT_EQ(*target, at("nowhere"));
    EXPECT_EQ(*targetOf(at("plain")), at("plain"));
}

TEST_F(Name, LeadsNowhereInACircle)
{
    std::filesystem::create_symlink("b", at("a"));
    std::filesystem::create_symlink("a", at("b"));
    const auto target = targetOf(at("a"));
    ASSERT_FALSE(target);
    EXPECT_EQ(target.error(),
              at("a").string() + " is a link that leads in a circle. Delete it or choose another name.");
}

TEST_F(Name, IsCountedOnUntilItIsFree)
{
    const auto file = at("XDirection.mdb");
    EXPECT_EQ(freeName(file, "2024-05-17"), at("XDirection.2024-05-17.mdb"));
    put("XDirection.2024-05-17.mdb", "");
    EXPECT_EQ(freeName(file, "2024-05-17"), at("XDirection.2024-05-17-2.mdb"));
    std::filesystem::create_symlink("nowhere", at("XDirection.2024-05-17-2.mdb"));
    put("XDirection.2024-05-17-3.mdb.part", "");
    EXPECT_EQ(freeName(file, "2024-05-17"), at("XDirection.2024-05-17-4.mdb"));
    EXPECT_EQ(freeName(at("profile"), "new"), at("profile.new"));
}

TEST_F(Name, OfADatedCopyHasTheDayOfLocalTime)
{
    std::tm day{};
    day.tm_year = 2024 - 1900;
    day.tm_mon = 4;
    day.tm_mday = 17;
    day.tm_hour = 23;
    day.tm_isdst = -1;
    EXPECT_EQ(dateMark(std::mktime(&day)), "2024-05-17");
}

} // namespace
} // namespace quorvel::files
