#pragma once

#include "site/sweep.h"

#include <QByteArray>
#include <QString>

/// A reading as a line for other programs. Times are ISO 8601 with the offset from UTC, values in mm with the digits
/// received; a value that is missing is empty, null, or left out, and the outcome says why.
namespace quorvel::site {

/// What stands beside a reading.
struct Place {
    QString site; ///< name of the site
    const Readout& readout;
};

/// "2024-05-17T09:05:30.123+02:00"; "Z" for an offset of none.
QString isoTime(const QDateTime& time);

/// A received value as other programs read numbers: without "+", blanks and leading zeros, decimals as received; empty
/// when it is not a number.
std::string plainNumber(std::string_view received);

/// "  X: +1.50000  Y: -0.25000", with Z1 and Z2 where the readout has them; of a failed reading only what came.
QString valuesText(const Reading& reading);

/// For people: "2024-05-17T09:05:30.123+02:00    5  Block 7  X: +1.50000  Y: -0.25000". A failure has its outcome.
QByteArray textLine(const Place& place, const Reading& reading);

/// "time,site,address,name,type,xMm,yMm,z1Mm,z2Mm,outcome", and its rows, quoted as RFC 4180 says.
QByteArray csvHeader();
QByteArray csvRow(const Place& place, const Reading& reading);

/// One JSON object: {"time":...,"site":...,"address":5,"name":...,"type":"A","xMm":1.5,"xText":"+1.50000", ... "outcome":
/// "complete"}.
QByteArray ndjsonLine(const Place& place, const Reading& reading);

/// Influx line protocol: measurement quorvel_reading, tags site, address, name, type, fields xMm ... and outcome, time in
/// nanoseconds. A tag without text is left out; a backslash in one, which the protocol cannot carry everywhere, becomes
/// "/".
QByteArray influxLine(const Place& place, const Reading& reading);

} // namespace quorvel::site
