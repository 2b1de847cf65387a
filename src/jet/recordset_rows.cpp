#include "jet/recordset_rows.h"

#include "jet/convert.h"
#include "jet/text_coding.h"

#include <algorithm>
#include <cmath>

namespace quorvel::jet {

namespace {

/// Where a value stands in an order: Null first, then numbers and moments by size, then by its letters what is text or
/// no finite number.
struct SortKey {
    int rank = 0;
    double number = 0;
    std::string text;
};

std::string lowered(std::string text)
{
    for (char& letter : text) {
        if (letter >= 'A' && letter <= 'Z') letter = static_cast<char>(letter + ('a' - 'A'));
    }
    return text;
}

SortKey sortKey(const Value& value)
{
    if (value.isNull()) return {};
    const auto date = value.date();
    const double number = date ? date->serial : value.number().value_or(NAN);
    if (!std::isfinite(number)) return {2, 0, lowered(value.text())};
    // A serial before 1899-12-30 counts its time of day forward, away from zero.
    const double whole = std::trunc(number);
    return {1, date && number < 0 ? whole + (whole - number) : number, {}};
}

int compare(const SortKey& a, const SortKey& b)
{
    if (a.rank != b.rank) return a.rank < b.rank ? -1 : 1;
    if (a.number != b.number) return a.number < b.number ? -1 : 1;
    return a.text.compare(b.text);
}

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
    struct Keyed {
        std::vector<SortKey> keys;
        std::uint32_t row;
    };
    std::vector<Keyed> keyed;
    for (const std::uint32_t row : rows_) {
        // A row that cannot be read stands first; moving to it says so.
        static_cast<void>(static_cast<bool>(table_->table->read(row, current_)));
        Keyed entry{{}, row};
        for (const std::size_t column : columns)
            entry.keys.push_back(sortKey(current_[column]));
        keyed.push_back(std::move(entry));
    }
    std::stable_sort(keyed.begin(), keyed.end(), [&order](const Keyed& a, const Keyed& b) {
        for (std::size_t i = 0; i < order.size(); ++i) {
            const int sign = compare(a.keys[i], b.keys[i]);
            if (sign != 0) return order[i].descending ? sign > 0 : sign < 0;
        }
        return false;
    });
    std::transform(keyed.begin(), keyed.end(), rows_.begin(), [](const Keyed& entry) { return entry.row; });
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
    draft_ = current_;
    if (adding) draft_.assign(current_.size(), Value());
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
