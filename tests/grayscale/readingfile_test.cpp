#include "grayscale/readingfile.h"

#include "grayscale/pixelfile.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <cmath>
#include <random>

#include <gmock/gmock.h>

namespace quorvel::grayscale {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;

class ReadingFile : public ::testing::Test {
protected:
    QString file(const QString& name) const { return QDir(folder.path()).filePath(name); }
    QString write(const QByteArray& text) const
    {
        QFile out(file("r.csv"));
        EXPECT_TRUE(out.open(QIODevice::WriteOnly));
        out.write(text);
        return out.fileName();
    }
    void expectRefused(const QByteArray& text, const char* why) const
    {
        const auto loaded = loadReading(write(text), link::TypeA);
        ASSERT_FALSE(loaded) << text.toStdString();
        EXPECT_THAT(loaded.error(), HasSubstr(why));
        EXPECT_THAT(loaded.error(), HasSubstr("r.csv"));
    }

    QTemporaryDir folder;
};

TEST_F(ReadingFile, IsReadBackAsItWasWritten)
{
    PixelReading reading;
    reading.values = {6.5, std::nan(""), 255};
    reading.spread = {0.58, 0, 1};
    reading.damaged = {2};
    reading.readings = 2;
    reading.direction = "Z1";
    reading.type = link::TypeC;
    reading.address = 33;
    reading.at = QDateTime({2024, 5, 17}, {9, 5, 30});
    EXPECT_EQ(saveReading(file("r.csv"), reading), "");
    QFile text(file("r.csv"));
    ASSERT_TRUE(text.open(QIODevice::ReadOnly));
    EXPECT_EQ(text.readAll(),
              "# QUORVEL V4.11\n# address: 33\n# type: C\n# direction: Z1\n# time: 2024-05-17T09:05:30\n"
              "# readings: 2\nsn,mm,hd,spread\n1,-1.732,6.50,0.58\n2,-1.718,,0.00\n3,-1.704,255.00,1.00\n");
    const auto loaded = loadReading(file("r.csv"), link::TypeA);
    ASSERT_TRUE(loaded) << loaded.error();
    EXPECT_EQ(loaded->values[0], 6.5);
    EXPECT_TRUE(std::isnan(loaded->values[1]));
    EXPECT_THAT(loaded->damaged, ElementsAre(2));
    EXPECT_EQ(loaded->type, link::TypeC);
    EXPECT_EQ(loaded->direction, "Z1");
    EXPECT_EQ(loaded->address, 33);
    EXPECT_EQ(loaded->at, reading.at);
}

TEST_F(ReadingFile, FilesOfThePrescribedWindowAreRead)
{
    PixelArray array;
    array.store(std::vector<std::int16_t>{1, 2, 250});
    for (const auto* name : {"a.mdb", "a.csv"}) {
        ASSERT_EQ(savePixels(file(name), array), "");
        const auto loaded = loadReading(file(name), link::TypeB);
        ASSERT_TRUE(loaded) << loaded.error();
        EXPECT_THAT(loaded->values, ElementsAre(1, 2, 250));
        EXPECT_EQ(loaded->type, link::TypeB);
        EXPECT_EQ(loaded->direction, "");
        EXPECT_EQ(inWords(*loaded), name);
    }
}

TEST_F(ReadingFile, RowsMayComeInAnyOrderAndWithOtherColumns)
{
    const auto loaded = loadReading(write("hd,x,sn\r\n20,?,2\r\n\r\n10,?,1\r\n"), link::TypeA);
    ASSERT_TRUE(loaded) << loaded.error();
    EXPECT_THAT(loaded->values, ElementsAre(10, 20));
}

TEST_F(ReadingFile, WhatIsNoReadingIsRefused)
{
    expectRefused("", "some are missing");
    expectRefused("sn,hd\n", "some are missing");
    expectRefused("time,x,y\n2024-05-17,1,2\n", "no header row");
    expectRefused("sn,hd\n1,10\n3,10\n", "some are missing");
    expectRefused("sn,hd\n1,10\n1,10\n", "line 3 is not a pixel of its own");
    for (const auto* row :
         {"0,10", "1.5,10", "-1,10", "20001,10", "1,256", "1,-1", "1,x", "x,1", "1", "1e300,1"})
        expectRefused(QByteArray("sn,hd\n") + row + "\n", "line 2 is not a pixel of its own");
    expectRefused(QByteArray(5LL * 1024 * 1024, '#'), "larger than 4 MB");
    EXPECT_FALSE(loadReading(write(QByteArray("\xff\x00\xfe", 3)), link::TypeA));
    EXPECT_FALSE(loadReading(file("missing.mdb"), link::TypeA));
    QFile::copy(write("sn,hd\n1,1\n"), file("text.mdb"));
    EXPECT_FALSE(loadReading(file("text.mdb"), link::TypeA));
}

TEST_F(ReadingFile, WhatTheHeadSaysIsOnlyTakenWhenItCanBe)
{
    const auto loaded = loadReading(
        write("# address: 300\n# type: Q\n# direction: up\n# time: noon\nsn,hd\n1,10\n"), link::TypeB);
    ASSERT_TRUE(loaded) << loaded.error();
    EXPECT_EQ(loaded->address, 0);
    EXPECT_EQ(loaded->type, link::TypeB);
    EXPECT_EQ(loaded->direction, "");
    EXPECT_FALSE(loaded->at.isValid());
}

TEST_F(ReadingFile, OfAnyBytesIsRefusedOrPixels)
{
    std::mt19937 random(11);
    for (int i = 0; i < 300; ++i) {
        QByteArray text("# type: A\nsn,hd\n1,10\n2,20.5\n3,\n4,255\n");
        for (int change = 0; change < 3; ++change)
            text[static_cast<qsizetype>(random() % static_cast<std::size_t>(text.size()))] =
                static_cast<char>(random() % 256);
        const auto loaded = loadReading(write(text), link::TypeA);
        if (!loaded) continue;
        ASSERT_FALSE(loaded->values.empty());
        for (const double value : loaded->values)
            EXPECT_TRUE(std::isnan(value) || (value >= 0 && value <= 255)) << value;
    }
}

TEST(PixelAverage, MeansAndSpreadLeaveDamagedPixelsOut)
{
    PixelAverage average;
    EXPECT_TRUE(average.add(std::vector<std::int16_t>{10, 20, 30, 99}, std::vector<int>{4}));
    EXPECT_TRUE(average.add(std::vector<std::int16_t>{12, 20, 99, 99}, std::vector<int>{3, 4}));
    EXPECT_FALSE(average.add(std::vector<std::int16_t>{1, 2}, {}));
    PixelReading reading;
    average.putInto(reading);
    EXPECT_EQ(reading.readings, 2);
    EXPECT_EQ(reading.values[0], 11);
    EXPECT_NEAR(reading.spread[0], std::sqrt(2.0), 1e-12);
    EXPECT_EQ(reading.spread[1], 0);
    EXPECT_EQ(reading.values[2], 30);
    EXPECT_TRUE(std::isnan(reading.values[3]));
    EXPECT_THAT(reading.damaged, ElementsAre(4));
}

} // namespace
} // namespace quorvel::grayscale
