#include "calibration/recordjob.h"

#include "calibration/database.h"
#include "calibration/downloadnote.h"
#include "files/name.h"
#include "files/replace.h"
#include "link/address.h"
#include "link/bytes.h"
#include "protocol/answer.h"
#include "protocol/measurement.h"
#include "text/number.h"

namespace quorvel::calibration {

std::time_t RecordJob::now() const { return module1_.clock().now().toSecsSinceEpoch(); }

jet::Status RecordJob::change(const std::function<void(RecordData&)>& change)
{
    return file_.change(change, now());
}

jet::Result<std::vector<double>> RecordJob::ask(int address)
{
    const auto exchange =
        module1_.transact(protocol::measurement(direction_.direction, link::AddressToHex(address)));
    const auto& reply = exchange.reply;
    if (!protocol::isMeasurement(reply) && exchange.outcome == link::Outcome::PortLost)
        return jet::Failure{"Nothing was measured. " + protocol::whyFailed(exchange).toStdString()};
    if (!protocol::isMeasurement(reply)) {
        return jet::Failure{"Nothing was measured: " + protocol::whyNoMeasurement(reply) +
                            ". Check the address."};
    }
    std::vector<double> readings;
    for (const auto& column : direction_.readings) {
        const auto measured = protocol::measuredBy(column.sensor, reply);
        if (!text::isNumber(measured)) {
            return jet::Failure{std::string(column.name) + " was not measured: the readout answered \"" +
                                protocol::inOneLine(measured) + "\"."};
        }
        readings.push_back(text::Val(measured));
    }
    return readings;
}

jet::Result<Pass> RecordJob::measure(const TakeOrder& order, const std::function<bool()>& stop)
{
    Pass pass{order.dial, order.down, {}};
    for (int i = 0; i < order.repeats; ++i) {
        if (stop && stop()) return jet::Failure{"Stopped; the point stays as it was."};
        auto readings = ask(order.address);
        if (!readings) return readings.failure();
        pass.takes.push_back({module1_.clock().now(), order.address, std::move(*readings)});
    }
    return pass;
}

/// The mean of the passes goes into the table.
jet::Status RecordJob::writePoint(int row, const RunPoint& point)
{
    double dial = 0;
    for (const auto& pass : point.passes)
        dial += pass.dial.value_or(0) / static_cast<double>(point.passes.size());
    Records::Changes changes{{std::string(kDialName), dial}};
    for (std::size_t i = 0; i < direction_.readings.size(); ++i)
        changes[std::string(direction_.readings[i].name)] = meanOf(point, i);
    return table_.write(row, changes);
}

jet::Status RecordJob::take(const TakeOrder& order, const std::function<bool()>& stop)
{
    auto pass = measure(order, stop);
    if (!pass) return pass.failure();
    file_.load();
    auto point = record().run(order.kind)[static_cast<std::size_t>(order.point)];
    if (order.kind == RunKind::Measured) {
        if (auto loaded = table_.load(); !loaded) return loaded;
        // takes that the table no longer shows do not come back through a mean
        if (heldAt(point, table_, order.point, direction_) != Held::Taken) point = {};
        for (auto& other : point.passes) {
            if (!other.dial) other.dial = singleIn(table_, order.point, kDialColumn);
        }
    }
    point.put(std::move(*pass));
    if (order.kind == RunKind::Measured) {
        if (auto written = writePoint(order.point, point); !written) return written;
    }
    auto kept = change([&](RecordData& data) {
        data.run(order.kind)[static_cast<std::size_t>(order.point)] = std::move(point);
        data.settleAddress();
    });
    if (!kept && order.kind == RunKind::Measured)
        return jet::Failure{"It is in the table, but not in the record. " + kept.error()};
    return kept;
}

jet::Status RecordJob::clear(RunKind kind)
{
    return change([kind](RecordData& data) { data.run(kind) = {}; });
}

void RecordJob::send(const ReadingColumn& reading, int address, bool zeros, const Points& points,
                     const std::function<void(int)>& sent, Sent& result)
{
    const auto exchange =
        module1_.transact(protocol::tableDownload(reading.sensor, link::AddressToHex(address), points), sent);
    const auto note = noteOf(reading, address, zeros, exchange);
    result.agreed = result.agreed && note && note->verdict == Verdict::Agrees;
    if (!note) {
        result.words << protocol::whyFailed(exchange);
        return;
    }
    result.words << textOf(*note);
    const auto kept = change([&](RecordData& data) { data.downloads.push_back(*note); });
    if (!kept) result.words << QString::fromStdString(kept.error());
}

jet::Result<Sent> RecordJob::download(int address, const std::function<void(int)>& sent)
{
    if (auto loaded = load(); !loaded) return loaded.failure();
    std::vector<Points> tables;
    for (const auto& reading : direction_.readings) {
        const auto points = pointsOf(table_, columnOf(table_.fields(), reading.name));
        if (!points) return jet::Failure{kDataEmpty};
        tables.push_back(*points);
    }
    Sent result{{}, true};
    if (const auto kept = keepDatedCopy(workingFile(), now()); !kept)
        result.words << QString::fromStdString(kept.error());
    for (std::size_t i = 0; i < tables.size() && module1_.port().PortOpen(); ++i)
        send(direction_.readings[i], address, false, tables[i], sent, result);
    return result;
}

Sent RecordJob::switchOff(int address, const std::function<void(int)>& sent)
{
    Sent result{{}, true};
    for (const auto& reading : direction_.readings) {
        if (module1_.port().PortOpen()) send(reading, address, true, {}, sent, result);
    }
    return result;
}

jet::Result<std::filesystem::path> RecordJob::newTable()
{
    if (auto loaded = load(); !loaded) return loaded.failure();
    const auto keptRecord = keepDatedCopy(recordFile(), now());
    if (!keptRecord) return keptRecord.failure();
    const auto make = [this](const std::filesystem::path& fresh) { return createTableOf(direction_, fresh); };
    const auto kept = files::replaceFile(workingFile(), make, {.keepAs = files::dateMark(now())});
    if (!kept) return kept.failure();
    if (auto loaded = table_.load(); !loaded) return loaded.failure();
    const auto begun = change([&](RecordData& data) {
        data.runs = {};
        data.address = 0;
        data.serial.clear();
        data.remark.clear();
        data.begun = module1_.clock().now();
    });
    if (!begun) return begun.failure();
    return *kept;
}

} // namespace quorvel::calibration
