#pragma once

#include "link/transaction.h"

#include <QFile>
#include <QObject>
#include <QString>

/// What was said on the bus, as a file for other programs.
namespace quorvel::line {

/// Writes the traffic to a file, one JSON object a line. The line of a frame is written when it is sent, so that a dead
/// bus leaves a trace, and completed by a second one of the same "exchange":
///
///     {"exchange":1,"time":"2024-05-17T09:05:30.123+02:00","address":5,"kind":"query","command":"2101",
///      "meaning":"Read X and Y","frame":":052101FF\r\n"}
///     {... the same ..., "reply":"...","outcome":"complete","firstCharacterMs":4.1,"lastCharacterMs":34.2}
///
/// Times are ISO 8601 with the offset from UTC; the two durations run from the last character of the frame. A byte of
/// 128 or more is written as the character of that number.
class Trace final : public QObject, public link::ExchangeObserver {
    Q_OBJECT
public:
    explicit Trace(QObject* parent = nullptr) : QObject(parent) {}

    /// Appends to the file from now on. @return empty on success, otherwise the reason in words.
    QString open(const QString& path);
    void close() { file_.close(); }
    bool isOpen() const { return file_.isOpen(); }
    QString path() const { return file_.fileName(); }

    void sending(const link::Exchange& exchange) override { write(exchange, false); }
    void ended(const link::Exchange& exchange) override { write(exchange, true); }

Q_SIGNALS:
    /// A line could not be written, on a full disk for example; the file is closed.
    /// @param reason  what happened, in words.
    void failed(const QString& reason);

private:
    void write(const link::Exchange& exchange, bool whole);

    QFile file_;
};

/// Milliseconds from the last character of the frame to the first and to the last one of the reply; nothing without.
std::optional<double> firstCharacterMs(const link::Exchange& exchange);
std::optional<double> lastCharacterMs(const link::Exchange& exchange);

} // namespace quorvel::line
