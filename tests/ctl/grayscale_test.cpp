#include "autoread/exported.h"
#include "support/grayscale_directions.h"
#include "support/held_file.h"
#include "support/program_run.h"
#include "support/simulated_bus.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QImage>
#include <QImageReader>
#include <QJsonDocument>
#include <QTemporaryDir>

#include <gmock/gmock.h>

namespace quorvel::test {
namespace {

using ::testing::HasSubstr;

/// `quorvelctl grayscale` without a display, before a simulated bus with readout 5 (type A) and 12 (type C).
class QuorvelctlGrayscale : public ::testing::Test {
protected:
    QuorvelctlGrayscale()
    {
        for (const auto* variable : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"}) {
            qunsetenv(variable);
        }
    }

    ProgramRun run(const QStringList& arguments)
    {
        return runProgram("quorvelctl", QStringList({"grayscale", "--port", bus.device()}) + arguments);
    }
    ProgramRun runX(const QStringList& arguments)
    {
        return run(QStringList({"--address", "5", "X"}) + arguments);
    }
    QString file(const QString& name) const { return QDir(folder.path()).filePath(name); }
    QStringList names() const { return QDir(folder.path()).entryList(QDir::Files | QDir::Hidden); }
    void put(const QString& name, const QByteArray& bytes) const
    {
        QFile written(file(name));
        ASSERT_TRUE(written.open(QIODevice::WriteOnly) && written.write(bytes) == bytes.size());
    }
    QByteArray contents(const QString& name) const
    {
        QFile read(file(name));
        EXPECT_TRUE(read.open(QIODevice::ReadOnly)) << qPrintable(name);
        return read.readAll();
    }
    /// Not answered, with these words, and nothing was asked.
    void expectRefused(const ProgramRun& refused, const QString& words, int status)
    {
        EXPECT_EQ(refused.status, status);
        EXPECT_EQ(refused.out, "");
        EXPECT_THAT(refused.err.toStdString(), HasSubstr(words.toStdString()));
        EXPECT_EQ(bus.frames(), QStringList()) << "pixels were read for nothing";
    }

    SimulatedBus bus{{"--fast", "--seed", "1", "--readout", "5:A", "--readout", "12:C"}};
    QTemporaryDir folder;
};

/// The rows of pixels under their header row, as CSV.
QString csvOf(const QJsonArray& pixels)
{
    QString rows = "sn,hd\n";
    for (int i = 0; i < pixels.size(); ++i) {
        rows += QStringLiteral("%1,%2\n").arg(i + 1).arg(pixels[i].toInt());
    }
    return rows;
}

TEST_F(QuorvelctlGrayscale, ReadsEveryDirectionAsJson)
{
    for (const auto& direction : kGrayscaleDirections) {
        const auto read = run({direction.name, "--address", "12", "--type", "C", "--json"});
        EXPECT_EQ(read.status, 0) << qPrintable(read.err);
        EXPECT_EQ(bus.frames(), QStringList{direction.frame});
        const auto object = QJsonDocument::fromJson(read.out.toUtf8()).object();
        EXPECT_EQ(object.value("address").toInt(), 12);
        EXPECT_EQ(object.value("direction").toString(), direction.name);
        EXPECT_EQ(object.value("count").toInt(), direction.pixels);
        EXPECT_EQ(object.value("pixels").toArray().size(), direction.pixels);
    }
}

TEST_F(QuorvelctlGrayscale, AsJsonSaysWhatThePixelsMean)
{
    bus.command("set 5 x 24.5");
    const auto read = runX({"--type", "A", "--json"});
    const auto figures = QJsonDocument::fromJson(read.out.toUtf8()).object().value("figures").toObject();
    const auto shadow = figures.value("shadow").toObject();
    EXPECT_NEAR(shadow.value("centreMm").toDouble(), 24.5, 0.02);
    EXPECT_NEAR(shadow.value("widthMm").toDouble(), 1.5, 0.05);
    EXPECT_GT(figures.value("lamp").toObject().value("level").toDouble(), 100);
    EXPECT_FALSE(figures.value("verdict").toArray().isEmpty());
    bus.command("reply 5 65 :056500031AFG00FF");
    const auto few =
        QJsonDocument::fromJson(runX({"--json"}).out.toUtf8()).object().value("figures").toObject();
    EXPECT_EQ(few.value("damagedPixels"), QJsonArray{2});
    EXPECT_TRUE(few.value("lamp").isNull());
}

TEST_F(QuorvelctlGrayscale, PrintsCsvWhenNoFileIsNamed)
{
    bus.command("reply 5 65 :056500031AFF00FF");
    const auto read = runX({});
    EXPECT_EQ(read.status, 0);
    EXPECT_EQ(read.out, "sn,hd\n1,26\n2,255\n3,0\n");
    EXPECT_EQ(read.err, "");
}

TEST_F(QuorvelctlGrayscale, SavesADatabaseThatMdbtoolsRead)
{
    const auto read = runX({"--data", file("x.mdb"), "--json"});
    EXPECT_EQ(read.status, 0);
    EXPECT_EQ(read.err, QStringLiteral("Saved: %1\n").arg(file("x.mdb")));
    const auto pixels = QJsonDocument::fromJson(read.out.toUtf8()).object().value("pixels").toArray();
    const auto rows = QString::fromStdString(exported(file("x.mdb").toStdString())).split(u'\n');
    ASSERT_EQ(rows.size(), 1 + 7450 + 1) << "header row, pixels, and nothing behind the last line feed";
    EXPECT_EQ(rows[0], "sn,hd");
    EXPECT_EQ(rows[1], QStringLiteral("1,%1").arg(pixels.first().toInt()));
    EXPECT_EQ(rows[7450], QStringLiteral("7450,%1").arg(pixels.last().toInt()));
    EXPECT_EQ(rows.join(u'\n'), csvOf(pixels));
    EXPECT_EQ(names(), QStringList{"x.mdb"});
}

TEST_F(QuorvelctlGrayscale, SavesCsv)
{
    bus.command("reply 5 65 :056500021AFFFF");
    const auto read = runX({"--data", file("x.CSV")});
    EXPECT_EQ(read.status, 0);
    EXPECT_EQ(read.out, "");
    EXPECT_EQ(contents("x.CSV"), "sn,hd\n1,26\n2,255\n");
}

TEST_F(QuorvelctlGrayscale, SavesTheChartInBothFormatsBesideTheData)
{
    const auto begun = QDateTime::currentDateTime().addSecs(-1);
    for (const auto* format : {"jpg", "png"}) {
        const auto chart = QStringLiteral("x.%1").arg(format);
        const auto read = runX({"--data", file("x.csv"), "--chart", file(chart), "--force"});
        EXPECT_EQ(read.status, 0);
        const auto saved = QStringLiteral("Saved: %1\nSaved: %2\n").arg(file("x.csv"), file(chart));
        EXPECT_TRUE(read.err.endsWith(saved)) << qPrintable(read.err);
        EXPECT_EQ(QImageReader::imageFormat(file(chart)), chart == "x.jpg" ? "jpeg" : "png");
        const QImage picture(file(chart));
        EXPECT_EQ(picture.size(), QSize(1600, 800));
        EXPECT_EQ(picture.text("Title"), "Pixels") << "as the window's pictures";
        EXPECT_EQ(picture.text("Description"), "Readout 5, type A, X direction");
        EXPECT_EQ(picture.text("Software"), "QUORVEL V4.11");
        const auto bytes = contents(chart); // Qt reads no name with a blank back from a JPEG
        const auto time = bytes.mid(bytes.indexOf("Creation Time") + (chart == "x.jpg" ? 15 : 14), 19);
        const auto at = QDateTime::fromString(QString::fromLatin1(time), "yyyy-MM-dd HH:mm:ss");
        EXPECT_TRUE(at >= begun && at <= QDateTime::currentDateTime()) << qPrintable(at.toString());
    }
    EXPECT_EQ(names(), (QStringList{"x.csv", "x.jpg", "x.png"}));
}

TEST_F(QuorvelctlGrayscale, SilentReadoutIsExitStatus4AndLeavesNoFile)
{
    bus.fault("silent@65");
    const auto read = runX({"--data", file("x.mdb"), "--chart", file("x.jpg")});
    EXPECT_EQ(read.status, 4);
    EXPECT_EQ(read.out, "");
    EXPECT_TRUE(read.err.endsWith("Readout 5 did not answer, or not completely.\n")) << qPrintable(read.err);
    EXPECT_EQ(names(), QStringList());
}

TEST_F(QuorvelctlGrayscale, MalformedReplyIsExitStatus5ForZ1Too)
{
    bus.fault("count@7803");
    const auto read = run({"--address", "12", "--type", "C", "Z1", "--data", file("z.csv")});
    EXPECT_EQ(read.status, 5);
    EXPECT_EQ(read.err, "Readout 12 gave an answer that is not a grayscale reading.\n");
    EXPECT_EQ(names(), QStringList());
}

TEST_F(QuorvelctlGrayscale, OverwritesOnlyByForce)
{
    bus.command("reply 5 65 :056500021AFFFF");
    struct Row {
        const char* option;
        const char* name;
    };
    for (const auto& [option, name] : std::initializer_list<Row>{
             {"--data", "x.mdb"}, {"--data", "x.csv"}, {"--chart", "x.jpg"}, {"--chart", "x.png"}}) {
        put(name, "old");
        const QStringList arguments{option, file(name)};
        expectRefused(runX(arguments), file(name) + " exists. Add --force to overwrite it.", 6);
        EXPECT_EQ(contents(name), "old");
        EXPECT_EQ(runX(arguments + QStringList{"--force"}).status, 0);
        EXPECT_EQ(bus.frames(), QStringList{":0565FF"});
        EXPECT_NE(contents(name), "old");
    }
}

TEST_F(QuorvelctlGrayscale, AFileThatCannotBeWrittenIsToldBeforeTheReading)
{
    for (const QString name : {"missing/x.mdb", "missing/x.csv"}) {
        expectRefused(runX({"--data", file(name), "--force"}), file(name), 1);
    }
    expectRefused(runX({"--data", file("x.csv"), "--chart", file("missing/x.jpg")}), file("missing/x.jpg"),
                  1);
    expectRefused(runX({"--chart", "/proc/x.png"}), "/proc/x.png", 1);
    const HeldFile holder(file("held.mdb").toStdString());
    expectRefused(runX({"--data", file("held.mdb"), "--force"}),
                  file("held.mdb") + " is open in another program.", 1);
    EXPECT_EQ(names(), QStringList{"held.mdb"});
}

TEST_F(QuorvelctlGrayscale, WrongUsageIsExitStatus2AndAsksNothing)
{
    const std::initializer_list<QStringList> wrong{
        {"--address", "5"},
        {"--address", "5", "Z"},
        {"X"},
        {"--address", "250", "X"},
        {"--address", "5", "X", "--data", file("x.txt")},
        {"--address", "5", "X", "--chart", file("x.mdb")},
    };
    for (const auto& arguments : wrong) {
        EXPECT_EQ(run(arguments).status, 2) << qPrintable(arguments.join(u' '));
    }
    EXPECT_EQ(bus.frames(), QStringList());
    EXPECT_EQ(names(), QStringList());
}

} // namespace
} // namespace quorvel::test
