#pragma once

#include "calibration/records.h"

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace quorvel::calibration {

/// The data control of the calibration window: keeps the working file of a direction open and its rows in memory, by
/// `SN`. While it holds the file, no other program can write it.
class DataControl final : public Records {
public:
    /// Names the file for the next Refresh().
    void setDatabaseName(std::filesystem::path path);
    const std::filesystem::path& DatabaseName() const { return databaseName_; }

    /// Opens the file again and reads all rows. Fails when it is not a readable calibration file; there are
    /// no columns and no rows then. A file that can only be read succeeds, see readOnlyBecause().
    jet::Status Refresh();
    /// Lets go of the file. Columns and rows are empty until the next Refresh().
    void Close();

    /// The name under which an older file is kept since it had to be written in the present format; empty when that
    /// was not needed since setDatabaseName().
    const std::filesystem::path& olderKeptAs() const { return olderKeptAs_; }

    /// Appends an empty row whose `SN` is the number of rows, itself included: 12 after the 11 of a new file.
    jet::Status AddCalibrationRow();
    /// Deletes the last row; nothing to do when there is none.
    jet::Status DeleteLastCalibrationRow();

    const std::vector<jet::FieldDef>& fields() const override { return fields_; }
    int rowCount() const override { return static_cast<int>(rows_.size()); }
    const jet::Value& value(int row, int column) const override;
    const std::string& readOnlyBecause() const override { return readOnlyBecause_; }
    /// A file of an older format is first rewritten in the present one; the older one is kept beside it.
    jet::Status write(int row, const Changes& changes) override;

private:
    struct Row {
        jet::RowBookmark bookmark;
        std::vector<jet::Value> values;
    };

    jet::Status open();
    jet::Status readRows();
    std::vector<jet::Value> currentValues();
    jet::Status prepareWriting();
    jet::Status appendRow();

    std::filesystem::path databaseName_;
    std::optional<jet::Database> database_;
    std::optional<jet::Recordset> recordset_;
    std::string readOnlyBecause_;
    std::filesystem::path olderKeptAs_;
    std::vector<jet::FieldDef> fields_;
    std::vector<Row> rows_;
};

} // namespace quorvel::calibration
