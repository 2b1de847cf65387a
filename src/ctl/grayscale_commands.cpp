#include "ctl/command_line.h"
#include "ctl/commands.h"
#include "files/name.h"
#include "grayscale/pixelfile.h"
#include "grayscale/verdict.h"
#include "link/bytes.h"
#include "link/program_folder.h"
#include "protocol/answer.h"

#include <QDateTime>
#include <QFileInfo>
#include <QJsonArray>
#include <QProcess>
#include <QStandardPaths>

#include <memory>
namespace quorvel::ctl {

namespace {

using namespace grayscale;
using namespace protocol;

constexpr int kDrawnWithin = 60'000; // ms

struct GrayscaleOptions {
    std::string direction;
    std::string data;
    std::string chart;
};

CLI::Validator endsIn(const std::vector<std::string>& suffixes, const char* form)
{
    return {[suffixes, form](std::string& name) {
                for (const auto& suffix : suffixes) {
                    if (QString::fromStdString(name).endsWith(QString::fromStdString(suffix),
                                                              Qt::CaseInsensitive))
                        return std::string();
                }
                return "\"" + name + "\" does not end in " + form;
            },
            form};
}

QString fileName(const std::string& argument) { return QString::fromLocal8Bit(argument.c_str()); }

/// Asked before the readout is: a reading takes many seconds.
bool mayWrite(Console& console, const GrayscaleOptions& options)
{
    for (const auto& file : {fileName(options.data), fileName(options.chart)}) {
        if (file.isEmpty()) continue;
        if (!console.mayMake(file)) return false;
        const auto reason = whyNotWritable(file);
        if (reason.isEmpty()) continue;
        console.fail(Failure::File, reason);
        return false;
    }
    return true;
}

/// @param damaged  takes the numbers of the pixels that arrived damaged.
/// @param begun    takes the time at which the reading began.
bool fetchPixels(Console& console, const GrayscaleRow& row, PixelArray& array, std::vector<int>& damaged,
                 QDateTime& begun)
{
    const auto exchange = console.module1().transact(grayscaleQuery(row, console.bench().addressDigits()));
    const auto read = exchange.complete() ? readGrayscale(row, exchange.reply, array) : GrayscaleReply();
    damaged = read.damaged;
    begun = exchange.begun;
    if (!damaged.empty()) console.tell(QStringLiteral("%1 pixels arrived damaged.").arg(damaged.size()));
    if (read.good) return true;
    console.fail(failureOf(exchange),
                 QStringLiteral("Readout %1 %2")
                     .arg(console.address())
                     .arg(exchange.complete()
                              ? QStringLiteral("gave an answer that is not a grayscale reading.")
                              : QStringLiteral("did not answer, or not completely.")));
    return false;
}

void answerPixels(Console& console, const GrayscaleRow& row, const PixelArray& array,
                  const std::vector<int>& damaged)
{
    const auto pixels = array.pixels();
    const auto figures = profileFigures(std::vector<double>(pixels.begin(), pixels.end()), damaged,
                                        nameOf(row.sensor), console.bench().instrumentType);
    QJsonArray values;
    QString rows = QStringLiteral("sn,hd");
    int number = 0;
    for (const int value : pixels) {
        values << value;
        rows += QStringLiteral("\n%1,%2").arg(++number).arg(value);
    }
    console.answer(rows, {{"address", console.address()},
                          {"direction", QString::fromStdString(std::string(nameOf(row.sensor)))},
                          {"count", array.count()},
                          {"pixels", values},
                          {"figures", toJson(figures)}});
}

/// The program that draws, beside this one; empty when it is not installed.
QString drawer()
{
    const auto folder = QString::fromStdString(files::inWords(link::executableFolder()));
    return QStandardPaths::findExecutable(QStringLiteral("quorvelctl-draw"), {folder});
}

/// @return empty on success, otherwise the reason in words.
QString saveChartOf(Console& console, const GrayscaleRow& row, const PixelArray& array,
                    const QDateTime& begun, const QString& file)
{
    QProcess process;
    process.start(drawer(),
                  {link::shown(nameOf(row.sensor)), console.typeName(), QFileInfo(file).absoluteFilePath(),
                   QStringLiteral("--address"), QString::number(console.address()), QStringLiteral("--at"),
                   begun.toString(Qt::ISODate)});
    for (const int value : array.pixels()) {
        process.write(QByteArray::number(value) + '\n');
    }
    process.closeWriteChannel();
    if (!process.waitForFinished(kDrawnWithin) || process.exitStatus() != QProcess::NormalExit)
        return QStringLiteral("%1 was not drawn: %2.").arg(file, process.errorString());
    return process.exitCode() == 0 ? QString()
                                   : QString::fromLocal8Bit(process.readAllStandardError()).trimmed();
}

/// Says what became of a file.
void report(Console& console, const QString& file, const QString& reason)
{
    if (reason.isEmpty()) {
        console.tell(QStringLiteral("Saved: %1").arg(file));
    } else {
        console.fail(Failure::File, reason);
    }
}

void readGrayscale(Console& console, const GrayscaleOptions& options)
{
    const auto& row = *findGrayscale(options.direction);
    PixelArray array;
    std::vector<int> damaged;
    QDateTime begun;
    if (!console.checkReadout() || !mayWrite(console, options)) return;
    if (!options.chart.empty() && drawer().isEmpty()) {
        return console.fail(Failure::Failed,
                            QStringLiteral("Charts are drawn by the program quorvelctl-draw of the "
                                           "package quorvel. Install it, or take --data."));
    }
    if (!console.openPort(Access::Reads) || !fetchPixels(console, row, array, damaged, begun)) return;
    const auto data = fileName(options.data);
    const auto chart = fileName(options.chart);
    if (!data.isEmpty()) report(console, data, savePixels(data, array));
    if (!chart.isEmpty()) report(console, chart, saveChartOf(console, row, array, begun, chart));
    if (console.options.json || (data.isEmpty() && chart.isEmpty()))
        answerPixels(console, row, array, damaged);
}

} // namespace

void addGrayscaleCommands(CLI::App& app, Console& console)
{
    auto* command =
        addCommand(app, "grayscale",
                   "Read the brightness of every pixel of one sensor; without a file, on standard output",
                   "--address 5 grayscale X --data x.csv");
    const auto options = std::make_shared<GrayscaleOptions>();
    command->add_option("SENSOR", options->direction, "X, Y, Z1 or Z2")
        ->required()
        ->check(CLI::IsMember({"X", "Y", "Z1", "Z2"}));
    command->add_option("--data", options->data, "Save the pixels: .mdb or .csv")
        ->check(endsIn({".mdb", ".csv"}, ".mdb or .csv"));
    command->add_option("--chart", options->chart, "Save the chart: .jpg or .png")
        ->check(endsIn({".jpg", ".jpeg", ".png"}, ".jpg or .png"));
    addForce(*command, console);
    command->callback([&console, options] { readGrayscale(console, *options); });
}

} // namespace quorvel::ctl
