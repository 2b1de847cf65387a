#include "ctl/commands.h"
#include "ctl/console.h"
#include "ctl/exchanges.h"
#include "files/replace.h"
#include "link/bytes.h"
#include "protocol/answer.h"
#include "protocol/snapshot.h"

#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>

#include <CLI/CLI.hpp>

#include <iostream>

namespace quorvel::ctl {

namespace {

constexpr auto kFormat = "quorvel-settings";
constexpr auto kUnreadable = "The answer \"%1\" was not understood.";

/// The options of save and restore.
struct FileOptions {
    std::string file;
    bool yes = false;
};

/// Asks the readout for one setting.
/// @return null when it did not tell: the reason is on stderr and the status set.
QJsonValue query(Console& console, const protocol::Setting& setting)
{
    const auto exchange = ask(console, setting.query(console.bench().addressDigits()));
    if (!exchange) return QJsonValue::Null;
    const auto& reply = exchange->reply;
    auto value = setting.read(reply);
    if (value.isNull())
        console.fail(kNotAnswered, QString(kUnreadable).arg(link::shown(protocol::inOneLine(reply))));
    return value;
}

/// Asks for all settings; those that the readout does not tell are missing. Gives up at once when it is silent.
QJsonObject queryAll(Console& console)
{
    QJsonObject values;
    for (const auto& setting : protocol::settingsOf(console.bench().instrumentType)) {
        const auto value = query(console, setting);
        if (!value.isNull()) {
            values.insert(setting.name, value);
            continue;
        }
        console.tell(QStringLiteral("%1: not read.").arg(setting.name));
        if (values.isEmpty() && console.module1().ReplyText().empty()) break;
    }
    return values;
}

QJsonObject inFile(const Console& console, const QJsonObject& values)
{
    return {{"format", kFormat},
            {"address", console.address()},
            {"type", QString::fromStdString(console.options.type)},
            {"saved", QDateTime::currentDateTime().toString(Qt::ISODate)},
            {"settings", values}};
}

void printSettings(Console& console)
{
    if (!console.openReadout()) return;
    const auto values = queryAll(console);
    if (values.isEmpty()) return;
    QStringList lines;
    for (const auto& setting : protocol::settingsOf(console.bench().instrumentType)) {
        if (values.contains(setting.name))
            lines << QString(setting.name).leftJustified(18) + protocol::inWords(values.value(setting.name));
    }
    console.answer(lines.join(u'\n'), inFile(console, values));
}

void save(Console& console, const FileOptions& options)
{
    const auto path = QString::fromLocal8Bit(options.file.c_str());
    if (QFile::exists(path) && !options.yes) {
        console.fail(kWrongUsage, QStringLiteral("%1 exists. Add --yes to overwrite it.").arg(path));
        return;
    }
    if (!console.openReadout()) return;
    const auto values = queryAll(console);
    if (console.status != kAnswered) {
        console.tell(QStringLiteral("Nothing was saved."));
        return;
    }
    const auto text = QJsonDocument(inFile(console, values)).toJson().toStdString();
    if (const auto written = files::replaceContent(QFileInfo(path).filesystemFilePath(), text); !written)
        return console.fail(kNotAnswered, QString::fromStdString(written.error()));
    console.answer(path, {{"saved", path}, {"settings", values.size()}});
}

/// The settings in a file; empty when it holds none: the reason is on stderr and the status set.
QJsonObject settingsIn(Console& console, const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        console.fail(kNotAnswered, QStringLiteral("%1 cannot be read: %2.").arg(path, file.errorString()));
        return {};
    }
    QJsonParseError error;
    const auto object = QJsonDocument::fromJson(file.readAll(), &error).object();
    auto reason = error.error == QJsonParseError::NoError ? QString() : error.errorString();
    if (reason.isEmpty() && object.value("format") != QJsonValue(kFormat))
        reason = QStringLiteral("its \"format\" is not \"%1\"").arg(kFormat);
    auto values = object.value("settings").toObject();
    if (reason.isEmpty() && values.isEmpty()) reason = QStringLiteral("its \"settings\" are empty");
    if (reason.isEmpty()) return values;
    console.fail(kNotAnswered, QStringLiteral("%1 is not a settings file: %2.").arg(path, reason));
    return {};
}

bool agrees(const Console& console, qsizetype count)
{
    console.tell(QStringLiteral("Set %1 settings of readout %2? [y/N]").arg(count).arg(console.address()));
    std::string answer;
    std::getline(std::cin, answer);
    return answer == "y" || answer == "Y" || answer == "yes";
}

/// Sets one setting, and asks the readout for it. One line of answer.
void restoreOne(Console& console, const protocol::Setting& setting, const QJsonValue& wanted)
{
    QJsonObject result{{"setting", setting.name}, {"value", wanted}, {"restored", false}};
    const auto report = [&](const QString& words) {
        console.answer(QStringLiteral("%1: %2").arg(setting.name, words), result);
    };
    const auto command = setting.write(console.bench().addressDigits(), wanted);
    if (const auto* why = std::get_if<protocol::NotSent>(&command)) {
        if (*why == protocol::NotSent::Malformed) console.status = kNotAnswered;
        report((*why == protocol::NotSent::Malformed ? QStringLiteral("not set; %1 is not a valid value")
                                                     : QStringLiteral("left as it is; %1 cannot be restored"))
                   .arg(protocol::inWords(wanted)));
        return;
    }
    if (!order(console, std::get<link::Transaction>(command))) {
        report(QStringLiteral("failed"));
        return;
    }
    const auto held = query(console, setting);
    result["restored"] = held == wanted;
    if (held == wanted) {
        report(QStringLiteral("%1, verified").arg(protocol::inWords(held)));
        return;
    }
    report(QStringLiteral("the readout holds %1 after %2 was set")
               .arg(protocol::inWords(held), protocol::inWords(wanted)));
    console.status = kNotAnswered;
}

void restore(Console& console, const FileOptions& options)
{
    if (!console.checkReadout()) return;
    const auto wanted = settingsIn(console, QString::fromLocal8Bit(options.file.c_str()));
    if (wanted.isEmpty() || !console.openPort()) return;
    if (!options.yes && !agrees(console, wanted.size())) {
        console.fail(kNotAnswered, QStringLiteral("Nothing was set."));
        return;
    }
    auto left = wanted.keys();
    for (const auto& setting : protocol::settingsOf(console.bench().instrumentType)) {
        if (!left.removeOne(setting.name)) continue;
        restoreOne(console, setting, wanted.value(setting.name));
    }
    for (const auto& name : left) {
        console.fail(kNotAnswered,
                     QStringLiteral("%1: a readout of type %2 has no such setting.")
                         .arg(protocol::inWords(name), QString::fromStdString(console.options.type)));
    }
}

} // namespace

void addSettingsCommands(CLI::App& app, Console& console)
{
    auto* all = app.add_subcommand("settings", "Print, save or restore all settings of a readout");
    all->require_subcommand(0, 1);
    struct Row {
        const char* name;
        const char* help;
        const char* yes;
        void (*run)(Console& console, const FileOptions& options);
    };
    constexpr Row kRows[] = {
        {"save", "Save all settings to a file", "Overwrite an existing file", save},
        {"restore", "Set all settings that a file holds, and verify each", "Do not ask first", restore},
    };
    for (const auto& row : kRows) {
        auto* command = all->add_subcommand(row.name, row.help);
        const auto options = std::make_shared<FileOptions>();
        command->add_option("FILE", options->file, "A .json file")->required();
        command->add_flag("--yes", options->yes, row.yes);
        command->callback([&console, options, run = row.run] { run(console, *options); });
    }
    all->callback([&console, all] {
        if (all->get_subcommands().empty()) printSettings(console);
    });
}

} // namespace quorvel::ctl
