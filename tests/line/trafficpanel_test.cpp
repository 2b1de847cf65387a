#include "line/trafficpanel.h"

#include "support/bench_by_hand.h"
#include "support/bench_on_the_bus.h"

#include <QApplication>
#include <QClipboard>
#include <QTemporaryDir>
#include <QTest>

#include <gtest/gtest.h>

namespace quorvel::line {
namespace {

using test::child;

class TrafficPanelByHand : public test::BenchByHand {
protected:
    TrafficPanelByHand()
    {
        module1.addObserver(model);
        module1.addObserver(trace);
        panel.show();
    }
    ~TrafficPanelByHand() override
    {
        module1.removeObserver(model);
        module1.removeObserver(trace);
    }

    void ask(const char* address)
    {
        module1.transact(protocol::transaction(protocol::CommandId::QueryOffsetX, address));
        model.flush();
    }
    QTableView& table() { return *child<QTableView>(panel, "TrafficLines"); }
    QString status() { return child<QLabel>(panel, "TrafficStatus")->text(); }
    void press(const char* name) { child<QPushButton>(panel, name)->click(); }

    QTemporaryDir folder;
    TrafficModel model;
    Trace trace;
    TrafficPanel panel{model, trace, workplace};
};

TEST_F(TrafficPanelByHand, ReadoutBoxFilters)
{
    ask("05");
    ask("0C");
    auto& box = *child<QLineEdit>(panel, "TrafficReadout");
    QTest::keyClicks(&box, "12");
    EXPECT_EQ(table().model()->rowCount(), 1);
    box.setText("none");
    EXPECT_EQ(table().model()->rowCount(), 2);
}

TEST_F(TrafficPanelByHand, FindGoesFromLineToLineAndRoundTheEnd)
{
    for (const auto* address : {"05", "0C", "05"}) {
        ask(address);
    }
    auto& find = *child<QLineEdit>(panel, "TrafficFind");
    find.setText(":0572");
    for (const int row : {0, 2, 0}) {
        QTest::keyClick(&find, Qt::Key_Return);
        EXPECT_EQ(table().currentIndex().row(), row);
    }
    find.setText("nowhere");
    QTest::keyClick(&find, Qt::Key_Return);
    EXPECT_EQ(status(), "\"nowhere\" was not found.");
}

TEST_F(TrafficPanelByHand, CopyTakesTheSelectionOrAll)
{
    ask("05");
    ask("0C");
    press("TrafficCopy");
    const auto all = QApplication::clipboard()->text().split('\n');
    ASSERT_EQ(all.size(), 2);
    EXPECT_TRUE(all[1].contains("\t12\tRead the offset of X\t:0C72FF\\x0D\\x0A\t\tsilent\t"))
        << qPrintable(all[1]);
    table().selectRow(0);
    press("TrafficCopy");
    EXPECT_EQ(QApplication::clipboard()->text(), all[0]);
}

TEST_F(TrafficPanelByHand, PauseAndClear)
{
    child<QCheckBox>(panel, "TrafficPause")->click();
    ask("05");
    EXPECT_EQ(table().model()->rowCount(), 0);
    child<QCheckBox>(panel, "TrafficPause")->click();
    ask("05");
    EXPECT_EQ(table().model()->rowCount(), 1);
    press("TrafficClear");
    EXPECT_EQ(table().model()->rowCount(), 0);
}

TEST_F(TrafficPanelByHand, RecordsToAFileUntilItIsStopped)
{
    const auto path = folder.filePath("a.jsonl");
    messages.files = {path};
    press("TrafficRecord");
    EXPECT_EQ(status(), "Recording to " + path);
    EXPECT_EQ(child<QPushButton>(panel, "TrafficRecord")->text(), "Stop Recording");
    ask("05");
    press("TrafficRecord");
    EXPECT_EQ(child<QPushButton>(panel, "TrafficRecord")->text(), "Record to File ...");
    ask("05");
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    EXPECT_EQ(file.readAll().count('\n'), 2);
}

TEST_F(TrafficPanelByHand, AFullDiskEndsTheRecordingInWords)
{
    messages.files = {"/dev/full"};
    press("TrafficRecord");
    ask("05");
    EXPECT_TRUE(status().startsWith("Recording the traffic to /dev/full has ended")) << qPrintable(status());
    EXPECT_EQ(child<QPushButton>(panel, "TrafficRecord")->text(), "Record to File ...");
}

TEST_F(TrafficPanelByHand, ARunningCommandIsNotHaltedByTheDialog)
{
    messages.files = {folder.filePath("a.jsonl")};
    gate.run([this] { press("TrafficRecord"); });
    EXPECT_FALSE(trace.isOpen());
    EXPECT_EQ(status(), "Wait until the running command has ended, then choose the file.");
    EXPECT_EQ(messages.files.size(), 1U) << "no dialog";
}

TEST_F(TrafficPanelByHand, CancellingTheDialogRecordsNothing)
{
    press("TrafficRecord");
    EXPECT_FALSE(trace.isOpen());
    EXPECT_EQ(status(), "");
}

} // namespace
} // namespace quorvel::line
