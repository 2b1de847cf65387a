// What the calibration window tells the record beside its file, and what it says from it.

#include "calibration/celebration1.h"
#include "calibration/downloadnote.h"
#include "calibration/ownership.h"
#include "files/name.h"
#include "link/address.h"
#include "link/bytes.h"

namespace quorvel::calibration {

/// The file, and for whom and when its points were taken, as far as it is known.
QString Celebration1::fileAndPoints() const
{
    const auto file = tr("File: %1").arg(QString::fromStdString(files::inWords(CalibrationDatabasePath)));
    const auto points = record_ ? ownershipText(ownershipOf(record_->data(), Data1, *direction_)) : QString();
    return points.isEmpty() ? file : tr("%1. Points: %2").arg(file, points);
}

QString Celebration1::ofAnotherReadout() const
{
    if (!record_ || address() == 0) return {};
    return whyNotTheirs(ownershipOf(record_->data(), Data1, *direction_), address());
}

int Celebration1::address() const { return link::addressIn(link::bytes(addressText())); }

/// The record is told when all that belongs to the point is in the file. When it cannot be written, the readings are of
/// unknown origin, and that is all.
void Celebration1::noteReadings(int row, const std::vector<double>& readings)
{
    if (!record_ || readings.size() != direction_->readings.size() || address() == 0) return;
    static_cast<void>(
        static_cast<bool>(noteMeasured(*record_, row, {module1_.clock().now(), address(), readings})));
    refreshStatus();
}

void Celebration1::noteDownload(const ReadingColumn& reading, const link::Exchange& exchange)
{
    const auto note = noteOf(reading, address(), false, exchange);
    if (!record_ || !note || address() == 0) return;
    static_cast<void>(
        static_cast<bool>(record_->change([&](RecordData& record) { record.downloads.push_back(*note); },
                                          module1_.clock().now().toSecsSinceEpoch())));
}

/// What is sent is kept under the day. @return why it could not be; the table is sent all the same.
QString Celebration1::keepCopy() const
{
    const auto kept = keepDatedCopy(CalibrationDatabasePath, module1_.clock().now().toSecsSinceEpoch());
    return kept ? QString() : tr("No copy was kept: %1").arg(QString::fromStdString(kept.error()));
}

} // namespace quorvel::calibration
