#include "site/readinglines.h"
#include "site/watch.h"
#include "support/scripted_readout.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gmock/gmock.h>

namespace quorvel::site {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;

/// A watch over the readouts 5, which answers, and 77, which does not, with time moved by hand.
class Watches : public ::testing::Test {
protected:
    Watches()
    {
        site.name = "Dam";
        site.readouts.resize(2);
        site.readouts[0].address = 5;
        site.readouts[0].limit(protocol::Sensor::X).high = 1;
        site.readouts[1].address = 77;
    }
    void run(WatchOutput::Target target, int every, int count)
    {
        target.print = [this](const QByteArray& lines) { printed += lines; };
        WatchOutput output(std::move(target));
        link::PortList ports({}, [] { return std::vector<link::PortInfo>(); });
        PortKeeper keeper(bus.module1, ports, {}, [](const QString&) {});
        Watch watch(bus.module1, keeper, site, output,
                    {[this] { return stop; },
                     [this](const QString& words) { told.push_back(words.toStdString()); },
                     [this] { return std::exchange(next, std::nullopt); }});
        watch.run(Schedule(every), count);
        counts = watch.counts();
    }
    /// The times of day of the lines printed.
    std::vector<std::string> times() const
    {
        std::vector<std::string> all;
        for (const auto& line : printed.split('\n')) {
            if (!line.isEmpty()) all.push_back(line.mid(11, 8).toStdString());
        }
        return all;
    }

    test::ScriptedReadout bus{[](const std::string& frame) {
        return frame == ":052101FF" ? std::string(":052101+1.50000-0.2500000FF\r\n") : std::string();
    }};
    Site site;
    std::optional<Site> next;
    bool stop = false;
    QByteArray printed;
    std::vector<std::string> told;
    WatchCounts counts;
    QTemporaryDir folder;
};

TEST_F(Watches, SweepAtEachMoment)
{
    run({}, 10, 2);
    EXPECT_THAT(times(), ElementsAre("09:05:40", "09:05:40", "09:05:50", "09:05:50"));
    EXPECT_THAT(printed.toStdString(), HasSubstr("   5  X: +1.50000  Y: -0.25000\n"));
    EXPECT_THAT(printed.toStdString(), HasSubstr("  77  silent\n"));
    EXPECT_EQ(counts.sweeps, 2);
    EXPECT_EQ((counts.readings[{77, "silent"}]), 2);
}

TEST_F(Watches, SkipMomentsRatherThanPileUp)
{
    run({}, 1, 3); // a sweep takes 1.8 s
    EXPECT_THAT(times(), ElementsAre("09:05:31", "09:05:31", "09:05:33", "09:05:33", "09:05:35", "09:05:35"));
    EXPECT_EQ(counts.skipped, 2);
    EXPECT_THAT(told,
                ElementsAre("A sweep took longer than the interval: 1 skipped. Choose a longer interval."));
}

TEST_F(Watches, KeepTheirMomentsWhileThePortIsLost)
{
    bus.clock.plan(15, [this] { bus.device->vanish(); });
    run({WatchFormat::Csv}, 10, 3);
    const auto lines = printed.split('\n');
    ASSERT_EQ(lines.size(), 1 + 6 + 1);
    EXPECT_EQ(lines[0] + '\n', csvHeader());
    EXPECT_THAT(lines[3].toStdString(), HasSubstr("09:05:50.000"));
    for (const int lost : {3, 4, 5, 6})
        EXPECT_THAT(lines[lost].toStdString(), ::testing::EndsWith(",,,,,port lost"));
}

TEST_F(Watches, KeepWhatCameBeforeThePortWasLostInMidSweep)
{
    // the sweep begins at 09:05:40; a second later it waits for the readout that does not answer
    bus.clock.plan(11, [this] { bus.device->vanish(); });
    site.readouts.push_back(site.readouts[0]);
    site.readouts[2].address = 6;
    run({}, 10, 1);
    EXPECT_THAT(printed.toStdString(), HasSubstr("   5  X: +1.50000  Y: -0.25000\n"));
    EXPECT_THAT(printed.toStdString(), HasSubstr("  77  port lost\n"));
    EXPECT_THAT(printed.toStdString(), HasSubstr("   6  port lost\n"));
    EXPECT_EQ(bus.frames.size(), 2U) << "nothing is sent any more";
}

TEST_F(Watches, EndBetweenTwoReadouts)
{
    bus.answer = [this](const std::string&) {
        stop = true;
        return std::string(":052101+1.50000-0.2500000FF\r\n");
    };
    run({}, 10, 0);
    EXPECT_THAT(times(), ElementsAre("09:05:40"));
    EXPECT_EQ(bus.frames.size(), 1U);
}

TEST_F(Watches, TakeANewSiteBetweenTwoSweeps)
{
    bus.clock.plan(11, [this] {
        next = site;
        next->readouts.resize(1);
    });
    run({}, 10, 2);
    EXPECT_THAT(times(), ElementsAre("09:05:40", "09:05:40", "09:05:50"));
}

TEST_F(Watches, AppendTheSweepToAFile)
{
    const auto path = folder.filePath("a.csv");
    run({WatchFormat::Csv, path.toStdString()}, 10, 2);
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    EXPECT_EQ(file.readAll().count('\n'), 5);
    EXPECT_EQ(printed, "");
}

TEST_F(Watches, AppendEachReadingAsSoonAsItIsThere)
{
    const auto path = folder.filePath("a.csv");
    std::vector<qint64> lines;
    const auto usual = bus.answer;
    bus.answer = [&](const std::string& frame) {
        QFile file(path);
        lines.push_back(file.open(QIODevice::ReadOnly) ? file.readAll().count('\n') : 0);
        return usual(frame);
    };
    run({WatchFormat::Csv, path.toStdString()}, 10, 2);
    EXPECT_THAT(lines, ElementsAre(0, 2, 3, 4)) << "what a kill would have left";
}

TEST_F(Watches, ADayHasTheSweepsThatBeginOnIt)
{
    const auto now = bus.clock.now();
    bus.clock.move(static_cast<double>(now.msecsTo(QDateTime(now.date(), QTime(23, 59, 58, 500)))) / 1000);
    site.readouts.push_back(site.readouts[0]); // asked after midnight, when the second one has not answered
    site.readouts[2].address = 6;
    run({WatchFormat::Csv, folder.filePath("a.csv").toStdString(), true}, 1, 2);
    const auto lines = [&](int days) {
        QFile file(folder.filePath("a." + now.date().addDays(days).toString(Qt::ISODate) + ".csv"));
        return file.open(QIODevice::ReadOnly) ? file.readAll().split('\n') : QByteArrayList();
    };
    ASSERT_EQ(lines(0).size(), 1 + 3 + 1);
    EXPECT_THAT(lines(0)[1].toStdString(), HasSubstr("T23:59:59.000"));
    EXPECT_THAT(lines(0)[3].toStdString(), HasSubstr("T00:00:00."));
    EXPECT_EQ(lines(1).size(), 1 + 3 + 1);
}

TEST_F(Watches, SayAtTheEndWhatTheFileLacks)
{
    for (const auto format : {WatchFormat::Csv, WatchFormat::Prometheus}) {
        WatchOutput output({format, folder.filePath("nowhere/a").toStdString()});
        EXPECT_TRUE(output.finish()) << "nothing was read yet";
        output.take(
            site,
            {.address = 5, .time = bus.clock.now(), .received = {}, .outcome = "silent", .answerMs = {}});
        EXPECT_FALSE(output.end(site, {}, {}, true));
        EXPECT_FALSE(output.finish());
    }
}

TEST_F(Watches, AFileThatCannotBeWrittenIsToldOnceAndTriedAgain)
{
    const auto path = folder.filePath("later/a.csv");
    bus.clock.plan(25, [this] { std::filesystem::create_directory(folder.filePath("later").toStdString()); });
    run({WatchFormat::Csv, path.toStdString()}, 10, 4);
    ASSERT_EQ(told.size(), 2U);
    EXPECT_THAT(told[0], HasSubstr("a.csv could not be written: "));
    EXPECT_THAT(told[0], HasSubstr("It is tried again at each sweep."));
    EXPECT_EQ(told[1], "The readings can be written again.");
    EXPECT_TRUE(QFile::exists(path));
}

TEST_F(Watches, WritePrometheusInBaseUnitsWithoutTimeStamps)
{
    const auto path = folder.filePath("dam.prom");
    run({WatchFormat::Prometheus, path.toStdString()}, 10, 1);
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    const auto text = file.readAll().toStdString();
    EXPECT_TRUE(text.ends_with('\n'));
    for (const auto* line :
         {R"(quorvel_position_meters{site="Dam",address="5",name="",type="A",direction="x"} 0.0015)",
          R"(quorvel_position_meters{site="Dam",address="5",name="",type="A",direction="y"} -0.00025)",
          R"(quorvel_limit_passed{site="Dam",address="5",name="",type="A",direction="x"} 1)",
          R"(quorvel_readout_up{site="Dam",address="5",name="",type="A"} 1)",
          R"(quorvel_readout_up{site="Dam",address="77",name="",type="A"} 0)",
          R"(quorvel_readings_total{site="Dam",address="77",name="",type="A",outcome="silent"} 1)",
          R"(quorvel_port_up{site="Dam"} 1)", R"(quorvel_sweep_duration_seconds{site="Dam"} 1.77)",
          R"(quorvel_sweeps_total{site="Dam"} 1)"})
        EXPECT_THAT(text, HasSubstr(std::string(line) + "\n"));
    EXPECT_THAT(text, HasSubstr("quorvel_sweep_end_timestamp_seconds{site=\"Dam\"} " +
                                QByteArray::number(bus.clock.now().toSecsSinceEpoch()).toStdString()));
    EXPECT_THAT(text, ::testing::Not(HasSubstr(R"(address="77",name="",type="A",direction)")));
    EXPECT_EQ(QDir(folder.path()).entryList(QDir::Files), QStringList{"dam.prom"});
}

TEST_F(Watches, OfOneReadoutAreBrief)
{
    std::vector<std::string> failures;
    WatchOutput::Target target;
    target.fail = [&failures](const QString& words) { failures.push_back(words.toStdString()); };
    run(target, 10, 1);
    EXPECT_EQ(printed, "09:05:40  X: +1.50000  Y: -0.25000\n");
    EXPECT_THAT(failures, ElementsAre("09:05:40  readout 77 did not answer."));
}

TEST(WatchFormats, HaveNames)
{
    for (int i = 0; i < kWatchFormats; ++i) {
        const auto format = static_cast<WatchFormat>(i);
        EXPECT_EQ(watchFormatNamed(nameOf(format)), format);
    }
    EXPECT_EQ(watchFormatNamed("xml"), std::nullopt);
}

} // namespace
} // namespace quorvel::site
