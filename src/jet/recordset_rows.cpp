#include "jet/recordset_rows.h"

#include "jet/border.h"
#include "jet/convert.h"
#include "jet/row_order.h"

#include <algorithm>

namespace quorvel::jet {

namespace {

// Beside the length of the file, for the texts that rows are sorted by.
constexpr std::size_t kSpareText = 8U << 20U;

const Value kNothing{};

} // namespace

Result<std::unique_ptr<RecordsetRows>> RecordsetRows::open(std::shared_ptr<Store> store,
                                                           Store::OpenTable& table, const Query& query)
{
    std::unique_ptr<RecordsetRows> rows(new RecordsetRows(std::move(store), table));
    auto all = table.table->rows();
    if (!all) return rows->store_->named(all.error());
    rows->rows_ = std::move(*all);
    if (auto complete = table.table->complete(rows->rows_.size()); !complete) {
        rows->complete_ = rows->store_->named(complete.error());
    }
    rows->current_.resize(rows->columns().size());
    if (auto sorted = rows->sort(query.order); !sorted) return sorted.failure();
    return rows;
}

Status RecordsetRows::sort(const std::vector<Query::Order>& order)
{
    std::vector<std::size_t> columns;
    for (const auto& by : order) {
        const int column = columnOf(by.field);
        if (column < 0)
            return store_->named("has no column \"" + by.field + "\" in this table. Choose another file.");
        columns.push_back(static_cast<std::size_t>(column));
    }
    if (order.empty()) return {};
    std::vector<bool> descending;
    descending.reserve(order.size());
    for (const auto& by : order)
        descending.push_back(by.descending);
    RowOrder keys(std::move(descending), rows_.size(), table_->table->fileBytes() + kSpareText);
    for (const std::uint32_t row : rows_) {
        // A row that cannot be read comes first; moving to it says so.
        static_cast<void>(static_cast<bool>(table_->table->read(row, current_, columns)));
        for (const std::size_t column : columns) {
            if (!keys.add(current_[column]))
                return store_->named("has too many long texts to be sorted by them. Choose another column.");
        }
    }
    auto sorted = keys.sorted();
    std::transform(sorted.begin(), sorted.end(), sorted.begin(), [this](auto at) { return rows_[at]; });
    rows_ = std::move(sorted);
    return {};
}

Status RecordsetRows::moveTo(std::size_t position)
{
    if (!usable()) return store_->named("has been closed. Open it again.");
    cancel();
    onDeleted_ = false;
    at_ = std::min(position, rows_.size());
    if (at_ == rows_.size()) {
        current_.assign(current_.size(), Value());
        return {};
    }
    auto read = table_->table->read(rows_[at_], current_);
    unread_ = !read;
    return read ? read : Status(store_->named(read.error()));
}

Status RecordsetRows::moveToRow(std::uint32_t row)
{
    // From the back: the row asked for is nearly always the one written last.
    const auto found = std::find(rows_.rbegin(), rows_.rend(), row);
    if (!usable() || found == rows_.rend()) return store_->named("has no such row. Open the table again.");
    return moveTo(static_cast<std::size_t>(rows_.rend() - found) - 1);
}

const Value& RecordsetRows::value(int column) const
{
    const auto& values = writing_ == Writing::Nothing ? current_ : draft_;
    if (!usable() || column < 0 || static_cast<std::size_t>(column) >= values.size()) return kNothing;
    return values[static_cast<std::size_t>(column)];
}

void RecordsetRows::setValue(int column, const Value& value)
{
    orFault([&] { setDraft(column, value); });
}

void RecordsetRows::setDraft(int column, const Value& value)
{
    if (draftFault_) return;
    if (writing_ == Writing::Nothing) {
        draftFault_ = Failure{"has no row being written: call AddNew or Edit first."};
    } else if (column < 0) {
        draftFault_ = Failure{"has no column of this name in the table. Choose another file."};
    } else if (auto fitted = fitTo(fieldType(columns()[static_cast<std::size_t>(column)]), value); !fitted) {
        draftFault_ = fitted.failure();
    } else {
        draft_[static_cast<std::size_t>(column)] = std::move(*fitted);
    }
}

Status RecordsetRows::writable() const
{
    if (!usable()) return store_->named("has been closed. Open it again.");
    if (table_->readOnlyBecause.empty()) return {};
    return store_->named(table_->readOnlyBecause);
}

void RecordsetRows::begin(bool adding)
{
    cancel();
    if (!usable() || (!adding && (row() == 0 || unread_))) return;
    writing_ = adding ? Writing::Adding : Writing::Editing;
    orFault([&] {
        draft_ = current_;
        if (adding) draft_.assign(current_.size(), Value());
    });
}

/// Memory that runs out while a row is prepared is reported by update().
void RecordsetRows::orFault(const std::function<void()>& step)
{
    const auto done = atBorder(store_->path(), [&]() -> Status {
        step();
        return {};
    });
    if (!done) draftFault_ = Failure{"needs more memory than there is. Close other programs and try again."};
}

void RecordsetRows::cancel()
{
    writing_ = Writing::Nothing;
    draftFault_.reset();
}

Status RecordsetRows::update()
{
    const Writing writing = writing_;
    const auto fault = draftFault_;
    cancel();
    if (auto allowed = writable(); !allowed) return allowed;
    if (fault) return store_->named(fault->reason);
    if (writing == Writing::Nothing)
        return store_->named("has no row being written: call AddNew or Edit first.");
    auto done = writing == Writing::Adding ? add() : change();
    return done ? done : Status(store_->named(done.error()));
}

Status RecordsetRows::add()
{
    const auto added = table_->table->append(draft_);
    if (!added) return added.failure();
    // At the end the position stays behind the last row.
    const bool behind = at_ >= rows_.size() && !onDeleted_;
    rows_.push_back(*added);
    if (behind) at_ = rows_.size();
    lastModified_ = *added;
    return {};
}

Status RecordsetRows::change()
{
    const std::uint32_t changed = row();
    if (auto done = table_->table->update(changed, draft_); !done) return done;
    current_ = draft_;
    lastModified_ = changed;
    return {};
}

Status RecordsetRows::erase()
{
    cancel();
    if (auto allowed = writable(); !allowed) return allowed;
    if (row() == 0) return store_->named("has no current row to delete. Move to a row first.");
    if (auto erased = table_->table->erase(row()); !erased) return store_->named(erased.error());
    if (lastModified_ == row()) lastModified_ = 0;
    rows_.erase(rows_.begin() + static_cast<std::ptrdiff_t>(at_));
    current_.assign(current_.size(), Value());
    onDeleted_ = true;
    return {};
}

void RecordsetRows::end()
{
    cancel();
    ended_ = true;
    rows_.clear();
    rows_.shrink_to_fit();
}

} // namespace quorvel::jet
