#include "site/readinglines.h"

#include <QJsonDocument>
#include <QTimeZone>

#include <gtest/gtest.h>

namespace quorvel::site {
namespace {

/// A reading of 2024-05-17 09:05:30.250 in the summer time of Berlin.
Reading readingWith(std::array<std::optional<std::string>, kSensorCount> received,
                    const char* outcome = "complete")
{
    Reading reading;
    reading.address = 5;
    reading.time = QDateTime(QDate(2024, 5, 17), QTime(9, 5, 30, 250), QTimeZone("Europe/Berlin"));
    reading.received = std::move(received);
    reading.outcome = outcome;
    return reading;
}

Readout named(const char* name, link::InstrumentType type = link::TypeA)
{
    Readout readout;
    readout.address = 5;
    readout.name = QString::fromUtf8(name);
    readout.type = type;
    return readout;
}

const auto kGood = readingWith({"+1.50000", "-0.25000", std::nullopt, std::nullopt});
const auto kSilent = readingWith({}, "silent");

TEST(ReadingLines, NumbersAreWrittenAsOtherProgramsReadThem)
{
    EXPECT_EQ(plainNumber("+1.50000"), "1.50000");
    EXPECT_EQ(plainNumber("-0.25000"), "-0.25000");
    EXPECT_EQ(plainNumber("+012.500"), "12.500");
    EXPECT_EQ(plainNumber("+000.000"), "0.000");
    EXPECT_EQ(plainNumber("    -3.5"), "-3.5");
    EXPECT_EQ(plainNumber("-   3.50"), "-3.50");
    EXPECT_EQ(plainNumber("00000012"), "12");
    EXPECT_EQ(plainNumber(".5"), "0.5");
    EXPECT_EQ(plainNumber("5."), "5");
    EXPECT_EQ(plainNumber("1E2"), "100");
    EXPECT_EQ(plainNumber("+1.5000x"), "");
    EXPECT_EQ(plainNumber(""), "");
}

TEST(ReadingLines, TextIsForPeople)
{
    EXPECT_EQ(textLine({"Dam", named("Block 7")}, kGood).toStdString(),
              "2024-05-17T09:05:30.250+02:00    5  Block 7  X: +1.50000  Y: -0.25000\n");
    EXPECT_EQ(textLine({"Dam", named("")}, kSilent).toStdString(),
              "2024-05-17T09:05:30.250+02:00    5  silent\n");
}

TEST(ReadingLines, CsvHasAColumnForEachValue)
{
    EXPECT_EQ(csvHeader(), "time,site,address,name,type,xMm,yMm,z1Mm,z2Mm,outcome\n");
    EXPECT_EQ(csvRow({"Dam", named("Block 7")}, kGood).toStdString(),
              "2024-05-17T09:05:30.250+02:00,Dam,5,Block 7,A,1.50000,-0.25000,,,complete\n");
    EXPECT_EQ(csvRow({"Dam, north", named("the \"old\" one", link::TypeC)}, kSilent).toStdString(),
              "2024-05-17T09:05:30.250+02:00,\"Dam, north\",5,\"the \"\"old\"\" one\",C,,,,,silent\n");
}

TEST(ReadingLines, JsonHasNumbersAndTheDigitsReceived)
{
    const auto line = ndjsonLine({"Dam", named("Block \"7\"")}, kGood);
    EXPECT_EQ(line.count('\n'), 1);
    const auto object = QJsonDocument::fromJson(line).object();
    EXPECT_EQ(object, (QJsonObject{{"time", "2024-05-17T09:05:30.250+02:00"},
                                   {"site", "Dam"},
                                   {"address", 5},
                                   {"name", "Block \"7\""},
                                   {"type", "A"},
                                   {"xMm", 1.5},
                                   {"xText", "+1.50000"},
                                   {"yMm", -0.25},
                                   {"yText", "-0.25000"},
                                   {"z1Mm", QJsonValue()},
                                   {"z1Text", QJsonValue()},
                                   {"z2Mm", QJsonValue()},
                                   {"z2Text", QJsonValue()},
                                   {"outcome", "complete"}}));
    const auto failure = QJsonDocument::fromJson(ndjsonLine({"Dam", named("")}, kSilent)).object();
    EXPECT_TRUE(failure["xMm"].isNull() && failure["yText"].isNull());
    EXPECT_EQ(failure["outcome"], "silent");
}

TEST(ReadingLines, InfluxEscapesItsTags)
{
    EXPECT_EQ(influxLine({"Dam", named("Block 7")}, kGood).toStdString(),
              "quorvel_reading,address=5,name=Block\\ 7,site=Dam,type=A "
              "xMm=1.50000,yMm=-0.25000,outcome=\"complete\" 1715929530250000000\n");
    EXPECT_EQ(influxLine({"a=b, c\\", named("")}, kSilent).toStdString(),
              "quorvel_reading,address=5,site=a\\=b\\,\\ c/,type=A outcome=\"silent\" 1715929530250000000\n");
}

TEST(ReadingLines, TimeInUtcEndsInZ)
{
    EXPECT_EQ(isoTime(QDateTime(QDate(2024, 5, 17), QTime(9, 5), Qt::UTC)), "2024-05-17T09:05:00.000Z");
}

} // namespace
} // namespace quorvel::site
