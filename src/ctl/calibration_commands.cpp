#include "calibration/database.h"
#include "calibration/datacontrol.h"
#include "calibration/fit.h"
#include "ctl/commands.h"
#include "ctl/console.h"
#include "ctl/exchanges.h"
#include "files/name.h"
#include "link/bytes.h"
#include "link/program_folder.h"
#include "protocol/answer.h"
#include "protocol/measurement.h"
#include "protocol/stitching.h"
#include "text/number.h"

#include <CLI/CLI.hpp>

namespace quorvel::ctl {

namespace {

using namespace calibration;
using namespace protocol;
using link::shown;

/// What `calibrate` works on.
struct CalibrateOptions {
    std::string direction;
    std::string folder;
    int point = 0;
    std::string dial;
};

QString words(const std::string& text) { return QString::fromStdString(text); }

QJsonValue numberOrNull(const jet::Value& value)
{
    const auto number = value.number();
    return number ? QJsonValue(text::Val(value.text())) : QJsonValue();
}

/// One subcommand on the file of a direction.
class Calibrating {
public:
    Calibrating(Console& console, const CalibrateOptions& options)
        : console_(console), options_(options), direction_(*directionOf(words(options.direction)))
    {
        data_.setDatabaseName(link::programFolder(options.folder, link::executableFolder()) /
                              direction_.file);
    }

    void show();
    void measurePoint();
    void fit();
    void download();

private:
    bool open();
    bool store(int row);
    void answerRow(int row) const;
    std::optional<Points> points(const ReadingColumn& reading);
    void download(const ReadingColumn& reading, const Points& points);

    Console& console_;
    const CalibrateOptions& options_;
    const DirectionRow& direction_;
    DataControl data_;
};

bool Calibrating::open()
{
    const auto opened = data_.Refresh();
    if (!opened) console_.fail(Failure::File, words(opened.error()));
    return static_cast<bool>(opened);
}

void Calibrating::answerRow(int row) const
{
    QStringList texts;
    QJsonObject object;
    for (std::size_t column = 0; column < data_.fields().size(); ++column) {
        const auto& value = data_.value(row, static_cast<int>(column));
        texts << (value.isNull() ? QStringLiteral("-") : words(value.text()));
        object.insert(words(data_.fields()[column].name), numberOrNull(value));
    }
    console_.answer(texts.join(u'\t'), object);
}

void Calibrating::show()
{
    if (!open()) return;
    for (int row = 0; row < data_.rowCount(); ++row) {
        answerRow(row);
    }
}

/// Measures all readings of the direction and writes them, and the dial reading when one was given, into a row.
bool Calibrating::store(int row)
{
    const auto query = measurement(direction_.direction, console_.bench().addressDigits());
    const auto exchange = console_.module1().transact(query);
    const auto& reply = exchange.reply;
    if (!isMeasurement(reply)) {
        console_.fail(failureOf(exchange),
                      QStringLiteral("Nothing was measured: %1.").arg(words(whyNoMeasurement(reply))));
        return false;
    }
    Records::Changes changes;
    if (!options_.dial.empty()) changes[std::string(kDialName)] = text::Val(options_.dial);
    for (const auto& reading : direction_.readings) {
        const auto measured = measuredBy(reading.sensor, reply);
        const int column = columnOf(data_.fields(), reading.name);
        if (column < 0 || !text::isNumber(measured)) {
            console_.fail(Failure::Garbled,
                          QStringLiteral("\"%1\" is not a reading for a column %2 of the file.")
                              .arg(shown(measured), shown(reading.name)));
            return false;
        }
        changes[std::string(reading.name)] = text::Val(measured);
    }
    const auto written = data_.write(row, changes);
    if (!written) console_.fail(Failure::File, words(written.error()));
    return static_cast<bool>(written);
}

void Calibrating::measurePoint()
{
    if (!options_.dial.empty() && !text::isNumber(options_.dial)) {
        console_.fail(Failure::Usage, QStringLiteral("--dial takes a number."));
        return;
    }
    if (!console_.checkReadout()) return;
    if (!files::isThere(data_.DatabaseName())) {
        const auto created = CreateCalibrationDatabase(data_.DatabaseName());
        if (!created) return console_.fail(Failure::File, words(created.error()));
    }
    if (!open() || !console_.openPort(Access::Reads)) return;
    for (int row = 0; row < data_.rowCount(); ++row) {
        if (data_.value(row, kNumberColumn).number() != options_.point) continue;
        if (store(row)) answerRow(row);
        return;
    }
    console_.fail(Failure::File, QStringLiteral("The file has no point %1.").arg(options_.point));
}

std::optional<Points> Calibrating::points(const ReadingColumn& reading)
{
    const auto found = pointsOf(data_, columnOf(data_.fields(), reading.name));
    if (!found) console_.fail(Failure::File, kDataEmpty);
    return found;
}

void Calibrating::fit()
{
    if (!open()) return;
    for (const auto& reading : direction_.readings) {
        const auto table = points(reading);
        if (!table) return;
        const auto fitted = fitLine(*table);
        if (!fitted) return console_.fail(Failure::File, kNoLine);
        console_.answer(shown(fitText(*fitted)).remove(u'\r'),
                        {{"column", shown(reading.name)},
                         {"slope", text::Val(text::general(fitted->slope))},
                         {"intercept", text::Val(text::general(fitted->intercept))},
                         {"nonlinear_error", fitted->nonlinearError},
                         {"max_error", text::Val(text::general(fitted->maxError))}});
    }
}

void Calibrating::download(const ReadingColumn& reading, const Points& points)
{
    const auto exchange =
        console_.module1().transact(tableDownload(reading.sensor, console_.bench().addressDigits(), points));
    if (!console_.module1().port().PortOpen()) return;
    const auto& row = tableOf(reading.sensor);
    const int awaited = echoLength(reading.sensor);
    if (exchange.outcome == link::Outcome::Refused) {
        console_.fail(failureOf(exchange), whyFailed(exchange));
    } else if (static_cast<int>(exchange.reply.size()) != awaited) {
        console_.fail(failureOf(exchange),
                      QStringLiteral("%1: no complete echo, %2 characters came instead of %3.")
                          .arg(shown(reading.name))
                          .arg(exchange.reply.size())
                          .arg(awaited));
    } else if (!echoAgrees(reading.sensor, exchange.transaction.frame, exchange.reply)) {
        console_.fail(failureOf(exchange), QString::fromUtf8(row.notDownloaded));
    } else {
        console_.answer(QString::fromUtf8(row.downloaded),
                        {{"column", shown(reading.name)}, {"downloaded", true}});
    }
}

void Calibrating::download()
{
    if (!console_.checkReadout() || !open()) return;
    std::vector<Points> tables;
    for (const auto& reading : direction_.readings) {
        const auto table = points(reading);
        if (!table) return;
        tables.push_back(*table);
    }
    if (!console_.openPort(Access::Writes)) return;
    for (std::size_t i = 0; i < tables.size() && console_.module1().port().PortOpen(); ++i) {
        download(direction_.readings[i], tables[i]);
    }
}

void addCalibrate(CLI::App& app, Console& console)
{
    const auto options = std::make_shared<CalibrateOptions>();
    auto* calibrate = app.add_subcommand("calibrate", "Calibrate one direction of a readout");
    calibrate->require_subcommand(1);
    calibrate->add_option("--direction", options->direction, "X, Y or Z")
        ->required()
        ->check(CLI::IsMember({"X", "Y", "Z"}));
    calibrate->add_option("--folder", options->folder,
                          "Folder of the calibration files (default: the program's)");
    const auto add = [&](const char* name, const char* about, void (Calibrating::*work)()) {
        auto* command = calibrate->add_subcommand(name, about);
        command->callback([&console, options, work] { (Calibrating(console, *options).*work)(); });
        return command;
    };
    add("show", "List the points of the file", &Calibrating::show);
    auto* measuring = add("measure", "Measure one point into the file", &Calibrating::measurePoint);
    measuring->add_option("--point", options->point, "Number of the point, from 0")->required();
    measuring->add_option("--dial", options->dial, "Dial-gauge reading of the point, in mm");
    add("fit", "Fit a line through the points", &Calibrating::fit);
    add("download", "Send the points to the readout", &Calibrating::download);
}

void queryLocation(Console& console)
{
    const auto exchange = ask(console, locationQuery(console.bench().addressDigits()));
    if (!exchange) return;
    const auto location = shown(locationOf(exchange->reply));
    console.answer(location, {{"address", console.address()}, {"location", location}});
}

void setLocation(Console& console, const std::string& typed)
{
    const auto exchange = ask(console, locationSet(console.bench().addressDigits(), typed));
    if (!exchange) return;
    if (!link::isConfirmed(*exchange)) {
        return console.fail(failureOf(*exchange), QStringLiteral("The readout repeated something else."));
    }
    console.answer(kLocationSet, {{"address", console.address()}, {"location", shown(typed)}});
}

void stitch(Console& console, const std::optional<std::string>& typed)
{
    if (typed && !isLocation(*typed)) return console.fail(Failure::Usage, kLocationError);
    if (!console.openReadout(typed ? Access::Writes : Access::Reads)) return;
    typed ? setLocation(console, *typed) : queryLocation(console);
}

} // namespace

void addCalibrationCommands(CLI::App& app, Console& console)
{
    if (console.bench().isUserEdition()) return;
    addCalibrate(app, console);
    const auto location = std::make_shared<std::optional<std::string>>();
    auto* stitching = app.add_subcommand("stitching", "Query or set the Y-direction stitching location");
    stitching->add_option("--set", *location, "The new location, four digits");
    stitching->callback([&console, location] { stitch(console, *location); });
}

} // namespace quorvel::ctl
