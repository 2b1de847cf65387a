#include "line/trace.h"

#include "protocol/meaning.h"
#include "support/bench_by_hand.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace quorvel::line {
namespace {

TEST(Meaning, EveryCommandIsFoundByItsFrame)
{
    for (const auto& row : protocol::commands()) {
        const auto frame = protocol::transaction(row.id, "05", "0512").frame;
        const auto* found = protocol::commandOf(frame);
        ASSERT_TRUE(found) << row.digits;
        EXPECT_EQ(found->digits, row.digits);
        EXPECT_EQ(protocol::parameterOf(frame), "0512") << row.digits;
    }
}

TEST(Meaning, SaysWhatAFrameIsFor)
{
    EXPECT_EQ(protocol::meaningOf(":052101FF\r\n"), "Read X and Y");
    EXPECT_EQ(protocol::meaningOf(":0571+1.50000FF\r\n"), "Set the offset of X to +1.50000");
    EXPECT_EQ(protocol::meaningOf(":05240007FF\r\n"), "Fetch a stored record 0007");
    EXPECT_EQ(protocol::meaningOf(":FF01FF\r\n"), "Search the bus");
    EXPECT_EQ(protocol::meaningOf(""), "Listen");
    for (const auto* other : {":", ":05", ":0599FF\r\n", "0571FF\r\n"}) {
        EXPECT_EQ(protocol::meaningOf(other), "Unknown command") << other;
    }
}

TEST(Meaning, AddressIsThatOfTheFrame)
{
    EXPECT_EQ(protocol::addressOf(":0C72FF\r\n"), 12);
    EXPECT_EQ(protocol::addressOf(":FF01FF\r\n"), 255);
    for (const auto* none : {"", ":", ":0", "0572", ":zz72FF\r\n"}) {
        EXPECT_EQ(protocol::addressOf(none), -1) << none;
    }
}

class TraceByHand : public test::BenchByHand {
protected:
    TraceByHand()
    {
        module1.addObserver(trace);
        EXPECT_EQ(trace.open(path), "");
    }
    ~TraceByHand() override { module1.removeObserver(trace); }

    std::vector<QJsonObject> lines() const
    {
        QFile file(path);
        EXPECT_TRUE(file.open(QIODevice::ReadOnly));
        std::vector<QJsonObject> objects;
        while (!file.atEnd()) {
            objects.push_back(QJsonDocument::fromJson(file.readLine()).object());
        }
        return objects;
    }
    void readXY() { module1.transact(protocol::transaction(protocol::CommandId::ReadXY, "05")); }

    QTemporaryDir folder;
    const QString path = folder.filePath("a.jsonl");
    Trace trace;
};

TEST_F(TraceByHand, AFrameHasItsLineWhenItIsSentAndAnotherWhenItIsAnswered)
{
    std::size_t early = 0;
    onFrame = [&] { early = lines().size(); };
    answerWith({":052101+1.50000-2.0000000FF\r\n"});
    readXY();
    EXPECT_EQ(early, 1U);
    const auto told = lines();
    ASSERT_EQ(told.size(), 2U);
    EXPECT_EQ(told[0]["exchange"], 1);
    EXPECT_EQ(told[0]["address"], 5);
    EXPECT_EQ(told[0]["kind"], "query");
    EXPECT_EQ(told[0]["command"], "2101");
    EXPECT_EQ(told[0]["meaning"], "Read X and Y");
    EXPECT_EQ(told[0]["frame"], ":052101FF\r\n");
    EXPECT_FALSE(told[0].contains("reply"));
    EXPECT_TRUE(told[0]["time"].toString().startsWith("2024-05-17T09:05:30.000")) << "ISO 8601";
    EXPECT_EQ(told[1]["exchange"], 1);
    EXPECT_EQ(told[1]["reply"], ":052101+1.50000-2.0000000FF\r\n");
    EXPECT_EQ(told[1]["outcome"], "complete");
    EXPECT_TRUE(told[1]["firstCharacterMs"].isDouble());
}

TEST_F(TraceByHand, ADeadBusLeavesATrace)
{
    readXY();
    const auto told = lines();
    ASSERT_EQ(told.size(), 2U);
    EXPECT_EQ(told[1]["outcome"], "silent");
    EXPECT_TRUE(told[1]["lastCharacterMs"].isNull());
    EXPECT_EQ(told[1]["reply"], "");
}

TEST_F(TraceByHand, AnyByteCanBeWritten)
{
    answerWith({std::string("\0\xff\"\\", 4)});
    readXY();
    EXPECT_EQ(lines()[1]["reply"].toString(), QString::fromLatin1("\0\xff\"\\", 4));
    EXPECT_EQ(lines()[1]["outcome"], "short 4 of 29");
}

TEST_F(TraceByHand, AnotherRunIsAppended)
{
    readXY();
    trace.close();
    readXY();
    EXPECT_EQ(lines().size(), 2U);
    EXPECT_EQ(trace.open(path), "");
    readXY();
    EXPECT_EQ(lines().size(), 4U);
}

TEST_F(TraceByHand, AFullDiskIsToldOnceAndHoldsNothingUp)
{
    QStringList told;
    QObject::connect(&trace, &Trace::failed, &trace, [&told](const QString& reason) { told << reason; });
    ASSERT_EQ(trace.open("/dev/full"), "");
    readXY();
    readXY();
    ASSERT_EQ(told.size(), 1);
    EXPECT_TRUE(told[0].startsWith("Recording the traffic to /dev/full has ended: ")) << qPrintable(told[0]);
    EXPECT_EQ(frames.size(), 2U);
}

TEST(Trace, AFileThatCannotBeMadeGivesItsReason)
{
    Trace trace;
    const auto reason = trace.open("/nowhere/a.jsonl");
    EXPECT_TRUE(reason.startsWith("The traffic cannot be recorded to /nowhere/a.jsonl: "))
        << qPrintable(reason);
    EXPECT_FALSE(trace.isOpen());
}

TEST_F(TraceByHand, WhatAFloodHasLostIsCounted)
{
    readXY();
    EXPECT_FALSE(lines().back().contains("lost"));
    device->receive(std::string(link::MSComm::kInputBuffer + 9, 'x'));
    readXY();
    EXPECT_EQ(lines().back()["lost"], 9);
}

} // namespace
} // namespace quorvel::line
