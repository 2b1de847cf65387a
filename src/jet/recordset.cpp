#include "jet/recordset.h"

#include "jet/border.h"
#include "jet/recordset_rows.h"

namespace quorvel::jet {

namespace {

const std::string kNoName;

} // namespace

const std::string& Field::Name() const
{
    return Exists() ? rows_->columns()[static_cast<std::size_t>(column_)].name : kNoName;
}

FieldType Field::Type() const
{
    return Exists() ? fieldType(rows_->columns()[static_cast<std::size_t>(column_)]) : FieldType::Internal;
}

const jet::Value& Field::Value() const { return rows_->value(column_); }

void Field::SetValue(const jet::Value& value) { rows_->setValue(column_, value); }

Recordset::Recordset(std::unique_ptr<RecordsetRows> rows) : rows_(std::move(rows)) {}
Recordset::Recordset(Recordset&&) noexcept = default;
Recordset& Recordset::operator=(Recordset&&) noexcept = default;
Recordset::~Recordset() = default;

bool Recordset::Eof() const { return rows_->eof(); }

Status Recordset::MoveFirst()
{
    return atBorder(rows_->path(), [&] { return rows_->moveTo(0); });
}

Status Recordset::MoveLast()
{
    const auto last = rows_->count() == 0 ? 0 : rows_->count() - 1;
    return atBorder(rows_->path(), [&] { return rows_->moveTo(last); });
}

Status Recordset::MoveNext()
{
    // After a deletion the next row has moved to the place of the deleted one.
    const auto next = rows_->position() + (rows_->onDeleted() ? 0 : 1);
    return atBorder(rows_->path(), [&] { return rows_->moveTo(next); });
}

int Recordset::RecordCount() const { return static_cast<int>(rows_->count()); }

Status Recordset::Complete() const { return rows_->complete(); }

Field Recordset::Fields(std::string_view name)
{
    return {rows_.get(), rows_->usable() ? rows_->columnOf(name) : -1};
}

Field Recordset::Fields(int position)
{
    const bool exists = position >= 0 && position < FieldCount();
    return {rows_.get(), exists ? position : -1};
}

int Recordset::FieldCount() const { return rows_->usable() ? static_cast<int>(rows_->columns().size()) : 0; }

Status Recordset::Updatable() const { return rows_->writable(); }

void Recordset::AddNew() { rows_->begin(true); }

void Recordset::Edit() { rows_->begin(false); }

Status Recordset::Update()
{
    return atBorder(rows_->path(), [&] { return rows_->update(); });
}

Status Recordset::Delete()
{
    return atBorder(rows_->path(), [&] { return rows_->erase(); });
}

RowBookmark Recordset::LastModified() const { return {rows_->lastModified()}; }

RowBookmark Recordset::Bookmark() const { return {rows_->row()}; }

Status Recordset::SetBookmark(RowBookmark bookmark)
{
    return atBorder(rows_->path(), [&] { return rows_->moveToRow(bookmark.row); });
}

void Recordset::Close() { rows_->end(); }

} // namespace quorvel::jet
