#pragma once

#include "jet/query.h"
#include "jet/recordset.h"
#include "jet/store.h"

#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace quorvel::jet {

/// What stands behind a Recordset: the rows in their order, the position, and the row being written.
class RecordsetRows {
public:
    /// Fails when the table is damaged or has no such column to order by.
    static Result<std::unique_ptr<RecordsetRows>> open(std::shared_ptr<Store> store, Store::OpenTable& table,
                                                       const Query& query);

    const std::filesystem::path& path() const { return store_->path(); }
    bool usable() const { return !ended_ && !store_->closed(); }
    bool eof() const { return !usable() || at_ >= rows_.size(); }
    std::size_t count() const { return usable() ? rows_.size() : 0; }
    std::size_t position() const { return at_; }
    std::uint32_t row() const { return eof() || onDeleted_ ? 0 : rows_[at_]; }
    bool onDeleted() const { return onDeleted_; }
    std::uint32_t lastModified() const { return lastModified_; }

    const Status& complete() const { return complete_; }

    Status moveTo(std::size_t position);
    Status moveToRow(std::uint32_t row);

    int columnOf(std::string_view name) const { return table_->table->columnOf(name); }
    const std::vector<Column>& columns() const { return table_->table->definition().columns; }
    const Value& value(int column) const;
    void setValue(int column, const Value& value);

    Status writable() const;
    void begin(bool adding);
    Status update();
    Status erase();
    void end();

private:
    enum class Writing { Nothing, Adding, Editing };

    RecordsetRows(std::shared_ptr<Store> store, Store::OpenTable& table)
        : store_(std::move(store)), table_(&table)
    {}

    void orFault(const std::function<void()>& step);
    void setDraft(int column, const Value& value);
    void cancel();
    Status sort(const std::vector<Query::Order>& order);
    Status add();
    Status change();

    std::shared_ptr<Store> store_;
    Store::OpenTable* table_; ///< lives as long as the store is not closed
    std::vector<std::uint32_t> rows_;
    Status complete_; ///< why rows are missing
    std::size_t at_ = 0;
    bool onDeleted_ = false; ///< the row at the position was deleted; at_ is where the next one stands
    bool unread_ = false;    ///< the current row could not be read: it must not be written either
    bool ended_ = false;
    std::vector<Value> current_;
    Writing writing_ = Writing::Nothing;
    std::vector<Value> draft_;
    std::optional<Failure> draftFault_;
    std::uint32_t lastModified_ = 0;
};

} // namespace quorvel::jet
