#include "files/replace.h"

#include "files/disk_calls.h"
#include "files/name.h"
#include "support/held_file.h"

#include <fcntl.h>
#include <memory>
#include <sys/file.h>
#include <unistd.h>

#include <gmock/gmock.h>

namespace quorvel::files {
namespace {

using ::testing::ElementsAre;
using ::testing::StartsWith;

bool isHeld(const std::filesystem::path& path)
{
    const int descriptor = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    EXPECT_GE(descriptor, 0) << path;
    const bool held = ::flock(descriptor, LOCK_EX | LOCK_NB) != 0;
    ::close(descriptor);
    return held;
}

TEST_F(ReplacingFiles, WritesANewFileAndReplacesAnOldOne)
{
    for (const auto* content : {"first", "second and longer", ""}) {
        EXPECT_TRUE(mayReplace(at("标定.csv")));
        const auto done = replaceContent(at("标定.csv"), content);
        ASSERT_TRUE(done) << done.error();
        EXPECT_EQ(contentOf("标定.csv"), content);
        EXPECT_THAT(names(), ElementsAre("标定.csv"));
    }
}

TEST_F(ReplacingFiles, FlushesTheFileBeforeItsNameAndTheFolderBehindIt)
{
    put("a.csv", "old");
    ASSERT_TRUE(replaceContent(at("a.csv"), "new"));
    EXPECT_THAT(calls.asked, ElementsAre("flush a.new.csv", "rename a.csv", "flush the folder"));
}

TEST_F(ReplacingFiles, KeepsOthersOutUntilTheNewFileHasTheName)
{
    put("a.mdb", "old");
    bool heldAtRename = false;
    calls.atRename = [&] { heldAtRename = isHeld(at("a.mdb")); };
    const auto done = replaceFile(at("a.mdb"), [&](const std::filesystem::path& fresh) {
        EXPECT_TRUE(isHeld(at("a.mdb")));
        put(fresh.filename().string(), "new");
        return Status();
    });
    ASSERT_TRUE(done) << done.error();
    EXPECT_TRUE(heldAtRename);
    EXPECT_FALSE(isHeld(at("a.mdb")));
    EXPECT_EQ(contentOf("a.mdb"), "new");
}

TEST_F(ReplacingFiles, LocksTheFileThatHasTheNameNow)
{
    put("a.mdb", "old");
    put("other", "another program's");
    calls.atLock = [&] { std::filesystem::rename(at("other"), at("a.mdb")); };
    bool held = false;
    ASSERT_TRUE(replaceFile(at("a.mdb"), [&](const std::filesystem::path& fresh) {
        held = isHeld(at("a.mdb"));
        put(fresh.filename().string(), "new");
        return Status();
    }));
    EXPECT_TRUE(held) << "the lock is on a file that has lost its name";
}

TEST_F(ReplacingFiles, KeepsALinkAndReplacesItsTarget)
{
    std::filesystem::create_directory(at("sub"));
    put("sub/real.mdb", "old");
    std::filesystem::create_symlink("sub/real.mdb", at("link.mdb"));
    std::filesystem::create_symlink("sub/yet to be.mdb", at("early.mdb"));
    ASSERT_TRUE(replaceContent(at("link.mdb"), "new"));
    ASSERT_TRUE(replaceContent(at("early.mdb"), "made"));
    EXPECT_EQ(contentOf("sub/real.mdb"), "new");
    EXPECT_EQ(contentOf("sub/yet to be.mdb"), "made");
    EXPECT_TRUE(std::filesystem::is_symlink(at("link.mdb")));
    EXPECT_TRUE(std::filesystem::is_symlink(at("early.mdb")));
}

TEST_F(ReplacingFiles, RefusesALinkThatLeadsInACircle)
{
    std::filesystem::create_symlink("circle", at("circle"));
    expectRefusal(at("circle"), at("circle").string() +
                                    " is a link that leads in a circle. Delete it or choose another name.");
    const auto aside = setAside(at("circle"), "unreadable");
    ASSERT_TRUE(aside) << aside.error();
    EXPECT_EQ(*aside, at("circle.unreadable"));
    EXPECT_TRUE(replaceContent(at("circle"), "new"));
}

TEST_F(ReplacingFiles, RefusesAWriteProtectedFile)
{
    put("a.csv", "old");
    std::filesystem::create_symlink("a.csv", at("link.csv"));
    std::filesystem::permissions(at("a.csv"), std::filesystem::perms(0444));
    for (const auto& chosen : {at("a.csv"), at("link.csv")}) {
        expectRefusal(chosen,
                      chosen.string() + " is write-protected. Choose another name, or allow writing first.");
    }
    EXPECT_EQ(contentOf("a.csv"), "old");
}

TEST_F(ReplacingFiles, RefusesWhatIsNotAFile)
{
    for (const auto& path : {at("."), std::filesystem::path("/dev/null")}) {
        expectRefusal(path, path.string() + " is not a file and cannot be overwritten. Choose another name.");
    }
}

TEST_F(ReplacingFiles, RefusesAFileThatAnotherProgramHolds)
{
    for (const auto* name : {"a.mdb", "a.csv"}) {
        put(name, "old");
        auto holder = std::make_unique<test::HeldFile>(at(name));
        expectRefusal(at(name), at(name).string() +
                                    " is open in another program. Close it there or choose another name.");
        holder.reset();
        EXPECT_TRUE(mayReplace(at(name)));
    }
}

TEST_F(ReplacingFiles, RefusesADatabaseThatAccessHolds)
{
    put("real.MDB", "old");
    put("real.csv", "old");
    std::filesystem::create_symlink("real.MDB", at("link.mdb"));
    auto access = std::make_unique<test::HeldFile>(at("real.ldb"));
    for (const auto* name : {"real.MDB", "link.mdb"}) {
        expectRefusal(at(name), at(name).string() +
                                    " is open in another program. Close it there or choose another name.");
    }
    EXPECT_TRUE(mayReplace(at("real.csv"))) << "the locks of the database are none of its own";
    access.reset();
    EXPECT_TRUE(mayReplace(at("real.MDB"))) << "a lock file that was left behind holds nothing";
}

TEST_F(ReplacingFiles, IsNotKeptOutByTheCallersOwnLock)
{
    put("a.mdb", "old");
    const test::HeldFile ours(at("a.mdb"));
    const auto make = [&](const std::filesystem::path& fresh) {
        put(fresh.filename().string(), "new");
        return Status();
    };
    EXPECT_FALSE(replaceFile(at("a.mdb"), make));
    const auto done = replaceFile(at("a.mdb"), make, {.keepAs = "", .lockedByUs = true});
    EXPECT_TRUE(done) << done.error();
    EXPECT_EQ(contentOf("a.mdb"), "new");
}

TEST_F(ReplacingFiles, NeedsAFolderThatTakesFiles)
{
    for (const auto& path : {at("missing/a.csv"), std::filesystem::path("/proc/a.csv")}) {
        EXPECT_THAT(mayReplace(path).error(), StartsWith(path.string() + " could not be written: "));
        EXPECT_THAT(replaceContent(path, "").error(), StartsWith(path.string() + " could not be written: "));
    }
}

TEST_F(ReplacingFiles, NeverNamesTheTemporaryFile)
{
    put("a.mdb", "old");
    const auto done = replaceFile(at("a.mdb"), [](const std::filesystem::path& fresh) {
        return Status(Failure{inWords(fresh) + " is full, so " + inWords(fresh) + " was not made."});
    });
    ASSERT_FALSE(done);
    const auto name = at("a.mdb").string();
    EXPECT_EQ(done.error(), name + " is full, so " + name + " was not made.");
}

TEST_F(ReplacingFiles, AHiddenOneGrowsUnderAnotherEnding)
{
    put("a.prom", "old");
    ASSERT_TRUE(replaceContent(at("a.prom"), "new", {.hidden = true}));
    EXPECT_THAT(calls.asked, ElementsAre("flush a.new.prom.part", "rename a.prom", "flush the folder"));
    EXPECT_EQ(contentOf("a.prom"), "new");
}

TEST_F(ReplacingFiles, TakesNoNameThatSomebodyElseHas)
{
    put("a.mdb", "old");
    put("a.new.mdb", "mine");
    put("a.new-2.mdb.part", "mine, too");
    ASSERT_TRUE(replaceContent(at("a.mdb"), "new"));
    EXPECT_EQ(contentOf("a.mdb"), "new");
    EXPECT_EQ(contentOf("a.new.mdb"), "mine");
    EXPECT_THAT(names(), ElementsAre("a.mdb", "a.new-2.mdb.part", "a.new.mdb"));
}

TEST_F(ReplacingFiles, KeepsACopyOfTheOldFileOnRequest)
{
    put("from", "first");
    const auto first = replaceByCopy(at("from"), at("X.mdb"), {.keepAs = "2024-05-17"});
    ASSERT_TRUE(first) << first.error();
    EXPECT_EQ(*first, std::filesystem::path()) << "nothing was there";
    for (const auto* kept : {"X.2024-05-17.mdb", "X.2024-05-17-2.mdb"}) {
        const auto before = contentOf("X.mdb");
        put("from", before + "+");
        const auto next = replaceByCopy(at("from"), at("X.mdb"), {.keepAs = "2024-05-17"});
        ASSERT_TRUE(next) << next.error();
        EXPECT_EQ(*next, at(kept));
        EXPECT_EQ(contentOf(kept), before);
    }
    EXPECT_EQ(contentOf("X.mdb"), "first++");
}

TEST_F(ReplacingFiles, KeepsThePermissionsOfTheOldFile)
{
    put("a.csv", "old");
    std::filesystem::permissions(at("a.csv"), std::filesystem::perms(0640));
    ASSERT_TRUE(replaceContent(at("a.csv"), "new"));
    EXPECT_EQ(std::filesystem::status(at("a.csv")).permissions(), std::filesystem::perms(0640));
}

TEST_F(ReplacingFiles, CopiesLongFilesAndSaysWhichCannotBeRead)
{
    const std::string content(200'000, 'x');
    put("from", content);
    put("to", "old");
    ASSERT_TRUE(replaceByCopy(at("from"), at("to")));
    EXPECT_EQ(contentOf("to"), content);
    EXPECT_TRUE(replaceByCopy(at("to"), at("to"))) << "onto itself";
    EXPECT_EQ(contentOf("to"), content);
    for (const auto* from : {"missing", "."}) {
        EXPECT_THAT(replaceByCopy(at(from), at("to")).error(),
                    StartsWith(at(from).string() + " could not be read: "));
    }
    EXPECT_EQ(contentOf("to"), content);
    EXPECT_THAT(names(), ElementsAre("from", "to"));
}

} // namespace
} // namespace quorvel::files
