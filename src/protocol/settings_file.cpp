#include "protocol/settings_file.h"

#include "link/address.h"
#include "link/bytes.h"
#include "protocol/direction.h"

#include <QJsonDocument>
#include <QStringList>

namespace quorvel::protocol {

namespace {

constexpr auto kFormat = "quorvel-settings";

/// What is wrong with the beginning of a file; empty when nothing is.
QString faultOfFormat(const QJsonObject& object)
{
    if (object.value("format") != QJsonValue(kFormat))
        return QStringLiteral("its \"format\" is not \"%1\"").arg(kFormat);
    const auto version = object.value("version");
    if (version.isUndefined() || version == QJsonValue(kSettingsVersion)) return {};
    if (version.toInt() > kSettingsVersion) {
        return QStringLiteral(
                   "its version is %1, this program reads version %2; use the program that wrote it")
            .arg(version.toInt())
            .arg(kSettingsVersion);
    }
    return QStringLiteral("its \"version\" is not %1").arg(kSettingsVersion);
}

} // namespace

QJsonObject inFile(const SettingsFile& file)
{
    QJsonObject object{{"format", kFormat}, {"version", kSettingsVersion}, {"saved", file.saved}};
    if (file.address != 0) object.insert("address", file.address);
    if (file.type) object.insert("type", link::shown(std::string(nameOf(*file.type))));
    object.insert("settings", file.settings);
    return object;
}

QByteArray textOf(const SettingsFile& file) { return QJsonDocument(inFile(file)).toJson(); }

std::variant<SettingsFile, QString> settingsIn(const QByteArray& text)
{
    QJsonParseError error;
    const auto object = QJsonDocument::fromJson(text, &error).object();
    if (error.error != QJsonParseError::NoError) return error.errorString();
    if (const auto fault = faultOfFormat(object); !fault.isEmpty()) return fault;
    SettingsFile file;
    if (const auto address = object.value("address"); !address.isUndefined()) {
        file.address = address.toInt();
        if (!link::isAddress(file.address)) return QStringLiteral("its \"address\" is not one of 1 to 249");
    }
    if (const auto type = object.value("type"); !type.isUndefined()) {
        file.type = typeNamed(type.toString().toStdString());
        if (!file.type) return QStringLiteral("its \"type\" is not one of A, B, C and D");
    }
    file.saved = object.value("saved").toString();
    file.settings = object.value("settings").toObject();
    if (file.settings.isEmpty()) return QStringLiteral("its \"settings\" are empty");
    return file;
}

QString ofAnother(const SettingsFile& file, int address, link::InstrumentType type)
{
    QStringList others;
    if (file.address != 0 && file.address != address)
        others << QStringLiteral("readout %1").arg(file.address);
    if (file.type && *file.type != type)
        others << QStringLiteral("type %1").arg(link::shown(std::string(nameOf(*file.type))));
    return others.join(QStringLiteral(", "));
}

} // namespace quorvel::protocol
