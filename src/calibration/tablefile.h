#pragma once

#include "calibration/records.h"

#include <filesystem>
#include <string>
#include <vector>

namespace quorvel::calibration {

/// A working file whose rows are kept in memory and which is open only while it is read or written, so that it is free
/// for the calibration window and for other programs meanwhile.
class TableFile final : public Records {
public:
    explicit TableFile(std::filesystem::path path) : path_(std::move(path)) {}

    const std::filesystem::path& path() const { return path_; }

    /// Reads the file. A missing one has no columns and no rows. Fails when it cannot be read; it has none then, either.
    jet::Status load();

    const std::vector<jet::FieldDef>& fields() const override { return fields_; }
    int rowCount() const override { return static_cast<int>(rows_.size()); }
    const jet::Value& value(int row, int column) const override;
    const std::string& readOnlyBecause() const override { return readOnlyBecause_; }
    /// A missing file is created. Fails also when another program writes it.
    jet::Status write(int row, const Changes& changes) override;

private:
    void keep(const Records& records);

    std::filesystem::path path_;
    std::string readOnlyBecause_;
    std::vector<jet::FieldDef> fields_;
    std::vector<std::vector<jet::Value>> rows_;
};

} // namespace quorvel::calibration
