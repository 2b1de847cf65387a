#include "calibration/datacontrol.h"

#include "calibration/database.h"
#include "files/name.h"

#include <QFileInfo>

namespace quorvel::calibration {

void DataControl::setDatabaseName(std::filesystem::path path)
{
    databaseName_ = std::move(path);
    olderKeptAs_.clear();
}

void DataControl::Close()
{
    recordset_.reset();
    database_.reset();
    readOnlyBecause_.clear();
    fields_.clear();
    rows_.clear();
}

jet::Status DataControl::open()
{
    auto opened = jet::OpenDatabase(databaseName_, {.durability = jet::Durability::EachUpdate});
    if (!opened) {
        // Another program may hold it: then it can still be looked at.
        readOnlyBecause_ = opened.error();
        opened = jet::OpenDatabase(databaseName_, {.access = jet::Access::ReadOnly});
    }
    if (!opened) return opened.failure();
    database_ = std::move(*opened);
    auto fields = calibrationFields(*database_, databaseName_);
    if (!fields) return fields.failure();
    auto rows = openPoints(*database_, databaseName_);
    if (!rows) return rows.failure();
    fields_ = std::move(*fields);
    recordset_ = std::move(*rows);
    // What is left of a damaged table would be written as the whole.
    if (const auto complete = recordset_->Complete(); !complete && readOnlyBecause_.empty()) {
        readOnlyBecause_ = complete.error();
    }
    // A table that only cannot be written as it is will be written anew.
    const auto updatable = recordset_->Updatable();
    if (readOnlyBecause_.empty() && !updatable && !QFileInfo(databaseName_).isWritable()) {
        readOnlyBecause_ = updatable.error();
    }
    return {};
}

std::vector<jet::Value> DataControl::currentValues()
{
    std::vector<jet::Value> values;
    for (const auto& field : fields_) {
        values.push_back(recordset_->Fields(field.name).Value());
    }
    return values;
}

jet::Status DataControl::readRows()
{
    rows_.clear();
    auto moved = recordset_->MoveFirst();
    for (; moved && !recordset_->Eof(); moved = recordset_->MoveNext()) {
        rows_.push_back({recordset_->Bookmark(), currentValues()});
    }
    return moved;
}

jet::Status DataControl::Refresh()
{
    Close();
    auto done = open();
    if (done) done = readRows();
    if (done) return done;
    Close();
    return done;
}

const jet::Value& DataControl::value(int row, int column) const
{
    return rows_[static_cast<std::size_t>(row)].values[static_cast<std::size_t>(column)];
}

jet::Status DataControl::prepareWriting()
{
    if (!recordset_) return jet::Failure{files::inWords(databaseName_) + " is not open."};
    if (!readOnlyBecause_.empty()) return jet::Failure{readOnlyBecause_};
    if (recordset_->Updatable()) return {};
    recordset_.reset();
    const auto kept = renewFormat(*database_, databaseName_);
    if (kept) olderKeptAs_ = *kept;
    const auto refreshed = Refresh();
    return kept ? refreshed : jet::Status(kept.failure());
}

jet::Status DataControl::write(int row, const Changes& changes)
{
    if (auto ready = prepareWriting(); !ready) return ready;
    auto& held = rows_.at(static_cast<std::size_t>(row));
    if (auto found = recordset_->SetBookmark(held.bookmark); !found) return found;
    recordset_->Edit();
    for (const auto& [name, number] : changes) {
        recordset_->Fields(name).SetValue(number ? jet::Value(*number) : jet::kNull);
    }
    if (auto written = recordset_->Update(); !written) return written;
    held.values = currentValues();
    return {};
}

jet::Status DataControl::appendRow()
{
    recordset_->AddNew();
    if (auto done = recordset_->Update(); !done) return done;
    const int count = recordset_->RecordCount();
    if (auto done = recordset_->SetBookmark(recordset_->LastModified()); !done) return done;
    recordset_->Edit();
    recordset_->Fields(kNumberName).SetValue(static_cast<std::int32_t>(count));
    return recordset_->Update();
}

jet::Status DataControl::AddCalibrationRow()
{
    if (auto ready = prepareWriting(); !ready) return ready;
    if (auto done = appendRow(); !done) return done;
    return Refresh();
}

jet::Status DataControl::DeleteLastCalibrationRow()
{
    if (auto ready = prepareWriting(); !ready) return ready;
    if (auto done = recordset_->MoveLast(); !done) return done;
    if (recordset_->Eof()) return {};
    if (auto done = recordset_->Delete(); !done) return done;
    return Refresh();
}

} // namespace quorvel::calibration
