#include "jet/fixture.h"

#include "support/child_program.h"

#include <gmock/gmock.h>
#include <windows.h>

/// Files on the disk of a Windows PC: who may open, make and replace them, and what a killed program leaves.
namespace quorvel::jet::testing {
namespace {

namespace fs = std::filesystem;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

Status creating(const fs::path& path)
{
    auto made = CreateDatabase(path, kGeneralLocale);
    if (!made) return made.failure();
    if (auto appended = made->Append(readings()); !appended) return appended;
    return made->Close();
}

fs::path chinese(const Folder& folder)
{
    const auto inside = (folder / "x").parent_path() / u8"标定 数据";
    fs::create_directory(inside);
    return inside / u8"X 方向.mdb";
}

TEST(OnTheDiskOfWindows, PathsMayHaveChineseLettersAndBlanks)
{
    const Folder folder;
    const auto path = chinese(folder);
    const auto made = creating(path);
    ASSERT_TRUE(made) << made.error();
    auto opened = OpenDatabase(path);
    ASSERT_TRUE(opened) << opened.error();
    auto rows = opened->OpenRecordset("data");
    ASSERT_TRUE(addRow(*rows, 7));
    ASSERT_TRUE(opened->Close());
    auto again = OpenDatabase(path, {.access = Access::ReadOnly});
    ASSERT_TRUE(again) << again.error();
    EXPECT_EQ(again->OpenRecordset("data")->RecordCount(), 1);
    EXPECT_EQ(std::distance(fs::directory_iterator(path.parent_path()), {}), 1) << "nothing left over";
}

TEST(OnTheDiskOfWindows, SecondWriterIsRefusedAndNewFilesNeverReplace)
{
    const Folder folder;
    const auto path = chinese(folder);
    ASSERT_TRUE(creating(path));
    const auto inTheWay = creating(path);
    ASSERT_FALSE(inTheWay);
    EXPECT_THAT(inTheWay.error(), HasSubstr("already exists"));
    auto first = OpenDatabase(path);
    ASSERT_TRUE(first) << first.error();
    const auto second = OpenDatabase(path);
    ASSERT_FALSE(second);
    EXPECT_THAT(second.error(), HasSubstr("is used by another program"));
    EXPECT_TRUE(OpenDatabase(path, {.access = Access::ReadOnly}));
    EXPECT_TRUE(first->Close());
    EXPECT_TRUE(OpenDatabase(path));
    EXPECT_FALSE(CreateDatabase(folder / "none/x.mdb", kGeneralLocale));
}

TEST(OnTheDiskOfWindows, DatabaseThatAccessHoldsIsNotWritten)
{
    const Folder folder;
    const auto path = folder / "t.mdb";
    ASSERT_TRUE(creating(path));
    auto access = std::make_unique<test::OpenElsewhere>(
        (folder / "t.ldb").native(), GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE);
    const auto refused = OpenDatabase(path);
    EXPECT_FALSE(refused);
    access.reset();
    const auto opened = OpenDatabase(path);
    EXPECT_TRUE(opened) << opened.error();
}

TEST(OnTheDiskOfWindows, FileThatMayOnlyBeReadIsReadAndSaysWhy)
{
    const Folder folder;
    const auto path = folder / "t.mdb";
    ASSERT_TRUE(creating(path));
    ASSERT_NE(::SetFileAttributesW(path.c_str(), FILE_ATTRIBUTE_READONLY), 0);
    {
        auto opened = OpenDatabase(path);
        ASSERT_TRUE(opened) << opened.error();
        auto rows = opened->OpenRecordset("data");
        ASSERT_TRUE(rows) << rows.error();
        const auto refused = addRow(*rows, 1);
        ASSERT_FALSE(refused);
        EXPECT_THAT(refused.error(), HasSubstr("may only be read: "));
    }
    ASSERT_NE(::SetFileAttributesW(path.c_str(), FILE_ATTRIBUTE_NORMAL), 0);
}

TEST(OnTheDiskOfWindows, FoldersAndDevicesAreNotDatabases)
{
    const Folder folder;
    for (const auto& path : {folder / "", fs::path("NUL")}) {
        EXPECT_FALSE(OpenDatabase(path)) << path;
        EXPECT_FALSE(OpenDatabase(path, {.access = Access::ReadOnly})) << path;
    }
}

TEST(OnTheDiskOfWindows, LeftOverOfAKilledCreationIsUsedUpAndAnotherFileStays)
{
    const Folder folder;
    std::ofstream(folder / "t.mdb.part", std::ios::binary) << std::string("\0\1\0\0Stand", 9);
    const auto done = creating(folder / "t.mdb");
    EXPECT_TRUE(done) << done.error();
    std::ofstream(folder / "u.mdb.part", std::ios::binary) << "somebody else's download";
    const auto refused = creating(folder / "u.mdb");
    ASSERT_FALSE(refused);
    EXPECT_THAT(refused.error(), HasSubstr("another file is named \"u.mdb.part\""));
}

TEST(KilledCreation, DISABLED_Child)
{
    const fs::path file = test::ChildProgram::path();
    for (;;) {
        const auto done = creating(file);
        ASSERT_TRUE(done) << done.error();
        while (!::DeleteFileW(file.c_str()))
            ::Sleep(0);
    }
}

TEST(OnTheDiskOfWindows, CreationKilledAtAnyMomentLeavesNothingUnderTheNameOrAllOfIt)
{
    const Folder folder;
    const auto path = folder / "t.mdb";
    int unfinished = 0;
    for (int trial = 0; trial < 8; ++trial) {
        test::ChildProgram child(L"KilledCreation.DISABLED_Child", path.native());
        for (int i = 0; i < 1000 && !fs::exists(path) && !fs::exists(folder / "t.mdb.part") && child.runs();
             ++i)
            ::Sleep(5);
        ::Sleep(static_cast<DWORD>(trial));
        ASSERT_TRUE(child.runs());
        child.kill();
        unfinished += fs::exists(folder / "t.mdb.part") ? 1 : 0;
        if (fs::exists(path)) {
            EXPECT_THAT(faultsOfFile(path.string()), IsEmpty());
            fs::remove(path);
        }
        const auto again = creating(path);
        EXPECT_TRUE(again) << again.error();
        EXPECT_THAT(faultsOfFile(path.string()), IsEmpty());
        fs::remove(path);
    }
    EXPECT_GT(unfinished, 0) << "no child was killed in time";
}

} // namespace
} // namespace quorvel::jet::testing
