#include "files/disk.h"
#include "files/name.h"
#include "files/replace.h"

#include "files/folder.h"
#include "support/child_program.h"

#include <filesystem>
#include <memory>

#include <gmock/gmock.h>
#include <windows.h>

/// Files of Windows: names in all letters, what other programs hold, replacement in one step.
namespace quorvel::files {
namespace {

namespace fs = std::filesystem;
using test::OpenElsewhere;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::StartsWith;

class FilesOfWindows : public FolderOfFiles {
protected:
    FilesOfWindows() { fs::create_directory(chinese()); }

    fs::path chinese() const { return at("") / u8"标定 数据"; }

    void expectRefusal(const fs::path& chosen, const std::string& reason)
    {
        const auto before = contentOf(chosen.filename().string());
        EXPECT_EQ(mayReplace(chosen).error(), reason);
        EXPECT_EQ(replaceContent(chosen, "new").error(), reason);
        EXPECT_EQ(contentOf(chosen.filename().string()), before);
    }
};

std::string contentAt(const fs::path& path)
{
    std::ifstream stream(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

TEST_F(FilesOfWindows, PathsMayHaveChineseLettersAndBlanks)
{
    const auto file = chinese() / u8"X 方向.csv";
    for (const auto* content : {"first", "second and longer", ""}) {
        EXPECT_TRUE(mayReplace(file));
        const auto done = replaceContent(file, content);
        ASSERT_TRUE(done) << done.error();
        EXPECT_EQ(contentAt(file), content);
    }
    EXPECT_EQ(std::distance(fs::directory_iterator(chinese()), {}), 1) << "nothing left over";
    EXPECT_THAT(inWords(file), ::testing::EndsWith("标定 数据\\X 方向.csv"));
    const auto missing = mayReplace(chinese() / u8"没有" / "a.csv");
    ASSERT_FALSE(missing);
    EXPECT_THAT(missing.error(), HasSubstr("标定 数据\\没有\\a.csv could not be written: "));
}

TEST_F(FilesOfWindows, AreWriteProtectedByTheirAttribute)
{
    const auto file = put("a.csv", "old");
    ASSERT_NE(::SetFileAttributesW(file.c_str(), FILE_ATTRIBUTE_READONLY), 0);
    expectRefusal(file, inWords(file) + " is write-protected. Choose another name, or allow writing first.");
    ASSERT_NE(::SetFileAttributesW(file.c_str(), FILE_ATTRIBUTE_NORMAL), 0);
    EXPECT_TRUE(replaceContent(file, "new"));
}

TEST_F(FilesOfWindows, AreRefusedWhileAnotherProgramHasThemOpen)
{
    struct Program {
        DWORD access, share;
    };
    for (const auto& [access, share] :
         {Program{GENERIC_READ | GENERIC_WRITE, 0},
          Program{GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE},
          Program{GENERIC_READ, FILE_SHARE_READ}}) {
        const auto file = put("a.mdb", "old");
        auto other = std::make_unique<OpenElsewhere>(file.native(), access, share);
        const auto reason =
            inWords(file) + " is open in another program. Close it there or choose another name.";
        EXPECT_EQ(mayReplace(file).error(), reason) << share;
        EXPECT_EQ(replaceContent(file, "new").error(), reason) << share;
        other.reset();
        EXPECT_EQ(contentOf("a.mdb"), "old");
        EXPECT_TRUE(replaceContent(file, "new"));
        EXPECT_EQ(contentOf("a.mdb"), "new");
    }
}

TEST_F(FilesOfWindows, DatabaseIsRefusedWhileAccessHoldsItsLockFile)
{
    const auto file = put("a.mdb", "old");
    auto access = std::make_unique<OpenElsewhere>(at("a.ldb").native(), GENERIC_READ | GENERIC_WRITE,
                                                  FILE_SHARE_READ | FILE_SHARE_WRITE);
    expectRefusal(file,
                  inWords(file) + " is open in another program. Close it there or choose another name.");
    access.reset();
    EXPECT_TRUE(replaceContent(file, "new")) << "a lock file that was left behind holds nothing";
}

TEST_F(FilesOfWindows, OthersAreKeptOutUntilTheNewFileHasTheName)
{
    const auto file = put("a.mdb", "old");
    const auto opened = [&file] {
        const HANDLE handle = ::CreateFileW(file.c_str(), GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                            nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
        if (handle != INVALID_HANDLE_VALUE) ::CloseHandle(handle);
        return handle != INVALID_HANDLE_VALUE;
    };
    EXPECT_TRUE(opened());
    const auto done = replaceFile(file, [&](const fs::path& fresh) {
        EXPECT_FALSE(opened());
        EXPECT_EQ(::GetLastError(), static_cast<DWORD>(ERROR_SHARING_VIOLATION));
        put(fresh.filename().string(), "new");
        return Status();
    });
    ASSERT_TRUE(done) << done.error();
    EXPECT_TRUE(opened());
    EXPECT_EQ(contentOf("a.mdb"), "new");
}

TEST_F(FilesOfWindows, AreReplacedWhileTheCallerHasThemOpen)
{
    const auto file = put("a.mdb", "old");
    auto ours = std::make_unique<OpenElsewhere>(file.native(), GENERIC_READ | GENERIC_WRITE,
                                                FILE_SHARE_READ | FILE_SHARE_DELETE);
    const auto done =
        replaceFile(file,
                    [&](const fs::path& fresh) {
                        put(fresh.filename().string(), "new");
                        return Status();
                    },
                    {.keepAs = "2024-05-17", .lockedByUs = true, .letGo = [&ours] { ours.reset(); }});
    ASSERT_TRUE(done) << done.error();
    EXPECT_EQ(contentOf("a.mdb"), "new");
    EXPECT_EQ(contentOf("a.2024-05-17.mdb"), "old");
}

TEST_F(FilesOfWindows, NameThatWasOpenedMayHaveGoneToAnotherFile)
{
    const auto file = put("a.csv", "old");
    std::error_code error;
    const OpenFile held(file, OpenFile::How::ToRead, error);
    EXPECT_TRUE(held.stillHas(file));
    fs::rename(file, at("b.csv"));
    EXPECT_FALSE(held.stillHas(file));
    put("a.csv", "another");
    EXPECT_FALSE(held.stillHas(file));
    EXPECT_TRUE(held.stillHas(at("b.csv")));
}

TEST_F(FilesOfWindows, FullDiskIsAReasonInWords)
{
    // Wine shows the system that it runs on as the disk Z:.
    std::error_code error;
    OpenFile full("Z:\\dev\\full", OpenFile::How::ToLock, error);
    ASSERT_FALSE(error) << error.message();
    full.write("something", error);
    EXPECT_EQ(error, std::error_code(ERROR_DISK_FULL, std::system_category()));
    const std::error_code code(ERROR_DISK_FULL, std::system_category());
    EXPECT_THAT(wordsOf(code), ::testing::Not(IsEmpty()));
    EXPECT_EQ(wordsOf(code).find_last_of(".\r\n"), std::string::npos) << wordsOf(code);
    EXPECT_THAT(wordsOf(std::make_error_code(std::errc::no_space_on_device)), HasSubstr("space"));
}

TEST_F(FilesOfWindows, FoldersAreNotFiles)
{
    const auto reason = inWords(chinese()) + " is not a file and cannot be overwritten. Choose another name.";
    EXPECT_EQ(mayReplace(chinese()).error(), reason);
    EXPECT_EQ(replaceContent(chinese(), "new").error(), reason);
}

const std::string kOne(300'000, '1');
const std::string kTwo(300'000, '2');

TEST(KilledReplacing, DISABLED_Child)
{
    const fs::path file = test::ChildProgram::path();
    for (int i = 0;; ++i) {
        const auto done = replaceContent(file, i % 2 == 0 ? kOne : kTwo);
        ASSERT_TRUE(done) << done.error();
    }
}

TEST_F(FilesOfWindows, ProgramKilledWhileReplacingLeavesTheOldFileOrTheNewOne)
{
    const auto file = put("a.csv", kOne);
    const auto fresh = at("a.new.csv");
    int unfinished = 0;
    for (int trial = 0; trial < 8; ++trial) {
        test::ChildProgram child(L"KilledReplacing.DISABLED_Child", file.native());
        for (int i = 0; i < 10'000 && !fs::exists(fresh) && child.runs(); ++i)
            ::Sleep(1);
        ::Sleep(static_cast<DWORD>(trial));
        ASSERT_TRUE(child.runs());
        child.kill();
        unfinished += fs::remove(fresh) ? 1 : 0;
        const auto content = contentOf("a.csv");
        EXPECT_TRUE(content == kOne || content == kTwo) << content.size();
        const auto again = replaceContent(file, kOne);
        ASSERT_TRUE(again) << again.error();
    }
    EXPECT_GT(unfinished, 0) << "no child was killed in time";
}

} // namespace
} // namespace quorvel::files
