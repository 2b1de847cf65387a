#include "site/jsonlines.h"

#include <QJsonArray>
#include <QJsonDocument>

namespace quorvel::site {

namespace {

/// A key as part of a pointer.
QString asPart(QString key)
{
    return u'/' + key.replace(u'~', QStringLiteral("~0")).replace(u'/', QStringLiteral("~1"));
}

bool endsPlainValue(char character)
{
    return character == ',' || character == ']' || character == '}' || character == '\n';
}

} // namespace

JsonLines::JsonLines(const QByteArray& json) : json_(json)
{
    if (json_.startsWith("\xEF\xBB\xBF")) at_ = 3; // the byte order mark of some editors
    readValue({});
    json_.clear();
}

int JsonLines::lineOf(QString pointer) const
{
    while (!lines_.contains(pointer) && !pointer.isEmpty())
        pointer.truncate(pointer.lastIndexOf(u'/'));
    return lines_.value(pointer, 1);
}

bool JsonLines::take(char character)
{
    skipBlanks();
    if (next() != character) return false;
    ++at_;
    return true;
}

void JsonLines::skipBlanks()
{
    for (; next() == ' ' || next() == '\t' || next() == '\r' || next() == '\n'; ++at_) {
        if (next() == '\n') ++line_;
    }
}

void JsonLines::readValue(const QString& pointer)
{
    skipBlanks();
    lines_.insert(pointer, line_);
    if (next() == '{') return readObject(pointer);
    if (next() == '[') return readArray(pointer);
    if (next() == '"') {
        readString();
        return;
    }
    while (!atEnd() && !endsPlainValue(next()))
        ++at_;
}

void JsonLines::readObject(const QString& pointer)
{
    take('{');
    if (take('}')) return;
    do {
        skipBlanks();
        const int line = line_;
        const auto key = readString();
        const auto place = pointer + asPart(key);
        if (lines_.contains(place)) repeated_.append({key, line});
        if (!take(':')) return;
        readValue(place);
    } while (take(','));
    take('}');
}

void JsonLines::readArray(const QString& pointer)
{
    take('[');
    if (take(']')) return;
    int index = 0;
    do {
        readValue(pointer + asPart(QString::number(index++)));
    } while (take(','));
    take(']');
}

QString JsonLines::readString()
{
    if (!take('"')) return {};
    const auto begin = at_;
    for (; !atEnd() && next() != '"'; ++at_) {
        if (next() == '\\') ++at_;
    }
    const auto written = json_.mid(begin, at_ - begin);
    ++at_;
    if (!written.contains('\\')) return QString::fromUtf8(written);
    return QJsonDocument::fromJson("[\"" + written + "\"]").array().at(0).toString();
}

} // namespace quorvel::site
