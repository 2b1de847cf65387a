#include "site/jsonlines.h"
#include "site/sitefile.h"

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QTemporaryDir>

#include <gmock/gmock.h>

namespace quorvel::site {
namespace {

using protocol::Sensor;
using ::testing::HasSubstr;

const auto kExamples = QStringLiteral(QUORVEL_ROOT "/tests/site/examples/");

QByteArray content(const QString& path)
{
    QFile file(path);
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << qPrintable(path);
    return file.readAll();
}

/// A site with one readout that has these members.
QByteArray withReadout(const QByteArray& members)
{
    return "{\n  \"name\": \"Dam\",\n  \"readouts\": [\n    {" + members + "}\n  ]\n}\n";
}

std::string reasonFor(const QByteArray& json)
{
    const auto site = parseSite(json, QStringLiteral("dam.quorvel-site.json"));
    return site ? std::string("no reason") : site.error();
}

TEST(SiteFile, HoldsASite)
{
    const auto site = parseSite(content(kExamples + "good-all-keys.json"), "all");
    ASSERT_TRUE(site) << site.error();
    EXPECT_EQ(site->name, "North dam");
    EXPECT_EQ(site->port, "/dev/ttyUSB0");
    EXPECT_EQ(site->note, QString::fromUtf8("Gallery 2, key at the gate.\nTel. 0123 – 456"));
    ASSERT_EQ(site->readouts.size(), 3U);
    const auto& block = site->readouts[1];
    EXPECT_EQ(block.address, 12);
    EXPECT_EQ(block.type, link::TypeC);
    EXPECT_EQ(block.name, "Block 7, foot");
    EXPECT_EQ(block.reference, "Zero of 2024-05-17, reservoir at 412 m");
    EXPECT_EQ(block.limit(Sensor::X), (Limit{-2, 2.5}));
    EXPECT_EQ(block.limit(Sensor::Y), Limit());
    EXPECT_EQ(block.limit(Sensor::Z1), (Limit{std::nullopt, 1}));
    EXPECT_EQ(site->readoutAt(12), &site->readouts[1]);
    EXPECT_EQ(site->readoutAt(13), nullptr);
}

// What is pasted into a cell, or comes from a script, must not make a file that is refused when it is opened.
TEST(SiteFile, WhateverANameHoldsTheFileCanBeOpenedAgain)
{
    Site site;
    site.name = "North\tdam\r\nupper";
    site.port = "/dev/ttyUSB0\n";
    site.note = QString(QChar::ByteOrderMark) + QChar(QChar::ByteOrderMark) + "two\nlines";
    site.readouts.resize(1);
    site.readouts[0].address = 5;
    site.readouts[0].name = "a" + QString(QChar(0x2028)) + "b";
    const auto again = parseSite(toJson(site), "again");
    ASSERT_TRUE(again) << again.error();
    EXPECT_EQ(again->name, "North dam  upper");
    EXPECT_EQ(again->port, "/dev/ttyUSB0 ");
    EXPECT_EQ(again->note, "two\nlines");
    EXPECT_EQ(again->readouts[0].name, "a b");
}

TEST(SiteFile, EveryGoodExampleIsReadAndEveryWrongOneRefused)
{
    int good = 0;
    int wrong = 0;
    for (const auto& name : QDir(kExamples).entryList({"*.json"})) {
        const auto site = parseSite(content(kExamples + name), name);
        EXPECT_EQ(static_cast<bool>(site), name.startsWith("good-")) << qPrintable(name);
        ++(site ? good : wrong);
    }
    EXPECT_GE(good, 3);
    EXPECT_GE(wrong, 10);
}

TEST(SiteFile, SavingKeepsWhatItDoesNotKnowAndTheOrderOfTheReadouts)
{
    const auto before = content(kExamples + "good-all-keys.json");
    const auto site = parseSite(before, "all");
    ASSERT_TRUE(site);
    const auto after = toJson(*site);
    EXPECT_EQ(QJsonDocument::fromJson(after), QJsonDocument::fromJson(before));
    EXPECT_THAT(after.toStdString(), HasSubstr("\"inspector\": \"Anna\""));
    EXPECT_EQ(toJson(*parseSite(after, "again")), after);
}

TEST(SiteFile, AChangeReplacesItsKeyAndNoOther)
{
    auto site = *parseSite(content(kExamples + "good-all-keys.json"), "all");
    auto& readout = site.readouts[1];
    readout.name = "Block 8";
    readout.limit(Sensor::X) = {};
    readout.limit(Sensor::Y) = {-1, std::nullopt};
    site.note.clear();
    const auto object = QJsonDocument::fromJson(toJson(site)).object();
    EXPECT_EQ(object["note"].toString(), "");
    const auto written = object["readouts"].toArray()[1].toObject();
    EXPECT_EQ(written["name"], "Block 8");
    EXPECT_EQ(written["wire"], "invar"); // not known to the program
    const auto limits = written["limitsMm"].toObject();
    EXPECT_EQ(limits["x"].toObject(), (QJsonObject{{"since", "2023"}})); // not known either
    EXPECT_EQ(limits["y"].toObject(), (QJsonObject{{"low", -1}}));
    EXPECT_EQ(limits["z1"].toObject(), (QJsonObject{{"high", 1}}));
}

TEST(SiteFile, ANewOneHasNoEmptyTexts)
{
    Site site;
    site.name = "Dam";
    site.readouts.emplace_back().address = 5;
    EXPECT_EQ(
        QJsonDocument::fromJson(toJson(site)).object(),
        (QJsonObject{{"name", "Dam"}, {"readouts", QJsonArray{QJsonObject{{"address", 5}, {"type", "A"}}}}}));
}

TEST(SiteFile, AWrongValueIsNamedWithItsLineAndTheReason)
{
    const std::string place = "dam.quorvel-site.json, line 4: ";
    EXPECT_EQ(reasonFor(withReadout(R"("address": 250, "type": "A")")),
              place + "\"address\" must be a whole number from 1 to 249, not 250.");
    EXPECT_EQ(reasonFor(withReadout(R"("address": 5.5, "type": "A")")),
              place + "\"address\" must be a whole number from 1 to 249, not 5.5.");
    EXPECT_EQ(reasonFor(withReadout(R"("adress": 5, "type": "A")")),
              place + "the readout has no \"address\".");
    EXPECT_EQ(reasonFor(withReadout(R"("address": 5)")), place + "the readout has no \"type\".");
    EXPECT_EQ(reasonFor(withReadout(R"("address": 5, "type": "E")")),
              place + R"("type" must be "A", "B", "C" or "D", not "E".)");
    EXPECT_EQ(reasonFor(withReadout(R"("address": 5, "type": "A", "name": 7)")),
              place + "\"name\" must be a text in quotation marks, not 7.");
    EXPECT_EQ(reasonFor(withReadout(R"("address": 5, "type": "A", "name": "two\nlines")")),
              place + "\"name\" must be one line.");
    EXPECT_EQ(reasonFor("{\"readouts\": 5}"),
              "dam.quorvel-site.json, line 1: \"readouts\" must be a list, not 5.");
    EXPECT_EQ(reasonFor("[\n1]"),
              "dam.quorvel-site.json, line 1: a site file must be one object in braces, { ... }.");
}

TEST(SiteFile, AWrongLimitIsNamedWithItsLine)
{
    const QByteArray begin("\"address\": 5, \"type\": \"A\", \"limitsMm\": {\n\"x\": ");
    const std::string place = "dam.quorvel-site.json, line 5: ";
    EXPECT_EQ(reasonFor(withReadout(begin + "{\"low\": 2, \"high\": 1}}")),
              place + "the low limit is above the high one.");
    EXPECT_EQ(reasonFor(withReadout(begin + "{\"low\":\n\"2\"}}")),
              "dam.quorvel-site.json, line 6: \"low\" must be a number of mm, not \"2\".");
    EXPECT_EQ(reasonFor(withReadout(begin + "2}")),
              place + R"(a limit must be written as {"low": -2, "high": 2}, not 2.)");
    EXPECT_EQ(reasonFor(withReadout(begin + "{},\n\"z2\": {}}")),
              "dam.quorvel-site.json, line 6: a readout of type A has no Z2.");
}

TEST(SiteFile, EverythingThatIsWrongIsNamedAtOnce)
{
    const auto reason = reasonFor("{\"name\": 1,\n\"readouts\": [{\"address\": 5, \"type\": \"A\"},\n"
                                  "{\"address\": 5, \"type\": \"B\"},\n7]}");
    EXPECT_EQ(reason, "dam.quorvel-site.json, line 1: \"name\" must be a text in quotation marks, not 1.\n"
                      "dam.quorvel-site.json, line 3: the address 5 is there twice, first in line 2.\n"
                      "dam.quorvel-site.json, line 4: a readout must be an object, not 7.");
    QByteArray many("{\"readouts\": [");
    for (int i = 0; i < 1000; ++i)
        many += "0,";
    const auto reasons = QString::fromStdString(reasonFor(many + "0]}"));
    EXPECT_EQ(reasons.count('\n') + 1, kMostReasons);
}

TEST(SiteFile, AByteOrderMarkThatNobodySeesIsRefused)
{
    const QByteArray kept = "{\"name\": \"a\xEF\xBB\xBF\", \"readouts\": []}";
    EXPECT_TRUE(parseSite("\xEF\xBB\xBF" + kept, "dam"))
        << "at the beginning of the file it says what the file is";
    for (const char* mark : {"\xEF\xBB\xBF", "\\ufeff", "\\uFEFF"}) {
        const auto site = parseSite(QByteArray("{\n\"") + mark + "name\": \"a\", \"readouts\": []}", "dam");
        EXPECT_EQ(
            site ? "" : site.error(),
            "dam, line 2: a text begins with a byte-order mark (U+FEFF), which cannot be seen. Type the "
            "text anew.");
    }
}

TEST(SiteFile, AKeyThatIsThereTwiceIsNamed)
{
    EXPECT_EQ(
        reasonFor(withReadout("\"address\": 5, \"type\": \"A\",\n\"name\": \"a\",\n\"na\\u006de\": \"b\"")),
        "dam.quorvel-site.json, line 6: \"name\" is there twice.");
    EXPECT_EQ(reasonFor("{\"a\\nb\": 1, \"a\\nb\": 2, \"readouts\": []}"),
              "dam.quorvel-site.json, line 1: \"a\\nb\" is there twice.")
        << "a reason is one line";
}

TEST(SiteFile, WhatIsNotJsonIsNamedWithItsLine)
{
    EXPECT_THAT(reasonFor("{\n\"name\": \"Dam\"\n\"readouts\": []}"),
                ::testing::StartsWith("dam.quorvel-site.json, line 3: this is not JSON: "));
    for (const auto* nothing : {"", " \n"})
        EXPECT_EQ(reasonFor(nothing), "dam.quorvel-site.json is empty. Open another file.");
    EXPECT_THAT(reasonFor(QByteArray(100'000, '[')), HasSubstr("this is not JSON"));
}

TEST(SiteFile, AByteOrderMarkIsTolerated)
{
    EXPECT_EQ(reasonFor("\xEF\xBB\xBF{\n\"readouts\": 1}"),
              "dam.quorvel-site.json, line 2: \"readouts\" must be a list, not 1.");
}

TEST(SiteFile, IsReadFromDiskAndWrittenThere)
{
    const QTemporaryDir folder;
    const std::filesystem::path path(folder.filePath("a.quorvel-site.json").toStdString());
    const auto missing = loadSite(path);
    EXPECT_THAT(missing ? "" : missing.error(), HasSubstr("a.quorvel-site.json cannot be read: "));
    Site site;
    site.name = "Dam";
    ASSERT_TRUE(saveSite(path, site));
    EXPECT_EQ(loadSite(path)->name, "Dam");
    ASSERT_TRUE(QFile::resize(QString::fromStdString(path.string()), kLongestFile + 1));
    const auto long1 = loadSite(path);
    EXPECT_THAT(long1 ? "" : long1.error(), HasSubstr("is too long for a site file."));
}

TEST(SiteFile, ALimitIsPassedBeyondItNotAtIt)
{
    const Limit limit{-1, 2};
    EXPECT_FALSE(limit.isPassedBy(-1) || limit.isPassedBy(0) || limit.isPassedBy(2));
    EXPECT_TRUE(limit.isPassedBy(-1.00001) && limit.isPassedBy(2.00001));
    EXPECT_FALSE(Limit().isSet() || Limit().isPassedBy(1e9));
}

TEST(JsonLines, SayWhereAValueBegins)
{
    const JsonLines lines("{\"a\" :\n [1, \"x]\\\"\\n\",\n{\"b/~\": true}],\n\"\": null}");
    EXPECT_EQ(lines.lineOf(""), 1);
    EXPECT_EQ(lines.lineOf("/a"), 2);
    EXPECT_EQ(lines.lineOf("/a/1"), 2);
    EXPECT_EQ(lines.lineOf("/a/2"), 3);
    EXPECT_EQ(lines.lineOf("/a/2/b~1~0"), 3);
    EXPECT_EQ(lines.lineOf("/"), 4);
    EXPECT_EQ(lines.lineOf("/a/2/c"), 3) << "what is not there is where it should be";
    EXPECT_TRUE(lines.repeated().isEmpty());
}

} // namespace
} // namespace quorvel::site
