#pragma once

#include <QByteArray>
#include <QHash>
#include <QList>
#include <QString>

namespace quorvel::site {

/// In which lines of a JSON text its values begin: QJsonDocument tells only where a text breaks the rules of JSON, not
/// where a value is that breaks those of the file. A value is named as by RFC 6901: "/readouts/0/address"; "" is the
/// whole.
class JsonLines {
public:
    /// @param json  a text that QJsonDocument has read without an error; of any other the lines may be wrong.
    explicit JsonLines(const QByteArray& json);

    /// The line of a value, from 1 on; that of the value around it when it is not there.
    int lineOf(QString pointer) const;

    /// A name that one object has twice, and the line of the second.
    struct Repeated {
        QString key;
        int line = 0;
    };
    const QList<Repeated>& repeated() const { return repeated_; }

private:
    void readValue(const QString& pointer);
    void readObject(const QString& pointer);
    void readArray(const QString& pointer);
    QString readString();
    void skipBlanks();
    bool atEnd() const { return at_ >= json_.size(); }
    char next() const { return atEnd() ? '\0' : json_.at(at_); }
    bool take(char character);

    QByteArray json_;
    qsizetype at_ = 0;
    int line_ = 1;
    QHash<QString, int> lines_;
    QList<Repeated> repeated_;
};

} // namespace quorvel::site
