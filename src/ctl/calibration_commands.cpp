#include "calibration/database.h"
#include "calibration/datacontrol.h"
#include "calibration/fit.h"
#include "ctl/calibration_record_command.h"
#include "ctl/command_line.h"
#include "ctl/commands.h"
#include "ctl/exchanges.h"
#include "files/name.h"
#include "link/bytes.h"
#include "link/program_folder.h"
#include "protocol/answer.h"
#include "protocol/measurement.h"
#include "protocol/stitching.h"
#include "text/number.h"

#include <memory>
#include <optional>

namespace quorvel::ctl {

namespace {

using namespace calibration;
using namespace protocol;
using link::shown;

QString words(const std::string& text) { return QString::fromStdString(text); }

/// "X_Data" is "xMm".
QString nameInJson(std::string_view column)
{
    return QString::fromLatin1(column.data(), static_cast<qsizetype>(column.find('_'))).toLower() +
           QStringLiteral("Mm");
}

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
    WorkingFile file() const { return {data_.DatabaseName(), direction_}; }
    bool open();
    bool store(int row);
    void answerRow(int row) const;
    QJsonObject about(const ReadingColumn& reading) const;
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
    for (std::size_t column = 0; column < data_.fields().size(); ++column) {
        const auto& value = data_.value(row, static_cast<int>(column));
        texts << (value.isNull() ? QStringLiteral("-") : words(value.text()));
    }
    const auto in = [&](std::string_view name) {
        const int column = columnOf(data_.fields(), name);
        return column < 0 ? QJsonValue() : numberOrNull(data_.value(row, column));
    };
    QJsonObject object{{"direction", shown(nameOf(direction_.direction))},
                       {"point", numberOrNull(data_.value(row, kNumberColumn))},
                       {"dialMm", in(kDialName)}};
    for (const auto& reading : direction_.readings) {
        object.insert(nameInJson(reading.name), in(reading.name));
    }
    console_.answer(texts.join(u'\t'), object);
}

/// What an answer on one column of readings begins with.
QJsonObject Calibrating::about(const ReadingColumn& reading) const
{
    return {{"direction", shown(nameOf(direction_.direction))}, {"column", shown(reading.name)}};
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
    std::vector<double> readings;
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
        changes[std::string(reading.name)] = readings.emplace_back(text::Val(measured));
    }
    const auto written = data_.write(row, changes);
    if (!written) console_.fail(Failure::File, words(written.error()));
    if (written) noteReadings(console_, file(), row, readings);
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
        auto object = about(reading);
        object.insert("slope", text::Val(text::general(fitted->slope)));
        object.insert("interceptMm", text::Val(text::general(fitted->intercept)));
        object.insert("nonlinearErrorMm", fitted->nonlinearError);
        object.insert("maxErrorMm", text::Val(text::general(fitted->maxError)));
        console_.answer(shown(fitText(*fitted)).remove(u'\r'), object);
    }
}

void Calibrating::download(const ReadingColumn& reading, const Points& points)
{
    const auto exchange =
        console_.module1().transact(tableDownload(reading.sensor, console_.bench().addressDigits(), points));
    noteDownload(console_, file(), reading, exchange);
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
        auto object = about(reading);
        object.insert("address", console_.address());
        object.insert("downloaded", true);
        console_.answer(QString::fromUtf8(row.downloaded), object);
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
    if (!mayDownload(console_, file(), data_) || !console_.openPort(Access::Writes)) return;
    for (std::size_t i = 0; i < tables.size() && console_.module1().port().PortOpen(); ++i) {
        download(direction_.readings[i], tables[i]);
    }
}

void addCalibrate(CLI::App& app, Console& console)
{
    const auto options = std::make_shared<CalibrateOptions>();
    auto* calibrate =
        addCommand(app, "calibrate",
                   "Print the points of the calibration file of a direction, or calibrate it", "calibrate X");
    calibrate->require_subcommand(0, 1);
    calibrate->add_option("DIRECTION", options->direction, "X, Y or Z")
        ->check(CLI::IsMember({"X", "Y", "Z"}));
    calibrate->add_option("--folder", options->folder,
                          "Folder of the calibration files (default: the program's)");
    const auto run = [&console, options](void (Calibrating::*work)()) {
        if (options->direction.empty()) return console.fail(Failure::Usage, kWhichDirection);
        (Calibrating(console, *options).*work)();
    };
    const auto add = [&](const char* name, const char* about, const char* example,
                         void (Calibrating::*work)()) {
        auto* command = addCommand(*calibrate, name, about, example);
        command->callback([run, work] { run(work); });
        return command;
    };
    auto* measuring =
        add("measure", "Measure one point into the file",
            "--address 5 calibrate X measure --point 3 --dial 0.75", &Calibrating::measurePoint);
    measuring->add_option("--point", options->point, "Number of the point, from 0")->required();
    measuring->add_option("--dial", options->dial, "Dial-gauge reading of the point, in mm");
    add("fit", "Fit a line through the points", "calibrate X fit", &Calibrating::fit);
    addYes(*add("download", "Send the points to the readout", "--address 5 calibrate X download",
                static_cast<void (Calibrating::*)()>(&Calibrating::download)),
           console);
    addRecordCommand(*calibrate, console, options);
    calibrate->callback([run, calibrate] {
        if (calibrate->get_subcommands().empty()) run(&Calibrating::show);
    });
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
    console.tell(kLocationSet);
    console.answer(shown(typed), {{"address", console.address()}, {"location", shown(typed)}});
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
    addCalibrate(app, console);
    const auto location = std::make_shared<std::optional<std::string>>();
    auto* stitching = addCommand(app, "stitching", "Print or set the Y-direction stitching location",
                                 "--address 5 --type B stitching 0512");
    stitching->add_option("LOCATION", *location, "The new location, four digits");
    stitching->callback([&console, location] { stitch(console, *location); });
}

} // namespace quorvel::ctl
