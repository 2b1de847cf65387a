#include "line/trace.h"

#include "line/linefile.h"
#include "link/bytes.h"
#include "protocol/meaning.h"

#include <QJsonDocument>
#include <QJsonObject>

#include <cmath>

namespace quorvel::line {

namespace {

QString fromText(std::string_view text) { return link::shown(text); }

/// In tenths of a millisecond, which is what the clock is worth.
std::optional<double> sinceFrame(const link::Exchange& exchange, const std::optional<double>& moment)
{
    if (!moment || !exchange.lastOut) return std::nullopt;
    return std::round((*moment - *exchange.lastOut) * 1e4) / 10;
}

QJsonObject headOf(const link::Exchange& exchange)
{
    const auto& frame = exchange.transaction.frame;
    const auto* command = protocol::commandOf(frame);
    const int address = protocol::addressOf(frame);
    return {
        {"exchange", static_cast<qint64>(exchange.number)},
        {"time", exchange.begun.toOffsetFromUtc(exchange.begun.offsetFromUtc()).toString(Qt::ISODateWithMs)},
        {"address", address < 0 ? QJsonValue() : QJsonValue(address)},
        {"kind", fromText(protocol::nameOf(exchange.transaction.kind))},
        {"command", command ? QJsonValue(fromText(command->digits)) : QJsonValue()},
        {"meaning", fromText(protocol::meaningOf(frame))},
        {"frame", fromText(frame)}};
}

} // namespace

std::optional<double> firstCharacterMs(const link::Exchange& exchange)
{
    return sinceFrame(exchange, exchange.firstIn);
}

std::optional<double> lastCharacterMs(const link::Exchange& exchange)
{
    return sinceFrame(exchange, exchange.lastIn);
}

QString Trace::open(const QString& path)
{
    file_.close();
    file_.setFileName(path);
    if (openForLines(file_)) return {};
    return tr("The traffic cannot be recorded to %1: %2. Choose another file.")
        .arg(path, file_.errorString());
}

void Trace::write(const link::Exchange& exchange, bool whole)
{
    if (!isOpen()) return;
    auto object = headOf(exchange);
    if (whole) {
        object["reply"] = fromText(exchange.reply);
        object["outcome"] = fromText(protocol::outcomeOf(exchange));
        if (exchange.lost > 0) object["lost"] = static_cast<qint64>(exchange.lost);
        const auto first = firstCharacterMs(exchange);
        const auto last = lastCharacterMs(exchange);
        object["firstCharacterMs"] = first ? QJsonValue(*first) : QJsonValue();
        object["lastCharacterMs"] = last ? QJsonValue(*last) : QJsonValue();
    }
    const auto line = QJsonDocument(object).toJson(QJsonDocument::Compact) + '\n';
    if (file_.write(line) == line.size()) return;
    const auto reason = file_.errorString();
    file_.close();
    Q_EMIT failed(tr("Recording the traffic to %1 has ended: %2.").arg(file_.fileName(), reason));
}

} // namespace quorvel::line
