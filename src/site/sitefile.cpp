#include "site/sitefile.h"

#include "files/name.h"
#include "files/replace.h"
#include "link/address.h"
#include "link/bytes.h"
#include "site/jsonlines.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QMap>

#include <algorithm>
#include <cmath>

namespace quorvel::site {

namespace {

using protocol::Sensor;

constexpr auto kReadouts = "readouts";
constexpr auto kLimits = "limitsMm";
constexpr double kMostMm = 1e6;

QLatin1String latin(const char* text) { return QLatin1String(text); }

QString pointerTo(const QString& around, const char* key) { return around + u'/' + latin(key); }

bool breaksLine(QChar c)
{
    return c.category() == QChar::Other_Control || c == QChar(0x2028) || c == QChar(0x2029);
}

bool isOneLine(const QString& text) { return std::none_of(text.begin(), text.end(), breaksLine); }

/// A value of a file in a sentence, cut when it is long.
QString inSentence(const QJsonValue& value)
{
    constexpr int kMost = 40;
    if (value.isObject()) return QStringLiteral("{...}");
    auto text = QString::fromUtf8(QJsonDocument(QJsonArray{value}).toJson(QJsonDocument::Compact));
    text = text.mid(1, text.size() - 2);
    return text.size() > kMost ? text.left(kMost) + QStringLiteral("...") : text;
}

/// Reads the values of a file and keeps what is wrong with them.
class Reader {
public:
    Reader(const QByteArray& json, QString fileName) : lines_(json), fileName_(std::move(fileName)) {}

    Site site(const QJsonObject& object);
    const QStringList& reasons() const { return reasons_; }
    void wrong(int line, const QString& what)
    {
        reasons_ << QStringLiteral("%1, line %2: %3").arg(fileName_).arg(line).arg(what);
    }
    void checkRepeated()
    {
        for (const auto& repeated : lines_.repeated())
            wrong(repeated.line, QStringLiteral("%1 is there twice.").arg(inSentence(repeated.key)));
    }

private:
    void wrong(const QString& pointer, const QString& what) { wrong(lines_.lineOf(pointer), what); }
    QString text(const QJsonObject& object, const QString& around, const char* key);
    QString lineOfText(const QJsonObject& object, const QString& around, const char* key);
    Readout readout(const QJsonValue& value, const QString& pointer);
    int address(const QJsonObject& object, const QString& around);
    link::InstrumentType type(const QJsonObject& object, const QString& around);
    void limits(const QJsonObject& object, const QString& around, Readout& readout);
    Limit limit(const QJsonValue& value, const QString& pointer);
    std::optional<double> side(const QJsonObject& object, const QString& around, const char* key);

    JsonLines lines_;
    QString fileName_;
    QStringList reasons_;
    QMap<int, int> taken_; ///< addresses, and the lines that they were first in
};

QString Reader::text(const QJsonObject& object, const QString& around, const char* key)
{
    const auto value = object.value(latin(key));
    if (!value.isUndefined() && !value.isString()) {
        wrong(pointerTo(around, key), QStringLiteral("\"%1\" must be a text in quotation marks, not %2.")
                                          .arg(latin(key), inSentence(value)));
    }
    return value.toString();
}

QString Reader::lineOfText(const QJsonObject& object, const QString& around, const char* key)
{
    auto line = text(object, around, key);
    if (!isOneLine(line))
        wrong(pointerTo(around, key), QStringLiteral("\"%1\" must be one line.").arg(latin(key)));
    return line;
}

int Reader::address(const QJsonObject& object, const QString& around)
{
    const auto value = object.value(latin("address"));
    const auto pointer = pointerTo(around, "address");
    const int number = value.toInt();
    if (!link::isAddress(number)) {
        wrong(pointer, value.isUndefined()
                           ? QStringLiteral("the readout has no \"address\".")
                           : QStringLiteral("\"address\" must be a whole number from 1 to 249, "
                                            "not %1.")
                                 .arg(inSentence(value)));
        return link::kLowestAddress;
    }
    if (taken_.contains(number)) {
        wrong(pointer, QStringLiteral("the address %1 is there twice, first in line %2.")
                           .arg(number)
                           .arg(taken_.value(number)));
    } else {
        taken_.insert(number, lines_.lineOf(pointer));
    }
    return number;
}

link::InstrumentType Reader::type(const QJsonObject& object, const QString& around)
{
    const auto value = object.value(latin("type"));
    const auto found = protocol::typeNamed(value.toString().toStdString());
    if (!found) {
        wrong(pointerTo(around, "type"),
              value.isUndefined()
                  ? QStringLiteral("the readout has no \"type\".")
                  : QStringLiteral(R"("type" must be "A", "B", "C" or "D", not %1.)").arg(inSentence(value)));
    }
    return found.value_or(link::TypeA);
}

std::optional<double> Reader::side(const QJsonObject& object, const QString& around, const char* key)
{
    const auto value = object.value(latin(key));
    if (value.isUndefined() || value.isNull()) return std::nullopt;
    if (value.isDouble() && std::abs(value.toDouble()) <= kMostMm) return value.toDouble();
    wrong(pointerTo(around, key),
          QStringLiteral("\"%1\" must be a number of mm, not %2.").arg(latin(key), inSentence(value)));
    return std::nullopt;
}

Limit Reader::limit(const QJsonValue& value, const QString& pointer)
{
    if (!value.isObject()) {
        wrong(pointer, QStringLiteral(R"(a limit must be written as {"low": -2, "high": 2}, not %1.)")
                           .arg(inSentence(value)));
        return {};
    }
    const Limit read{side(value.toObject(), pointer, "low"), side(value.toObject(), pointer, "high")};
    if (read.low && read.high && *read.low > *read.high)
        wrong(pointer, QStringLiteral("the low limit is above the high one."));
    return read;
}

void Reader::limits(const QJsonObject& object, const QString& around, Readout& readout)
{
    const auto all = object.value(latin(kLimits));
    const auto pointer = pointerTo(around, kLimits);
    if (all.isUndefined()) return;
    if (!all.isObject()) {
        return wrong(
            pointer,
            QStringLiteral("\"limitsMm\" must be an object of directions, not %1.").arg(inSentence(all)));
    }
    for (const auto sensor : kSensors) {
        const auto value = all.toObject().value(keyOf(sensor));
        if (value.isUndefined()) continue;
        const auto place = pointer + u'/' + keyOf(sensor);
        readout.limit(sensor) = limit(value, place);
        if (!hasSensor(readout.type, sensor)) {
            wrong(place, QStringLiteral("a readout of type %1 has no %2.")
                             .arg(link::shown(protocol::nameOf(readout.type)),
                                  link::shown(protocol::nameOf(sensor))));
        }
    }
}

Readout Reader::readout(const QJsonValue& value, const QString& pointer)
{
    Readout read;
    if (!value.isObject()) {
        wrong(pointer, QStringLiteral("a readout must be an object, not %1.").arg(inSentence(value)));
        return read;
    }
    read.asRead = value.toObject();
    read.address = address(read.asRead, pointer);
    read.type = type(read.asRead, pointer);
    read.name = lineOfText(read.asRead, pointer, "name");
    read.reference = text(read.asRead, pointer, "reference");
    limits(read.asRead, pointer, read);
    return read;
}

Site Reader::site(const QJsonObject& object)
{
    Site site;
    site.asRead = object;
    site.name = lineOfText(object, {}, "name");
    site.port = lineOfText(object, {}, "port");
    site.note = text(object, {}, "note");
    const auto readouts = object.value(latin(kReadouts));
    const auto pointer = pointerTo({}, kReadouts);
    if (!readouts.isArray()) {
        wrong(pointer,
              readouts.isUndefined()
                  ? QStringLiteral("the site has no \"readouts\".")
                  : QStringLiteral("\"readouts\" must be a list, not %1.").arg(inSentence(readouts)));
        return site;
    }
    const auto list = readouts.toArray();
    for (qsizetype i = 0; i < list.size() && reasons_.size() < kMostReasons; ++i)
        site.readouts.push_back(readout(list.at(i), pointer + u'/' + QString::number(i)));
    return site;
}

/// A text as a file can have it: without a mark at its beginning.
QString withoutMarks(QString text)
{
    while (text.startsWith(QChar::ByteOrderMark))
        text.remove(0, 1);
    return text;
}

/// A text that is empty is not written, unless the file had it.
void put(QJsonObject& object, const char* key, const QString& given)
{
    const auto text = withoutMarks(given);
    if (!text.isEmpty() || object.contains(latin(key))) object.insert(latin(key), text);
}

/// A text of one line, whatever was typed or handed in.
void putLine(QJsonObject& object, const char* key, QString line)
{
    std::replace_if(line.begin(), line.end(), breaksLine, QChar(u' '));
    put(object, key, line);
}

void putSide(QJsonObject& object, const char* key, const std::optional<double>& mm)
{
    if (mm) {
        object.insert(latin(key), *mm);
    } else {
        object.remove(latin(key));
    }
}

void putLimits(QJsonObject& object, const Readout& readout)
{
    auto all = object.value(latin(kLimits)).toObject();
    for (const auto sensor : kSensors) {
        auto one = all.value(keyOf(sensor)).toObject();
        putSide(one, "low", readout.limit(sensor).low);
        putSide(one, "high", readout.limit(sensor).high);
        if (one.isEmpty()) {
            all.remove(keyOf(sensor));
        } else {
            all.insert(keyOf(sensor), one);
        }
    }
    if (all.isEmpty()) {
        object.remove(latin(kLimits));
    } else {
        object.insert(latin(kLimits), all);
    }
}

QJsonObject objectOf(const Readout& readout)
{
    auto object = readout.asRead;
    object.insert(latin("address"), readout.address);
    object.insert(latin("type"), link::shown(protocol::nameOf(readout.type)));
    putLine(object, "name", readout.name);
    put(object, "reference", readout.reference);
    putLimits(object, readout);
    return object;
}

/// Why a text is not JSON, with its line.
files::Failure notJson(const QByteArray& json, const QJsonParseError& error, const QString& fileName)
{
    const auto line = json.left(error.offset).count('\n') + 1;
    return {QStringLiteral("%1, line %2: this is not JSON: %3. Correct the line, or open another file.")
                .arg(fileName)
                .arg(line)
                .arg(error.errorString())
                .toStdString()};
}

/// Qt takes a byte-order mark at the beginning of a text away when it reads one: a saved key would become another one.
void refuseMarks(const QByteArray& json, Reader& reader)
{
    const auto lower = json.toLower();
    for (const auto& mark : {QByteArrayLiteral("\"\xEF\xBB\xBF"), QByteArrayLiteral("\"\\ufeff")}) {
        const auto at = lower.indexOf(mark);
        if (at < 0) continue;
        reader.wrong(
            static_cast<int>(json.left(at).count('\n')) + 1,
            QStringLiteral("a text begins with a byte-order mark (U+FEFF), which cannot be seen. Type "
                           "the text anew."));
    }
}

} // namespace

QString keyOf(Sensor sensor) { return link::shown(protocol::nameOf(sensor)).toLower(); }

bool hasSensor(link::InstrumentType type, Sensor sensor)
{
    if (sensor == Sensor::X) return true;
    return protocol::hasDirection(type,
                                  sensor == Sensor::Y ? protocol::Direction::Y : protocol::Direction::Z);
}

const Readout* Site::readoutAt(int address) const
{
    const auto found = std::find_if(readouts.begin(), readouts.end(),
                                    [address](const Readout& readout) { return readout.address == address; });
    return found == readouts.end() ? nullptr : &*found;
}

files::Result<Site> parseSite(const QByteArray& json, const QString& fileName)
{
    if (json.trimmed().isEmpty())
        return files::Failure{fileName.toStdString() + " is empty. Open another file."};
    QJsonParseError error{};
    const auto document = QJsonDocument::fromJson(json, &error);
    if (error.error != QJsonParseError::NoError) return notJson(json, error, fileName);
    Reader reader(json, fileName);
    reader.checkRepeated();
    refuseMarks(json, reader);
    if (!document.isObject())
        reader.wrong(1, QStringLiteral("a site file must be one object in braces, { ... }."));
    auto site = document.isObject() ? reader.site(document.object()) : Site();
    if (reader.reasons().isEmpty()) return site;
    return files::Failure{reader.reasons().mid(0, kMostReasons).join(u'\n').toStdString()};
}

QByteArray toJson(const Site& site)
{
    auto object = site.asRead;
    putLine(object, "name", site.name);
    putLine(object, "port", site.port);
    put(object, "note", site.note);
    QJsonArray readouts;
    for (const auto& readout : site.readouts)
        readouts.append(objectOf(readout));
    object.insert(latin(kReadouts), readouts);
    return QJsonDocument(object).toJson(QJsonDocument::Indented);
}

files::Result<Site> loadSite(const std::filesystem::path& path)
{
    QFile file(path);
    const auto json = file.open(QIODevice::ReadOnly) ? file.read(kLongestFile + 1) : QByteArray();
    if (file.error() != QFileDevice::NoError) {
        return files::Failure{files::inWords(path) + " cannot be read: " + file.errorString().toStdString() +
                              ". Choose another site file."};
    }
    if (json.size() > kLongestFile)
        return files::Failure{files::inWords(path) + " is too long for a site file. Choose another one."};
    return parseSite(json, QString::fromStdString(files::inWords(path.filename())));
}

files::Status saveSite(const std::filesystem::path& path, const Site& site)
{
    return files::replaceContent(path, toJson(site).toStdString());
}

} // namespace quorvel::site
