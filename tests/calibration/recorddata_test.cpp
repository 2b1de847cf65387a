#include "calibration/calibration_files.h"
#include "calibration/recordfile.h"

#include <QJsonArray>
#include <QJsonDocument>

#include <gmock/gmock.h>

namespace quorvel::calibration {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;

const DirectionRow& x() { return *directionOf("X"); }
const QDateTime kMorning(QDate(2024, 5, 17), QTime(9, 30));
const std::time_t kDay = kMorning.toSecsSinceEpoch();

RecordData filled()
{
    RecordData record;
    record.address = 5;
    record.serial = QStringLiteral("CL-0042");
    record.gauge = QStringLiteral("dial gauge 17");
    record.person = QStringLiteral("张伟");
    record.remark = QStringLiteral("window \"cleaned\"");
    record.tolerance = 0.02;
    record.steadyWithin = 0.003;
    record.zeroIsFree = true;
    record.begun = kMorning;
    record.run(RunKind::Found)[0].put(
        {0.25, false, {{kMorning, 5, {1.5}}, {kMorning.addSecs(1), 5, {1.75}}}});
    record.run(RunKind::Found)[0].put({0.5, true, {{kMorning.addSecs(2), 5, {1.625}}}});
    record.run(RunKind::Left)[10].put({2.5, false, {{kMorning.addSecs(9), 5, {2.5}}}});
    record.downloads.push_back({kMorning, 5, "X_Data", true, ":0561", Verdict::Agrees, 0.005});
    record.downloads.push_back({kMorning, 12, "X_Data", false, ":0C61", Verdict::Incomplete, {}});
    return record;
}

QByteArray jsonOf(const RecordData& record) { return QJsonDocument(recordJson(record, x())).toJson(); }

/// The JSON of filled() with one text in the place of another.
QByteArray with(const char* text, const char* another)
{
    auto json = jsonOf(filled());
    EXPECT_TRUE(json.contains(text)) << text;
    return json.replace(text, another);
}

TEST(RecordData, ComesBackAsItWasWritten)
{
    const auto read = readRecord(jsonOf(filled()), x());
    ASSERT_TRUE(read) << read.error();
    const auto wanted = filled();
    EXPECT_EQ(read->address, 5);
    EXPECT_EQ(read->serial, wanted.serial);
    EXPECT_EQ(read->gauge, wanted.gauge);
    EXPECT_EQ(read->person, wanted.person);
    EXPECT_EQ(read->remark, wanted.remark);
    EXPECT_EQ(read->tolerance, wanted.tolerance);
    EXPECT_EQ(read->steadyWithin, wanted.steadyWithin);
    EXPECT_EQ(read->zeroIsFree, true);
    EXPECT_EQ(read->begun, kMorning);
    EXPECT_EQ(read->runs, wanted.runs);
    EXPECT_EQ(read->downloads, wanted.downloads);
}

TEST(RecordData, WhatWasFirstWithinASecondIsStillFirstWhenItComesBack)
{
    RecordData record;
    const QDateTime at(QDate(2024, 5, 17), QTime(9, 30, 9, 400));
    record.downloads.push_back({at, 5, "X_Data", false, ":", Verdict::Agrees, {}});
    record.run(RunKind::Found)[0].put(
        {0.0, false, {{at.addMSecs(-300), 5, {1}}, {at.addMSecs(300), 5, {1}}}});
    const auto again = readRecord(QJsonDocument(recordJson(record, x())).toJson(), x());
    ASSERT_TRUE(again);
    const auto& takes = again->run(RunKind::Found)[0].passes[0].takes;
    EXPECT_LT(takes[0].at, again->downloads[0].at) << "taken before the readout had the table";
    EXPECT_GT(takes[1].at, again->downloads[0].at);
}

TEST(RecordData, EmptyRecordComesBackToo)
{
    const auto read = readRecord(jsonOf({}), x());
    ASSERT_TRUE(read) << read.error();
    EXPECT_EQ(read->address, 0);
    EXPECT_FALSE(read->tolerance);
    EXPECT_FALSE(read->begun.isValid());
    EXPECT_TRUE(read->downloads.empty());
}

TEST(RecordData, KeepsKeysThatItDoesNotKnow)
{
    auto json = QJsonDocument::fromJson(jsonOf(filled())).object();
    json["room"] = "cellar";
    auto readout = json["readout"].toObject();
    readout["cable"] = QJsonArray{1, 2};
    json["readout"] = readout;
    auto downloads = json["downloads"].toArray();
    auto second = downloads[1].toObject();
    second["why"] = "adapter";
    downloads[1] = second;
    json["downloads"] = downloads;

    auto read = readRecord(QJsonDocument(json).toJson(), x());
    ASSERT_TRUE(read) << read.error();
    read->person = QStringLiteral("Li");
    read->downloads.push_back(read->downloads.front());
    const auto again = recordJson(*read, x());
    EXPECT_EQ(again["room"].toString(), "cellar");
    EXPECT_EQ(again["person"].toString(), "Li");
    EXPECT_EQ(again["readout"].toObject()["cable"].toArray().size(), 2);
    ASSERT_EQ(again["downloads"].toArray().size(), 3);
    EXPECT_EQ(again["downloads"].toArray()[1].toObject()["why"].toString(), "adapter");
}

TEST(RecordData, WhatIsNoRecordIsRefusedWithItsReason)
{
    const auto why = [](const QByteArray& json) {
        const auto read = readRecord(json, x());
        return read ? std::string("read") : read.error();
    };
    EXPECT_EQ(why(""), "it is not a JSON object");
    EXPECT_EQ(why("[1]"), "it is not a JSON object");
    EXPECT_EQ(why("{}"), "it is not a calibration record");
    EXPECT_EQ(why(with("\"version\": 1", "\"version\": 2")), "it is of another version of the program");
    EXPECT_EQ(why(with("\"direction\": \"X\"", "\"direction\": \"Z\"")), "it is of another direction");
    EXPECT_EQ(why(with("\"tolerance\": 0.02", "\"tolerance\": -1")),
              "its value of \"tolerance\" is not valid");
    EXPECT_EQ(why(with("\"tolerance\": 0.02", "\"tolerance\": \"a\"")),
              "its value of \"tolerance\" is not valid");
    EXPECT_EQ(why(with("\"address\": 12", "\"address\": 250")), "its value of \"address\" is not valid");
    EXPECT_EQ(why(with("\"address\": 12", "\"address\": 1.5")), "its value of \"address\" is not valid");
    EXPECT_EQ(why(with("\"incomplete\"", "\"fine\"")), "its value of \"verdict\" is not valid");
    EXPECT_EQ(why(with("2024-05-17T09:30:09", "yesterday")), "its value of \"at\" is not valid");
    EXPECT_EQ(why(with("1.625", "1e300")), "its value of \"readings\" is not valid");
    EXPECT_EQ(why(with("1.625", "1, 2")), "its value of \"readings\" is not valid");
    EXPECT_EQ(why(with("\"runs\": {", "\"runs\": 3, \"other\": {")), "its value of \"runs\" is not valid");
    EXPECT_EQ(why(with("\"points\": [", "\"points\": [7, ")), "its value of \"points\" is not valid");
    EXPECT_EQ(why(with("\"passes\": [", "\"passes\": [\"a\"], \"other\": [")),
              "its value of \"passes\" is not valid");
}

TEST(RecordData, MeanIsOverTheWaysNotOverTheTakes)
{
    const auto record = filled();
    const auto& point = record.run(RunKind::Found)[0];
    EXPECT_EQ(meansOf(*point.pass(false)), std::vector<double>{1.625});
    EXPECT_EQ(meanOf(point, 0), 1.625);
    EXPECT_FALSE(meanOf(record.run(RunKind::Found)[1], 0));
}

class RecordFileTest : public FolderOfFiles {
protected:
    RecordFile file_{at("XDirection.mdb"), x()};
};

TEST_F(RecordFileTest, StandsBesideItsWorkingFileAndIsMadeWithTheFirstChange)
{
    file_.load();
    EXPECT_EQ(file_.path(), at("XDirection.record.json"));
    EXPECT_TRUE(names().empty());
    ASSERT_TRUE(file_.change([](RecordData& record) { record.address = 5; }));
    RecordFile other(at("XDirection.mdb"), x());
    ASSERT_TRUE(other.change([](RecordData& record) { record.person = QStringLiteral("Li"); }));
    file_.load();
    EXPECT_EQ(file_.data().address, 5) << "the other one has read it before";
    EXPECT_EQ(file_.data().person, "Li");
    EXPECT_THAT(names(), ElementsAre("XDirection.record.json"));
}

TEST_F(RecordFileTest, DamagedFileIsSaidAndKept)
{
    put(at("XDirection.record.json"), "{ half");
    file_.load();
    EXPECT_THAT(file_.trouble(),
                HasSubstr("XDirection.record.json cannot be used: it is not a JSON object."));
    EXPECT_EQ(contentOf(at("XDirection.record.json")), "{ half") << "looking changes nothing";
    ASSERT_TRUE(file_.change([](RecordData& record) { record.address = 5; }, kDay));
    EXPECT_EQ(file_.trouble(), "");
    EXPECT_EQ(contentOf(at("XDirection.record.2024-05-17.json")), "{ half");
    ASSERT_TRUE(file_.change([](RecordData& record) { record.address = 6; }, kDay));
    EXPECT_THAT(names(), ElementsAre("XDirection.record.2024-05-17.json", "XDirection.record.json"))
        << "a good one is not kept";
}

TEST_F(RecordFileTest, WriteProtectedFileFailsAndStaysAsItIs)
{
    ASSERT_TRUE(file_.change([](RecordData& record) { record.address = 5; }));
    const auto before = contentOf(file_.path());
    std::filesystem::permissions(file_.path(), std::filesystem::perms::owner_read);
    const auto changed = file_.change([](RecordData& record) { record.address = 6; });
    ASSERT_FALSE(changed);
    EXPECT_THAT(changed.error(), HasSubstr("write-protected"));
    EXPECT_EQ(contentOf(file_.path()), before);
}

TEST_F(RecordFileTest, DatedCopiesAreNotKeptTwice)
{
    EXPECT_EQ(*keepDatedCopy(at("a.mdb"), kDay), "") << "there is no file";
    put(at("a.mdb"), "one");
    EXPECT_EQ(*keepDatedCopy(at("a.mdb"), kDay), at("a.2024-05-17.mdb"));
    EXPECT_EQ(*keepDatedCopy(at("a.mdb"), kDay), at("a.2024-05-17.mdb"));
    put(at("a.mdb"), "two");
    EXPECT_EQ(*keepDatedCopy(at("a.mdb"), kDay), at("a.2024-05-17-2.mdb"));
    EXPECT_EQ(*keepDatedCopy(at("a.mdb"), kDay + 86400), at("a.2024-05-18.mdb"));
    EXPECT_EQ(names().size(), 4U);
}

} // namespace
} // namespace quorvel::calibration
