#include "line/journal.h"

#include "line/journalwindow.h"
#include "support/bench_by_hand.h"
#include "support/bench_on_the_bus.h"

#include <QApplication>
#include <QClipboard>
#include <QJsonDocument>
#include <QPushButton>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <fstream>
#include <thread>

namespace quorvel::line {
namespace {

using protocol::CommandId;
using test::child;

class JournalByHand : public test::BenchByHand {
protected:
    JournalByHand() { module1.addObserver(journal); }
    ~JournalByHand() override { module1.removeObserver(journal); }

    void send(CommandId id, const std::string& parameter, const std::string& answer)
    {
        answerWith({answer});
        module1.transact(protocol::transaction(id, "05", parameter));
    }
    std::vector<QJsonDocument> lines() const
    {
        QFile file(path);
        std::vector<QJsonDocument> all;
        if (!file.open(QIODevice::ReadOnly)) return all;
        while (!file.atEnd()) {
            all.push_back(QJsonDocument::fromJson(file.readLine()));
        }
        return all;
    }

    QTemporaryDir folder;
    const QString path = folder.filePath("new/journal.jsonl");
    Journal journal{path.toStdString(), {"quorvel", "anna", [] { return QStringLiteral("COM3"); }}};
};

TEST_F(JournalByHand, ASetIsBookedWithWhatWasThereBefore)
{
    send(CommandId::QueryOffsetX, "", ":0572+0.25000FF\r\n");
    EXPECT_TRUE(lines().empty()) << "a query changes nothing";
    send(CommandId::SetOffsetX, "+1.50000", ":0571+1.50000FF\r\n");
    ASSERT_EQ(lines().size(), 1U);
    const auto line = lines()[0];
    EXPECT_TRUE(line["time"].toString().startsWith("2024-05-17T09:05:3"))
        << qPrintable(line["time"].toString());
    EXPECT_EQ(line["port"], "COM3");
    EXPECT_EQ(line["address"], 5);
    EXPECT_EQ(line["kind"], "set");
    EXPECT_EQ(line["meaning"], "Set the offset of X to +1.50000");
    EXPECT_EQ(line["old"], "+0.25000");
    EXPECT_EQ(line["new"], "+1.50000");
    EXPECT_EQ(line["outcome"], "complete");
    EXPECT_EQ(line["confirmed"], true);
    EXPECT_EQ(line["program"], "quorvel");
    EXPECT_EQ(line["user"], "anna");
}

TEST_F(JournalByHand, WhatWasConfirmedIsTheNextOldValueAndWhatWasNotIsUnknown)
{
    send(CommandId::SetOffsetX, "+1.50000", ":0571+1.50000FF\r\n");
    send(CommandId::SetOffsetX, "+2.50000", "");
    send(CommandId::SetOffsetX, "+3.50000", ":0571+3.50000FF\r\n");
    const auto all = lines();
    ASSERT_EQ(all.size(), 3U);
    EXPECT_TRUE(all[0]["old"].isNull());
    EXPECT_EQ(all[1]["old"], "+1.50000");
    EXPECT_EQ(all[1]["outcome"], "silent");
    EXPECT_EQ(all[1]["confirmed"], false);
    EXPECT_TRUE(all[2]["old"].isNull()) << "the readout may have taken 2.5";
}

// A new command cannot be forgotten: the journal goes by the table.
TEST_F(JournalByHand, EveryCommandThatChangesAReadoutIsBooked)
{
    std::size_t changing = 0;
    for (const auto& row : protocol::commands()) {
        send(row.id, "01", "");
        if (row.kind == link::Kind::Set || row.kind == link::Kind::Delete) ++changing;
        ASSERT_EQ(lines().size(), changing) << row.name;
    }
    EXPECT_GT(changing, 10U);
}

TEST_F(JournalByHand, WhatNeverWentOutIsNotBooked)
{
    module1.setReadOnly(true);
    send(CommandId::DeleteRecords, "", "");
    module1.setReadOnly(false);
    mscomm1.setPortOpen(false);
    send(CommandId::DeleteRecords, "", "");
    EXPECT_TRUE(lines().empty());
}

TEST_F(JournalByHand, AFullDiskIsToldOnceAndHoldsNothingUp)
{
    QFile::link("/dev/full", folder.filePath("full.jsonl"));
    Journal full(folder.filePath("full.jsonl").toStdString(), {"quorvel", "anna", [] { return QString(); }});
    QStringList told;
    QObject::connect(&full, &Journal::failed, &full, [&told](const QString& reason) { told << reason; });
    module1.addObserver(full);
    send(CommandId::SetOffsetX, "+1.50000", ":0571+1.50000FF\r\n");
    send(CommandId::SetOffsetX, "+1.50000", ":0571+1.50000FF\r\n");
    module1.removeObserver(full);
    ASSERT_EQ(told.size(), 1);
    EXPECT_TRUE(told[0].contains("full.jsonl cannot be written: ")) << qPrintable(told[0]);
}

TEST_F(JournalByHand, ALongFileGetsANameWithTheDayAndIsKept)
{
    QDir(folder.path()).mkdir("new");
    std::ofstream(path.toStdString()) << std::string(Journal::kLongest, '\n');
    send(CommandId::SetOffsetX, "+1.50000", "");
    EXPECT_EQ(lines().size(), 1U);
    const auto kept = QDir(folder.filePath("new")).entryList({"journal.*-*-*.jsonl"});
    ASSERT_EQ(kept.size(), 1);
    EXPECT_EQ(QFileInfo(folder.filePath("new/" + kept[0])).size(), Journal::kLongest);
}

TEST(Journal, SeveralWritersDoNotMixTheirLines)
{
    const QTemporaryDir folder;
    const auto path = folder.filePath("journal.jsonl").toStdString();
    constexpr int kWriters = 4;
    constexpr int kLines = 50;
    std::vector<std::thread> writers;
    for (int i = 0; i < kWriters; ++i) {
        writers.emplace_back([&path] {
            Journal journal(path, {"quorvel", "anna", [] { return QString(); }});
            link::Exchange exchange;
            exchange.transaction = protocol::transaction(CommandId::CalibrateX, "05", std::string(176, '1'));
            exchange.sent = exchange.transaction.frame.size();
            for (int line = 0; line < kLines; ++line) {
                journal.ended(exchange);
            }
        });
    }
    for (auto& writer : writers) {
        writer.join();
    }
    std::ifstream file(path);
    int whole = 0;
    for (std::string line; std::getline(file, line);) {
        ASSERT_TRUE(QJsonDocument::fromJson(QByteArray::fromStdString(line)).isObject()) << line;
        ++whole;
    }
    EXPECT_EQ(whole, kWriters * kLines);
}

TEST_F(JournalByHand, TheWindowShowsTheLinesAndFindsThem)
{
    send(CommandId::SetOffsetX, "+1.50000", ":0571+1.50000FF\r\n");
    send(CommandId::DeleteRecords, "", ":0525FF\r\n");
    std::ofstream(path.toStdString(), std::ios::app) << "half a li\n";
    JournalWindow window(path.toStdString());
    window.show();
    auto* model = child<QTableView>(window, "JournalLines")->model();
    ASSERT_EQ(model->rowCount(), 2);
    EXPECT_EQ(model->index(0, 2).data(), "Set the offset of X to +1.50000");
    EXPECT_EQ(model->index(0, 5).data(), "yes");
    EXPECT_EQ(child<QLabel>(window, "JournalStatus")->text(),
              "Lines in " + path +
                  ": 2. Older ones are in the files beside it. Lines that could not be read: 1.");
    child<QLineEdit>(window, "JournalSearch")->setText("delete");
    ASSERT_EQ(model->rowCount(), 1);
    child<QPushButton>(window, "JournalCopy")->click();
    const auto csv = QApplication::clipboard()->text().split('\n');
    ASSERT_EQ(csv.size(), 3);
    EXPECT_EQ(csv[0], "time,address,meaning,old,new,confirmed,outcome,program,user,port");
    EXPECT_TRUE(csv[1].contains(",5,Delete the stored records,,,yes,complete,quorvel,anna,COM3"))
        << qPrintable(csv[1]);
}

TEST(ReadingAJournal, ALineThatIsNoneOfOursIsCountedAndTheNextIsRead)
{
    QTemporaryDir folder;
    const auto path = folder.filePath("journal.jsonl").toStdString();
    std::ofstream(path) << "{\"address\":5}\n\n[1]\n{\"meaning\":\"" << std::string(3 * kLongestLine, 'a')
                        << "\"}\n{\"address\":12}\n{\"addr";
    const auto journal = readJournal(path);
    EXPECT_EQ(journal.failure, "");
    ASSERT_EQ(journal.lines.size(), 2U);
    EXPECT_EQ(journal.lines[0]["address"], 5);
    EXPECT_EQ(journal.lines[1]["address"], 12);
    const std::vector<std::size_t> places{1, 1, 1, 2}; // empty, no object, too long; cut off
    EXPECT_EQ(journal.unread, places);
}

TEST(ReadingAJournal, FilesThatWereSetAsideSinceComeFirst)
{
    QTemporaryDir folder;
    const std::pair<const char*, const char*> files[] = {
        {"journal.2024-05-15.jsonl", "{\"address\":1}\n"},
        {"journal.2024-05-17-2.jsonl", "{\"address\":3}\n{\n"},
        {"journal.2024-05-17.jsonl", "{\n{\"address\":2}\n"},
        {"journal.jsonl", "{\"address\":4}\n{\n"},
        {"journal.jsonl.lock", "{\"address\":9}\n"}};
    const auto time = [](int day, int hour) { return QDateTime({2024, 5, day}, {hour, 0}); };
    const QDateTime times[] = {time(15, 9), time(17, 9), time(17, 8), time(17, 10), time(17, 11)};
    for (std::size_t i = 0; i < std::size(files); ++i) {
        QFile file(folder.filePath(QLatin1String(files[i].first)));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(files[i].second);
        file.flush();
        ASSERT_TRUE(file.setFileTime(times[i], QFileDevice::FileModificationTime));
    }
    const auto journal = readJournal(folder.filePath("journal.jsonl").toStdString(), time(17, 0));
    QStringList addresses;
    for (const auto& line : journal.lines)
        addresses << QString::number(line["address"].toInt());
    EXPECT_EQ(addresses.join(u','), "2,3,4");
    const std::vector<std::size_t> places{0, 2, 3};
    EXPECT_EQ(journal.unread, places);
}

TEST(ReadingAJournal, WhatIsNoFileOrNoneOfOursIsNotRead)
{
    QTemporaryDir folder;
    EXPECT_TRUE(readJournal(folder.path().toStdString()).failure.endsWith(" cannot be read: it is no file."));
    EXPECT_EQ(readJournal((folder.path() + "/none").toStdString()).failure, "");
    const auto path = folder.filePath("journal.jsonl").toStdString();
    std::ofstream(path) << "";
    std::filesystem::resize_file(path, 10 * Journal::kLongest + 1);
    EXPECT_TRUE(
        readJournal(path).failure.endsWith("journal.jsonl cannot be read: it is longer than any of ours."));
}

TEST(JournalWindow, WithoutAFileIsEmpty)
{
    JournalWindow window("/nowhere/journal.jsonl");
    window.show();
    EXPECT_EQ(child<QTableView>(window, "JournalLines")->model()->rowCount(), 0);
    EXPECT_TRUE(
        child<QLabel>(window, "JournalStatus")->text().startsWith("Lines in /nowhere/journal.jsonl: 0."));
}

} // namespace
} // namespace quorvel::line
