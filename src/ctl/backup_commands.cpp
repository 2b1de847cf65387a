#include "ctl/command_line.h"
#include "ctl/commands.h"
#include "ctl/exchanges.h"
#include "files/replace.h"
#include "link/bytes.h"
#include "protocol/answer.h"
#include "protocol/settings_file.h"
#include "protocol/snapshot.h"
#include "protocol/values.h"

#include <QFile>
#include <QFileInfo>

#include <memory>
#include <optional>

namespace quorvel::ctl {

namespace {

using link::InstrumentType;

/// The options of save and restore.
struct FileOptions {
    std::string file;
    bool anyReadout = false; ///< restore: also what is of another one
};

/// Asks the readout for one setting.
/// @return null when it did not tell: the reason is on stderr and the status set.
QJsonValue query(Console& console, const protocol::Setting& setting)
{
    const auto exchange = ask(console, setting.query(console.bench().addressDigits()));
    if (!exchange) return QJsonValue::Null;
    auto told = protocol::toldBy(setting, *exchange);
    if (told.value.isNull()) console.fail(failureOf(*exchange), told.why);
    return told.value;
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

/// Finds out whether a readout whose type was not given has three directions: it answers the query of Z then.
/// @param ofFile  the type that a readout without Z is taken for.
/// @return in words for what it is taken; nothing when that stays unclear: the reason is on stderr and the status set.
std::optional<QString> findType(Console& console, InstrumentType ofFile = link::TypeA)
{
    if (!console.options.type.empty()) return QString();
    const auto asked = console.module1().transact(protocol::zQuery(console.bench().addressDigits()));
    const auto z = protocol::measuresZ(asked);
    if (!z) {
        console.fail(
            isWell(asked) ? Failure::Garbled : failureOf(asked),
            QStringLiteral("Whether readout %1 measures Z could not be found out. Give its type with --type.")
                .arg(console.address()));
        return std::nullopt;
    }
    console.bench().instrumentType = *z ? link::TypeC : ofFile == link::TypeC ? link::TypeA : ofFile;
    if (*z) return QStringLiteral("Readout %1 measures Z: taken for type C.").arg(console.address());
    return QStringLiteral("Readout %1 does not measure Z: taken for type %2. Give another type with --type.")
        .arg(console.address())
        .arg(console.typeName());
}

/// Asks for all settings, and says for what type the readout was taken when it answered.
/// @return empty when it did not, or its type is unclear.
QJsonObject queryReadout(Console& console)
{
    const auto taken = findType(console);
    if (!taken) return {};
    auto values = queryAll(console);
    if (!values.isEmpty() && !taken->isEmpty()) console.tell(*taken);
    return values;
}

protocol::SettingsFile fileOf(Console& console, const QJsonObject& values)
{
    return {.address = console.address(),
            .type = console.bench().instrumentType,
            .saved = QDateTime::currentDateTime().toString(Qt::ISODate),
            .settings = values};
}

void printSettings(Console& console)
{
    if (!console.openReadout(Access::Reads)) return;
    const auto values = queryReadout(console);
    if (values.isEmpty()) return;
    QStringList lines;
    for (const auto& setting : protocol::settingsOf(console.bench().instrumentType)) {
        if (values.contains(setting.name))
            lines << QString(setting.name).leftJustified(18) + protocol::inWords(values.value(setting.name));
    }
    console.answer(lines.join(u'\n'), protocol::inFile(fileOf(console, values)));
}

void save(Console& console, const FileOptions& options)
{
    const auto path = QString::fromLocal8Bit(options.file.c_str());
    if (!console.checkReadout() || !console.mayMake(path) || !console.openPort(Access::Reads)) return;
    const auto values = queryReadout(console);
    if (console.status() != ExitStatus::Done) {
        console.tell(QStringLiteral("Nothing was saved."));
        return;
    }
    const auto text = protocol::textOf(fileOf(console, values)).toStdString();
    if (const auto written = files::replaceContent(QFileInfo(path).filesystemFilePath(), text); !written)
        return console.fail(Failure::File, QString::fromStdString(written.error()));
    console.answer(path, {{"address", console.address()}, {"file", path}, {"settings", values.size()}});
}

/// Reads a file of settings; nothing when it is none: the reason is on stderr and the status set.
std::optional<protocol::SettingsFile> fileAt(Console& console, const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        console.fail(Failure::File, QStringLiteral("%1 cannot be read: %2.").arg(path, file.errorString()));
        return std::nullopt;
    }
    const auto read = protocol::settingsIn(file.read(protocol::kLongestSettings));
    if (const auto* whole = std::get_if<protocol::SettingsFile>(&read)) return *whole;
    console.fail(Failure::File,
                 QStringLiteral("%1 is not a settings file: %2.").arg(path, std::get<QString>(read)));
    return std::nullopt;
}

/// True when the file is of the open readout, or that does not matter.
bool fits(Console& console, const protocol::SettingsFile& file, const FileOptions& options)
{
    const auto other = protocol::ofAnother(file, console.address(), console.bench().instrumentType);
    if (other.isEmpty() || options.anyReadout) return true;
    console.fail(Failure::Unsafe,
                 QStringLiteral("%1 is of %2. Add --any-readout to set readout %3 of type %4 to it.")
                     .arg(QString::fromLocal8Bit(options.file.c_str()), other)
                     .arg(console.address())
                     .arg(console.typeName()));
    return false;
}

/// Sets one setting, and asks the readout for it. One line of answer.
void restoreOne(Console& console, const protocol::Setting& setting, const QJsonValue& wanted)
{
    QJsonObject result{
        {"address", console.address()}, {"setting", setting.name}, {"value", wanted}, {"restored", false}};
    const auto report = [&](const QString& words) {
        console.answer(QStringLiteral("%1: %2").arg(setting.name, words), result);
    };
    const auto command = setting.write(console.bench().addressDigits(), wanted);
    if (const auto* why = std::get_if<protocol::NotSent>(&command)) {
        if (*why == protocol::NotSent::Malformed) console.note(Failure::File);
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
    console.note(Failure::Unconfirmed);
}

void restore(Console& console, const FileOptions& options)
{
    if (!console.checkReadout()) return;
    const auto file = fileAt(console, QString::fromLocal8Bit(options.file.c_str()));
    if (!file || !console.openPort(Access::Writes)) return;
    const auto taken = findType(console, file->type.value_or(link::TypeA));
    if (!taken || !fits(console, *file, options)) return;
    if (!taken->isEmpty()) console.tell(*taken);
    const auto& wanted = file->settings;
    if (!console.agrees(
            QStringLiteral("Set %1 settings of readout %2?").arg(wanted.size()).arg(console.address()))) {
        console.fail(Failure::NeedsYes, QStringLiteral("Nothing was set."));
        return;
    }
    auto left = wanted.keys();
    for (const auto& setting : protocol::settingsOf(console.bench().instrumentType)) {
        if (!left.removeOne(setting.name)) continue;
        restoreOne(console, setting, wanted.value(setting.name));
    }
    for (const auto& name : left) {
        console.fail(Failure::File, QStringLiteral("%1: a readout of type %2 has no such setting.")
                                        .arg(protocol::inWords(name), console.typeName()));
    }
}

} // namespace

void addSettingsCommands(CLI::App& app, Console& console)
{
    auto* all = addCommand(app, "settings", "Print, save or restore all settings of a readout",
                           "--address 5 settings");
    all->require_subcommand(0, 1);
    const auto options = std::make_shared<FileOptions>();
    auto* saving =
        addCommand(*all, "save", "Save all settings to a file", "--address 5 settings save readout-5.json");
    saving->add_option("FILE", options->file, "A .json file")->required();
    addForce(*saving, console);
    saving->callback([&console, options] { save(console, *options); });
    auto* restoring =
        addCommand(*all, "restore", "Set all settings that a file holds, and verify each; asks first",
                   "--address 5 settings restore readout-5.json");
    restoring->add_option("FILE", options->file, "A .json file")->required();
    addYes(*restoring, console);
    restoring->add_flag("--any-readout", options->anyReadout,
                        "Also the settings of a readout of another address or type");
    restoring->callback([&console, options] { restore(console, *options); });
    all->callback([&console, all] {
        if (all->get_subcommands().empty()) printSettings(console);
    });
}

} // namespace quorvel::ctl
