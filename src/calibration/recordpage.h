#pragma once

#include "calibration/recordview.h"
#include "page/page.h"

#include <QDateTime>
#include <QJsonObject>

#include <filesystem>

/// The record on paper and for the archive.
namespace quorvel::calibration {

/// One page: readout, gauge and people, the three runs side by side, both charts, downloads, hints, and room for
/// signatures. Draws charts, so it needs a QApplication.
/// @param written  when the page is made.
page::Page recordPage(const RecordView& view, const QDateTime& written);

/// The record as it is kept, with what was judged, the points of the working file and the program added
/// (docs/calibration-record.schema.json).
QJsonObject recordReport(const RecordView& view, const QDateTime& written);

/// The endings that saveRecord() knows, as a file dialog takes them.
inline constexpr auto kRecordFilter = "Record (*.pdf *.html *.png *.json)";

/// True when saveRecord() knows the ending.
bool isRecordName(const std::filesystem::path& path);

/// Saves the page, or for ".json" the report. What is there is replaced in one step, without a question.
files::Status saveRecord(const RecordView& view, const std::filesystem::path& path, const QDateTime& written);

} // namespace quorvel::calibration
