#include "autoread/exported.h"
#include "autoread/largest_file.h"
#include "support/scripted_readout.h"
#include "text/number.h"
#include "windows/setauto_on_the_bus.h"

#include <QFileInfo>

#include <gmock/gmock.h>

#include <optional>

namespace quorvel::test {

namespace {

/// A readout with a wrapped ring of 1000 records, taken a minute apart from its oldest, number 998, on.
std::string wrappedRing(const std::string& frame)
{
    if (frame == ":0522FF") return ":0522100009980002FF\r\n";
    const int index = quorvel::text::integerOf(frame.substr(5, 4));
    const int minute = (index - 998 + 1000) % 1000;
    return ":0524" + frame.substr(5, 4) + "240101" + quorvel::text::format(minute / 60, "00") +
           quorvel::text::format(minute % 60, "00") + "00+" + quorvel::text::format(index, "000.000") +
           "-001.500FF\r\n";
}

/// The same with 100 slots, from number 98 on.
std::string shortRing(const std::string& frame)
{
    return frame == ":0522FF" ? ":0522010000980002FF\r\n" : wrappedRing(frame);
}

link::Bench benchAtFive()
{
    link::Bench bench;
    bench.currentAddress = "5";
    return bench;
}

/// The real window before a scripted readout; time is moved by hand, so that 1000 records take no real time.
class SetAutoByHand : public ::testing::Test {
protected:
    SetAutoByHand()
    {
        qApp->installEventFilter(&filter);
        form.show();
    }

    std::filesystem::path database() const { return folder.filePath("a.mdb").toStdString(); }
    void putOldFile() const
    {
        QFile old(folder.filePath("a.mdb"));
        EXPECT_TRUE(old.open(QIODevice::WriteOnly) && old.write("old") == 3);
    }
    void download()
    {
        messages.files.push_back(folder.filePath("a.mdb"));
        controls.press("Command2");
    }

    QTemporaryDir folder;
    ScriptedReadout readout{shortRing};
    link::Bench bench = benchAtFive();
    link::Gate gate;
    InputFilter filter{gate};
    TestMessages messages;
    autoread::Book book;
    SetAuto form{Workplace{bench, readout.module1, gate, messages}, book};
    SetAutoControls controls{form};
};

TEST_F(SetAutoByHand, WrappedRingComesInTheOrderOfItsRecords)
{
    readout.answer = wrappedRing;
    download();
    EXPECT_EQ(messages.shown, QStringList());
    EXPECT_EQ(controls.Label3().text(), "Total 1000 records. 1000 records have been received.");
    const auto lines = linesOf(exported(database()));
    ASSERT_EQ(lines.size(), 1001U);
    EXPECT_EQ(lines[0], "time,x,y");
    EXPECT_EQ(lines[1], "2024-01-01T00:00:00,998,-1.5");
    EXPECT_EQ(lines[2], "2024-01-01T00:01:00,999,-1.5");
    EXPECT_EQ(lines[3], "2024-01-01T00:02:00,0,-1.5");
    EXPECT_EQ(lines[1000], "2024-01-01T16:39:00,997,-1.5");
}

TEST_F(SetAutoByHand, BarMovesWithTheTimeLeft)
{
    QStringList formats;
    std::vector<int> values;
    readout.answer = [&](const std::string& frame) {
        values.push_back(controls.progress().value());
        formats << controls.progress().format();
        return shortRing(frame);
    };
    download();
    ASSERT_EQ(values.size(), 101U); // the count query comes first
    EXPECT_EQ(values[1], 0);
    EXPECT_EQ(values[2], 1);
    EXPECT_EQ(values[100], 99);
    EXPECT_EQ(formats[1], "%p %, about 14 s left");
    EXPECT_EQ(formats[51], "%p %, about 5 s left"); // 50 records of 0.095 s: the reply comes at once here
    EXPECT_EQ(controls.progress().value(), 100);
    EXPECT_EQ(controls.progress().format(), "%p %");
}

TEST_F(SetAutoByHand, RowIsInTheFileBeforeItIsCounted)
{
    int seen = 0;
    readout.answer = [&](const std::string& frame) {
        const auto label = controls.Label3().text();
        if (frame == ":05240001FF" || frame == ":05240005FF") {
            ++seen;
            const int counted = label.section(u' ', 3, 3).toInt();
            EXPECT_EQ(rowsIn(exported(database())), counted) << label.toStdString();
            EXPECT_EQ(counted, frame == ":05240001FF" ? 3 : 7);
        }
        return shortRing(frame);
    };
    download();
    EXPECT_EQ(seen, 2);
}

TEST_F(SetAutoByHand, ClosingEndsTheDownloadAfterTheRecordInFlight)
{
    readout.answer = [&](const std::string& frame) {
        if (frame == ":05240003FF") {
            form.close();
            EXPECT_TRUE(form.isVisible()) << "closed in the middle of a transaction";
        }
        return shortRing(frame);
    };
    download();
    EXPECT_FALSE(form.isVisible());
    EXPECT_EQ(messages.shown, QStringList());
    EXPECT_EQ(readout.frames.back(), ":05240003FF");
    EXPECT_EQ(rowsIn(exported(database())), 6);
}

TEST_F(SetAutoByHand, ClosingDuringTheCountQueryLeavesTheFileAlone)
{
    putOldFile();
    messages.answers = {true};
    readout.answer = [&](const std::string& frame) {
        form.close();
        return shortRing(frame);
    };
    download();
    EXPECT_FALSE(form.isVisible());
    EXPECT_EQ(messages.shown, QStringList());
    EXPECT_EQ(messages.files.size(), 1U) << "the file dialog was shown";
    EXPECT_EQ(contents(database()), "old");
    EXPECT_EQ(readout.frames.size(), 1U);
}

TEST_F(SetAutoByHand, ClosingInTheFileDialogLeavesTheFileAlone)
{
    putOldFile();
    messages.answers = {true};
    messages.onChoose = [&] { form.close(); };
    download();
    EXPECT_FALSE(form.isVisible());
    EXPECT_EQ(messages.shown, QStringList());
    EXPECT_EQ(contents(database()), "old");
}

TEST_F(SetAutoByHand, ClosingInTheQuestionLeavesTheFileAlone)
{
    putOldFile();
    messages.answers = {true};
    messages.onShow = [&](const QString&) { form.close(); };
    download();
    EXPECT_FALSE(form.isVisible());
    EXPECT_EQ(messages.shown, QStringList("File already exists, overwrite this file?"));
    EXPECT_EQ(contents(database()), "old");
    EXPECT_EQ(readout.frames.size(), 1U);
}

/// A file, what reads it, and how much room the disk has for more of it.
struct Room {
    const char* name;
    std::string (*read)(const std::filesystem::path&);
    rlim_t bytes;
};

class FullDisk : public SetAutoByHand, public ::testing::WithParamInterface<Room> {};

TEST_P(FullDisk, IsSaidAndTheRowsBeforeAreKept)
{
    const auto file = folder.filePath(GetParam().name);
    std::optional<LargestFile> limit;
    readout.answer = [&](const std::string& frame) {
        if (frame == ":05240098FF")
            limit.emplace(static_cast<rlim_t>(QFileInfo(file).size()) + GetParam().bytes);
        return shortRing(frame);
    };
    messages.files.push_back(file);
    controls.press("Command2");
    limit.reset();
    const int rows = rowsIn(GetParam().read(file.toStdString()));
    EXPECT_LT(rows, 100);
    ASSERT_EQ(messages.shown.size(), 1);
    EXPECT_TRUE(messages.last().startsWith(file + " could not be written: ")) << qPrintable(messages.last());
    EXPECT_TRUE(messages.last().endsWith(
        QStringLiteral("the file holds the %1 records received before. The readout still has all its data.")
            .arg(rows)))
        << qPrintable(messages.last());
    const auto some =
        QStringLiteral("%1 of the 100 records that readout 5 held when it was last asked are in %2; ");
    EXPECT_TRUE(controls.status().startsWith(rows == 0 ? QStringLiteral("None of the 100 records")
                                                       : some.arg(rows).arg(file)))
        << qPrintable(controls.status());
    EXPECT_EQ(controls.progress().value(), rows);
}

INSTANTIATE_TEST_SUITE_P(SetAuto, FullDisk,
                         ::testing::Values(Room{"a.csv", contents, 1000}, Room{"a.mdb", exported, 0}),
                         [](const auto& room) { return std::string(room.param.name).substr(2); });

TEST_F(SetAutoByHand, FullRingHoldsWhatWasTakenSinceTheDownload)
{
    download();
    readout.answer = [](const std::string&) { return std::string(":0522010000990003FF\r\n"); };
    controls.press("Command2"); // cancelled in the file dialog
    EXPECT_TRUE(controls.status().startsWith("99 of the 100 records")) << qPrintable(controls.status());
    readout.clock.move(100);
    controls.press("Command2");
    EXPECT_EQ(controls.status(),
              "Up to 100 of the 100 records that readout 5 held when it was last asked are in no file: "
              "since the download it may have gone round its ring.");
}

TEST_F(SetAutoByHand, SecondPressDuringADownloadDoesNothing)
{
    readout.answer = [&](const std::string& frame) {
        if (frame == ":05240003FF") {
            for (const auto* name : {"Command1", "Command2", "Command3"}) {
                controls.press(name);
            }
        }
        return shortRing(frame);
    };
    download();
    EXPECT_EQ(messages.shown, QStringList());
    EXPECT_EQ(readout.frames.size(), 101U);
}

TEST_F(SetAutoByHand, AddressTypedMeanwhileDoesNotTurnTheDownloadToAnotherReadout)
{
    readout.answer = [&](const std::string& frame) {
        if (frame == ":05240003FF") controls.Text1().setText("12");
        return shortRing(frame);
    };
    download();
    EXPECT_EQ(readout.frames.back(), ":05240097FF");
    controls.Text1().setText("5");
    EXPECT_THAT(controls.status().toStdString(), ::testing::StartsWith("All 100 records"));
}

TEST_F(SetAutoByHand, ProgramThatEndsDuringADownloadKeepsTheRows)
{
    readout.answer = [&](const std::string& frame) {
        if (frame != ":05240003FF") return shortRing(frame);
        readout.module1.abandon();
        return std::string();
    };
    download();
    EXPECT_EQ(messages.shown, QStringList("5 records have been received, Comm Error"));
    EXPECT_EQ(rowsIn(exported(database())), 5);
}

/// The slots of the ring that were asked for.
std::vector<std::string> slotsAskedFor(const std::vector<std::string>& frames)
{
    std::vector<std::string> slots;
    for (const auto& frame : frames) {
        if (frame.starts_with(":0524")) slots.push_back(frame.substr(5, 4));
    }
    return slots;
}

// Characters 14 to 17 hold what is next: "0008", of which "000" has come, is 0, and so the ring has wrapped.
TEST_F(SetAutoByHand, CountCutInsideNextGoesOnWithWhatItReads)
{
    readout.answer = [](const std::string& frame) {
        return frame == ":0522FF" ? std::string(":052200100007000") : wrappedRing(frame);
    };
    download();
    EXPECT_EQ(messages.shown, QStringList("Comm Error"));
    EXPECT_EQ(slotsAskedFor(readout.frames),
              (std::vector<std::string>{"0007", "0008", "0009", "0000", "0001", "0002", "0003", "0004",
                                        "0005", "0006"}));
    EXPECT_EQ(controls.Label3().text(), "Total 10 records. 10 records have been received.");
}

TEST_F(SetAutoByHand, NextAboveTheCapacityIsFetchedModuloTheCapacity)
{
    readout.answer = [](const std::string& frame) {
        return frame == ":0522FF" ? std::string(":0522001000070013FF\r\n") : wrappedRing(frame);
    };
    download();
    EXPECT_EQ(messages.shown, QStringList());
    EXPECT_EQ(slotsAskedFor(readout.frames),
              (std::vector<std::string>{"0007", "0008", "0009", "0000", "0001", "0002"}));
    EXPECT_EQ(controls.Label3().text(), "Total 6 records. 6 records have been received.");
    EXPECT_EQ(rowsIn(exported(database())), 6);
}

} // namespace

} // namespace quorvel::test
