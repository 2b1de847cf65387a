#include "jet/fixture.h"

#include <csignal>
#include <functional>
#include <sys/file.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

/// Done before the next lock is taken.
std::function<void()> atNextLock;

} // namespace

extern "C" int flock(int descriptor, int how) noexcept
{
    const auto before = std::exchange(atNextLock, nullptr);
    if (before) before();
    return static_cast<int>(::syscall(SYS_flock, descriptor, how));
}

/// Files on the real disk: who may open, make and replace them, and what a killed or failing program leaves.
namespace quorvel::jet::testing {
namespace {

using ::testing::HasSubstr;

TEST(OnTheDisk, SecondWriterIsRefusedAndNewFilesNeverReplace)
{
    const Folder folder;
    const auto path = folder / "标定.mdb";
    {
        auto made = CreateDatabase(path, kGeneralLocale);
        ASSERT_TRUE(made) << made.error();
        ASSERT_TRUE(made->Append(readings()));
        std::ofstream(path) << "in the way";
        EXPECT_FALSE(made->Close());
        EXPECT_EQ(std::filesystem::file_size(path), 10U);
        std::filesystem::remove(path);
    }
    auto made = CreateDatabase(path, kGeneralLocale);
    ASSERT_TRUE(made->Append(readings()));
    ASSERT_TRUE(made->Close());
    auto first = OpenDatabase(path);
    ASSERT_TRUE(first) << first.error();
    const auto second = OpenDatabase(path);
    ASSERT_FALSE(second);
    EXPECT_THAT(second.error(), HasSubstr("is used by another program"));
    EXPECT_TRUE(OpenDatabase(path, {.access = Access::ReadOnly}));
    EXPECT_TRUE(first->Close());
    EXPECT_TRUE(OpenDatabase(path));
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(path.parent_path()), {}), 1)
        << "nothing left over";
    EXPECT_FALSE(CreateDatabase(folder / "none/x.mdb", kGeneralLocale));
}

void write(const std::filesystem::path& path, const std::string& text)
{
    std::ofstream(path, std::ios::binary) << text;
}

std::string contents(const std::filesystem::path& path)
{
    std::ifstream stream(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

Status creating(const std::filesystem::path& path)
{
    auto made = CreateDatabase(path, kGeneralLocale);
    if (!made) return made.failure();
    if (auto appended = made->Append(readings()); !appended) return appended;
    return made->Close();
}

TEST(OnTheDisk, FileBeyondTwoGigabytesIsRefusedAndKeepsItsLength)
{
    const Folder folder;
    const auto path = folder / "t.mdb";
    ASSERT_TRUE(creating(path));
    const std::uintmax_t beyond = std::uintmax_t{64} << 30U | 1000;
    std::filesystem::resize_file(path, beyond);
    const auto opened = OpenDatabase(path);
    ASSERT_FALSE(opened);
    EXPECT_THAT(opened.error(), HasSubstr("is longer than any Access database"));
    EXPECT_EQ(std::filesystem::file_size(path), beyond);
}

TEST(OnTheDisk, FileThatIsReplacedWhileItIsOpenedIsOpenedAgain)
{
    const Folder folder;
    const auto path = folder / "t.mdb";
    ASSERT_TRUE(creating(path));
    ASSERT_TRUE(creating(folder / "new.mdb"));
    std::filesystem::create_symlink("t.mdb", folder / "link.mdb");
    {
        auto newer = OpenDatabase(folder / "new.mdb");
        auto rows = newer->OpenRecordset("data");
        ASSERT_TRUE(addRow(*rows, 7));
        ASSERT_TRUE(newer->Close());
    }
    atNextLock = [&] { std::filesystem::rename(folder / "new.mdb", path); };
    auto opened = OpenDatabase(folder / "link.mdb");
    ASSERT_TRUE(opened) << opened.error();
    EXPECT_EQ(opened->OpenRecordset("data")->RecordCount(), 1) << "rows would go into a file without a name";
    EXPECT_FALSE(OpenDatabase(path)) << "the lock is on the file of that name";
}

TEST(OnTheDisk, FileThatIsReplacedAllTheTimeIsUsedElsewhere)
{
    const Folder folder;
    const auto path = folder / "t.mdb";
    ASSERT_TRUE(creating(path));
    std::function<void()> replace = [&] {
        std::filesystem::copy_file(path, folder / "new.mdb");
        std::filesystem::rename(folder / "new.mdb", path);
        atNextLock = replace;
    };
    atNextLock = replace;
    const auto opened = OpenDatabase(path);
    atNextLock = nullptr;
    ASSERT_FALSE(opened);
    EXPECT_THAT(opened.error(), HasSubstr("is used by another program"));
}

TEST(OnTheDisk, LeftOverThatIsTheSecondNameOfAFinishedFileLosesOnlyTheName)
{
    const Folder folder;
    ASSERT_TRUE(creating(folder / "a.mdb"));
    const auto finished = contents(folder / "a.mdb");
    std::filesystem::create_hard_link(folder / "a.mdb", folder / "b.mdb.part");
    const auto done = creating(folder / "b.mdb");
    EXPECT_TRUE(done) << done.error();
    EXPECT_EQ(contents(folder / "a.mdb"), finished);
    EXPECT_TRUE(OpenDatabase(folder / "b.mdb"));
    EXPECT_FALSE(std::filesystem::exists(folder / "b.mdb.part"));
}

TEST(OnTheDisk, LeftOverOfAKilledCreationIsUsedUp)
{
    const Folder folder;
    const std::string leftOvers[] = {"", std::string("\0\1\0\0Stand", 9),
                                     std::string("\0\1\0\0Standard Jet DB\0", 20) + std::string(9000, 'x')};
    for (const auto& leftOver : leftOvers) {
        write(folder / "t.mdb.part", leftOver);
        const auto done = creating(folder / "t.mdb");
        EXPECT_TRUE(done) << done.error();
        EXPECT_TRUE(std::filesystem::remove(folder / "t.mdb"));
    }
}

TEST(OnTheDisk, FileOfAnotherKindUnderTheTemporaryNameStays)
{
    const Folder folder;
    write(folder / "t.mdb.part", "somebody else's download");
    const auto refused = creating(folder / "t.mdb");
    ASSERT_FALSE(refused);
    EXPECT_THAT(refused.error(), HasSubstr("another file is named \"t.mdb.part\""));
    EXPECT_EQ(contents(folder / "t.mdb.part"), "somebody else's download");
    std::filesystem::create_directory(folder / "u.mdb.part");
    EXPECT_FALSE(creating(folder / "u.mdb"));
    std::filesystem::create_symlink(folder / "t.mdb.part", folder / "v.mdb.part");
    EXPECT_FALSE(creating(folder / "v.mdb"));
    EXPECT_EQ(contents(folder / "t.mdb.part"), "somebody else's download");
}

TEST(OnTheDisk, SecondCreatorOfTheSameFileIsRefused)
{
    const Folder folder;
    auto first = CreateDatabase(folder / "t.mdb", kGeneralLocale);
    ASSERT_TRUE(first);
    const auto second = creating(folder / "t.mdb");
    ASSERT_FALSE(second);
    EXPECT_THAT(second.error(), HasSubstr("is being created by another program"));
    EXPECT_TRUE(first->Append(readings()));
    const auto done = first->Close();
    EXPECT_TRUE(done) << done.error();
    EXPECT_TRUE(OpenDatabase(folder / "t.mdb"));
}

TEST(OnTheDisk, CreationKilledAtAnyMomentLeavesNothingUnderTheNameOrAllOfIt)
{
    const Folder folder;
    const auto path = folder / "t.mdb";
    int unfinished = 0;
    for (int pause = 0; pause < 40; ++pause) {
        const pid_t child = ::fork();
        if (child == 0) {
            static_cast<void>(static_cast<bool>(creating(path)));
            ::pause();
        }
        ASSERT_GT(child, 0);
        ::usleep(static_cast<useconds_t>(pause * 100));
        ASSERT_EQ(::kill(child, SIGKILL), 0);
        ASSERT_EQ(::waitpid(child, nullptr, 0), child);
        if (std::filesystem::exists(path)) {
            EXPECT_THAT(faultsOfFile(path.string()), ::testing::IsEmpty());
            std::filesystem::remove(path);
            continue;
        }
        ++unfinished;
        const auto again = creating(path);
        EXPECT_TRUE(again) << again.error();
        EXPECT_THAT(faultsOfFile(path.string()), ::testing::IsEmpty());
        std::filesystem::remove(path);
    }
    EXPECT_GT(unfinished, 0) << "no child was killed in time";
}

TEST(OnTheDisk, PieceOfAPageThatFilledTheDiskIsCutBack)
{
    const Folder folder;
    const auto path = folder / "t.mdb";
    ASSERT_TRUE(creating(path));
    const auto size = std::filesystem::file_size(path);
    auto opened = OpenDatabase(path);
    auto rows = opened->OpenRecordset("data");
    rlimit before{};
    ASSERT_EQ(::getrlimit(RLIMIT_FSIZE, &before), 0);
    const auto old = std::signal(SIGXFSZ, SIG_IGN);
    const rlimit tight{size + 1000, before.rlim_max};
    ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &tight), 0);
    const auto full = addRow(*rows, 1);
    ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &before), 0);
    std::signal(SIGXFSZ, old);
    ASSERT_FALSE(full);
    EXPECT_THAT(full.error(), HasSubstr("could not be written"));
    EXPECT_EQ(std::filesystem::file_size(path), size);
    EXPECT_TRUE(addRow(*rows, 1));
    EXPECT_TRUE(opened->Close());
    EXPECT_THAT(faultsOfFile(path.string()), ::testing::IsEmpty());
}

TEST(OnTheDisk, FileThatMayOnlyBeReadIsReadAndSaysWhy)
{
    const Folder folder;
    const auto path = folder / "t.mdb";
    ASSERT_TRUE(creating(path));
    ASSERT_EQ(::chmod(path.c_str(), 0444), 0);
    ASSERT_EQ(::chmod(path.parent_path().c_str(), 0755), 0);
    // The superuser may write everywhere.
    const uid_t user = ::geteuid();
    constexpr uid_t kNobody = 65534;
    if (user == 0) {
        ASSERT_EQ(::seteuid(kNobody), 0);
    }
    auto opened = OpenDatabase(path);
    ASSERT_EQ(::seteuid(user), 0);
    ASSERT_TRUE(opened) << opened.error();
    auto rows = opened->OpenRecordset("data");
    ASSERT_TRUE(rows) << rows.error();
    const auto refused = addRow(*rows, 1);
    ASSERT_FALSE(refused);
    EXPECT_THAT(refused.error(), HasSubstr("may only be read: Permission denied"));
}

} // namespace
} // namespace quorvel::jet::testing
