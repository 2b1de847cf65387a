#include "files/disk_calls.h"

#include <cerrno>

namespace quorvel::files {
namespace {

using ::testing::ElementsAre;

TEST_F(ReplacingFiles, LeavesEverythingWhenTheLastStepFails)
{
    put("a.mdb", "old");
    put("from", "new");
    calls.renameFails = true;
    const auto done = replaceByCopy(at("from"), at("a.mdb"), {.keepAs = "2024-05-17"});
    ASSERT_FALSE(done);
    EXPECT_EQ(done.error(),
              at("a.mdb").string() + " could not be replaced: Input/output error. Choose another name.");
    EXPECT_EQ(contentOf("a.mdb"), "old");
    EXPECT_THAT(names(), ElementsAre("a.mdb", "from"));
}

TEST_F(ReplacingFiles, GoesOnAfterAWriteThatTookAPartOrWasInterrupted)
{
    calls.atWrite = {-EINTR, 3, -EINTR, 1};
    ASSERT_TRUE(replaceContent(at("a.csv"), "time,x,y\n"));
    EXPECT_TRUE(calls.atWrite.empty());
    EXPECT_EQ(contentOf("a.csv"), "time,x,y\n");
}

TEST_F(ReplacingFiles, LeavesEverythingWhenTheDiskIsFull)
{
    const auto chosen = at("a.csv");
    const auto reason = chosen.string() + " could not be written: No space left on device."
                                          " Make room, or choose another folder or name.";
    put("a.csv", "old");
    put("from", "new");
    for (const auto& full : {std::deque{-ENOSPC}, std::deque{2, -ENOSPC}}) {
        calls.atWrite = full;
        EXPECT_EQ(replaceContent(chosen, "new").error(), reason);
        calls.atWrite = full;
        EXPECT_EQ(replaceByCopy(at("from"), chosen).error(), reason);
        // the new file has room, the copy of the old one has not
        calls.atWrite = full;
        calls.atWrite.push_front(3);
        EXPECT_EQ(replaceByCopy(at("from"), chosen, {.keepAs = "2024-05-17"}).error(), reason);
        EXPECT_TRUE(calls.atWrite.empty());
    }
    EXPECT_EQ(contentOf("a.csv"), "old");
    EXPECT_THAT(names(), ElementsAre("a.csv", "from"));
}

TEST_F(ReplacingFiles, LeavesEverythingWhenTheDiskFailsToTakeTheNewFile)
{
    const auto chosen = at("a.csv");
    put("a.csv", "old");
    put("from", "new");
    calls.flushError = EIO;
    const auto reason = chosen.string() + " could not be written: Input/output error."
                                          " Make room, or choose another folder or name.";
    EXPECT_EQ(replaceContent(chosen, "new").error(), reason);
    EXPECT_EQ(replaceByCopy(at("from"), chosen, {.keepAs = "2024-05-17"}).error(), reason);
    EXPECT_EQ(contentOf("a.csv"), "old");
    EXPECT_THAT(names(), ElementsAre("a.csv", "from"));
}

TEST_F(ReplacingFiles, SaysWhyAFileCannotBeOpened)
{
    put("a.csv", "old");
    const auto name = at("a.csv").string();
    for (const int refused : {EACCES, EPERM, EROFS}) {
        calls.openError = refused;
        expectRefusal(at("a.csv"),
                      name + " is write-protected. Choose another name, or allow writing first.");
    }
    calls.openError = EMFILE;
    expectRefusal(at("a.csv"), name + " could not be written: Too many open files."
                                      " Make room, or choose another folder or name.");
    EXPECT_EQ(contentOf("a.csv"), "old");
}

TEST_F(ReplacingFiles, GivesUpAFileThatOthersReplaceAgainAndAgain)
{
    put("a.mdb", "old");
    const std::function<void()> another = [&] {
        put("other", "another program's");
        std::filesystem::rename(at("other"), at("a.mdb"));
        calls.atLock = another;
    };
    calls.atLock = another;
    const auto done = mayReplace(at("a.mdb"));
    calls.atLock = nullptr;
    ASSERT_FALSE(done);
    EXPECT_EQ(done.error(),
              at("a.mdb").string() + " is open in another program. Close it there or choose another name.");
    EXPECT_EQ(contentOf("a.mdb"), "another program's");
}

} // namespace
} // namespace quorvel::files
