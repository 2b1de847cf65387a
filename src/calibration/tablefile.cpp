#include "calibration/tablefile.h"

#include "calibration/database.h"
#include "calibration/datacontrol.h"
#include "files/name.h"

namespace quorvel::calibration {

void TableFile::keep(const Records& records)
{
    fields_ = records.fields();
    readOnlyBecause_ = records.readOnlyBecause();
    rows_.clear();
    for (int row = 0; row < records.rowCount(); ++row) {
        auto& values = rows_.emplace_back();
        for (int column = 0; column < static_cast<int>(fields_.size()); ++column)
            values.push_back(records.value(row, column));
    }
}

jet::Status TableFile::load()
{
    DataControl control;
    control.setDatabaseName(path_);
    auto opened = files::isThere(path_) ? control.Refresh() : jet::Status();
    keep(control);
    return opened;
}

const jet::Value& TableFile::value(int row, int column) const
{
    return rows_[static_cast<std::size_t>(row)][static_cast<std::size_t>(column)];
}

jet::Status TableFile::write(int row, const Changes& changes)
{
    if (!files::isThere(path_)) {
        if (auto created = CreateCalibrationDatabase(path_); !created) return created;
    }
    DataControl control;
    control.setDatabaseName(path_);
    if (auto opened = control.Refresh(); !opened) return opened;
    keep(control);
    if (row >= control.rowCount())
        return jet::Failure{files::inWords(path_) + " has no point " + std::to_string(row) + "."};
    for (const auto& [name, number] : changes) {
        if (columnOf(control.fields(), name) < 0)
            return jet::Failure{files::inWords(path_) + " has no column " + name + "."};
    }
    auto written = control.write(row, changes);
    keep(control);
    return written;
}

} // namespace quorvel::calibration
