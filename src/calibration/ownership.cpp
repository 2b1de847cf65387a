#include "calibration/ownership.h"

#include <algorithm>
#include <set>

namespace quorvel::calibration {

namespace {

void count(const RunPoint& point, Ownership& ownership)
{
    std::set<int> here;
    for (const auto& pass : point.passes) {
        for (const auto& take : pass.takes) {
            here.insert(take.address);
            if (!ownership.first.isValid() || take.at < ownership.first) ownership.first = take.at;
            if (!ownership.last.isValid() || take.at > ownership.last) ownership.last = take.at;
        }
    }
    for (const int address : here)
        ++ownership.points[address];
}

} // namespace

std::optional<bool> corrects(const RecordData& record, int address, std::string_view column,
                             const QDateTime& when)
{
    const DownloadNote* latest = nullptr;
    for (const auto& note : record.downloads) {
        const bool counts = !when.isValid() || note.at <= when;
        if (note.address == address && note.column == column && counts) latest = &note;
    }
    // what a table does that the readout repeated otherwise, or not at all, is not known
    if (!latest || latest->verdict != Verdict::Agrees) return std::nullopt;
    return !latest->zeros;
}

bool Ownership::isOfAnother(int address) const
{
    return std::ranges::any_of(points, [address](const auto& count) { return count.first != address; });
}

Held heldAt(const RunPoint& point, const Records& table, int row, const DirectionRow& direction)
{
    bool any = false;
    bool same = true;
    for (std::size_t i = 0; i < direction.readings.size(); ++i) {
        const auto held = singleIn(table, row, columnOf(table.fields(), direction.readings[i].name));
        const auto taken = meanOf(point, i);
        any = any || held;
        same = same && held && taken && static_cast<float>(*held) == static_cast<float>(*taken);
    }
    if (!any) return Held::Nothing;
    return same ? Held::Taken : Held::Another;
}

Ownership ownershipOf(const RecordData& record, const Records& table, const DirectionRow& direction)
{
    Ownership ownership;
    for (int row = 0; row < std::min(kPoints, table.rowCount()); ++row) {
        const auto& point = record.run(RunKind::Measured)[static_cast<std::size_t>(row)];
        switch (heldAt(point, table, row, direction)) {
        case Held::Nothing:
            break;
        case Held::Another:
            ++ownership.unknown;
            break;
        case Held::Taken:
            count(point, ownership);
            break;
        }
    }
    return ownership;
}

QString spanText(const QDateTime& first, const QDateTime& last)
{
    static const auto kWhole = QStringLiteral("yyyy-MM-dd HH:mm");
    auto begin = first.toString(kWhole);
    const auto end = last.toString(kWhole);
    if (begin == end) return begin;
    return begin + QStringLiteral(" to ") +
           (first.date() == last.date() ? last.toString(QStringLiteral("HH:mm")) : end);
}

QString ownershipText(const Ownership& ownership)
{
    if (ownership.points.empty()) return {};
    QStringList readouts;
    for (const auto& [address, count] : ownership.points) {
        readouts << (ownership.points.size() > 1 ? QStringLiteral("%1 (%2 points)").arg(address).arg(count)
                                                 : QString::number(address));
    }
    auto words = QStringLiteral("readout %1, %2.")
                     .arg(readouts.join(QStringLiteral(" and ")), spanText(ownership.first, ownership.last));
    if (ownership.unknown > 0) {
        words +=
            QStringLiteral(" Of %1 more it is not known where they were measured.").arg(ownership.unknown);
    }
    return words;
}

QString whyNotTheirs(const Ownership& ownership, int address)
{
    if (!ownership.isOfAnother(address)) return {};
    QStringList others;
    for (const auto& [other, count] : ownership.points) {
        if (other != address) others << QString::number(other);
    }
    return QStringLiteral(
               "The points were measured at readout %1, the address is %2: they are not this readout's.")
        .arg(others.join(QStringLiteral(" and ")))
        .arg(address);
}

} // namespace quorvel::calibration
