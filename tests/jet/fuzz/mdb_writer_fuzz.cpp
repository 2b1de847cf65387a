#include "jet/checker.h"
#include "jet/convert.h"
#include "jet/data_page.h"
#include "jet/memory_file.h"
#include "jet/store.h"
#include "support/fuzz_input.h"

#include <algorithm>
#include <limits>
#include <optional>

/// Makes a table and works on it step by step, as the input says: adds, changes and deletes rows, closes and opens the
/// file, lets another program change it meanwhile, fills the disk. A list in memory is what the table must hold after
/// each step.
///
/// First byte: how many columns. Then a byte of type for each, and for each step a byte that chooses it, followed by
/// what it takes.
namespace quorvel::jet::testing {
namespace {

using test::FuzzInput;
using test::promised;

const std::filesystem::path kFile = "model.mdb";
constexpr FieldType kTypes[] = {FieldType::Integer, FieldType::Long, FieldType::Single, FieldType::Double,
                                FieldType::Date};
constexpr std::size_t kMostRows = 600;
constexpr int kMostSteps = 40;
constexpr std::size_t kSlots = 0x0E;
constexpr std::size_t kRowCountAt = 0x10;

using Row = std::vector<Value>;

/// A value that may or may not fit its column.
Value valueFrom(FuzzInput& input)
{
    const auto number = static_cast<int>(input.below(65536));
    switch (input.below(8)) {
    case 0:
        return kNull;
    case 1:
        return Date{number + 0.25};
    case 2:
        return number - 32768;
    case 3:
        return (number - 32768) * 65536.0;
    case 4:
        return static_cast<float>(number) / 16;
    case 5:
        return std::numeric_limits<double>::infinity();
    case 6:
        return std::string("text");
    default:
        return number / 1e3;
    }
}

/// A row of another program's hand: where it is.
struct Place {
    std::size_t page; ///< offset of its page in the file
    std::size_t slot;
};

class Machine {
public:
    explicit Machine(FuzzInput& input) : input_(input)
    {
        TableDef table("model");
        const auto columns = 1 + input_.below(12);
        for (std::size_t i = 0; i < columns; ++i) {
            types_.push_back(kTypes[input_.below(std::size(kTypes))]);
            table.Append({"c" + std::to_string(i), types_.back()});
        }
        auto made = CreateDatabase(kFile, kGeneralLocale, &files_);
        promised(made && made->Append(table) && made->Close(), "a new file");
        open();
    }

    void run()
    {
        for (int step = 0; step < kMostSteps && !input_.empty(); ++step) {
            static constexpr void (Machine::*kSteps[])() = {
                &Machine::add,           &Machine::addMany,    &Machine::change,
                &Machine::remove,        &Machine::reopen,     &Machine::order,
                &Machine::foreignRemove, &Machine::foreignAdd, &Machine::addOnFullDisk};
            (this->*kSteps[input_.below(std::size(kSteps))])();
            compare();
        }
        close();
        int leaked = 0;
        const auto faults = faultsOf(bytes(), &leaked);
        promised(faults.empty(), faults.empty() ? "" : faults.front());
        promised(leaked == 0 || wasFull_, "every page belongs to something");
    }

private:
    ByteVector& bytes() { return disk_.files[kFile.string()]; }

    void open()
    {
        const auto durability = input_.byte() % 2 == 0 ? Durability::AtClose : Durability::EachUpdate;
        auto opened = OpenDatabase(kFile, {.durability = durability, .files = &files_});
        promised(static_cast<bool>(opened), "a file of our own can be opened");
        database_.emplace(std::move(*opened));
        auto rows = database_->OpenRecordset("model");
        promised(rows && rows->Updatable(), "a table of our own can be written");
        rows_.emplace(std::move(*rows));
    }
    void close()
    {
        rows_.reset();
        promised(static_cast<bool>(database_->Close()), "a file can be closed");
        database_.reset();
    }
    void reopen()
    {
        close();
        open();
    }

    /// Sets some columns. @return the row as it will be; nothing when a value does not fit.
    std::optional<Row> setSome(Row row)
    {
        bool fits = true;
        for (std::size_t i = 0; i < types_.size(); ++i) {
            if (input_.byte() % 4 == 0) continue;
            const auto value = valueFrom(input_);
            rows_->Fields(static_cast<int>(i)).SetValue(value);
            const auto fitting = fitTo(types_[i], value);
            fits = fits && fitting;
            if (fitting) row[i] = *fitting;
        }
        return fits ? std::optional(row) : std::nullopt;
    }

    void add()
    {
        if (model_.size() >= kMostRows) return;
        rows_->AddNew();
        const auto row = setSome(Row(types_.size()));
        const bool done = static_cast<bool>(rows_->Update());
        promised(done == row.has_value(), "a row is added when its values fit");
        if (row) model_.push_back(*row);
    }

    void addMany()
    {
        const auto count = std::min(input_.below(256), kMostRows - model_.size());
        for (std::size_t i = 0; i < count; ++i) {
            rows_->AddNew();
            Row row(types_.size());
            const auto number = static_cast<int>(i);
            const auto value = types_[0] == FieldType::Date ? Value(Date{number + 0.5}) : Value(number);
            rows_->Fields(0).SetValue(value);
            row[0] = *fitTo(types_[0], value);
            promised(static_cast<bool>(rows_->Update()), "a row is added");
            model_.push_back(row);
        }
    }

    /// Goes to a row of the model.
    std::optional<std::size_t> choose()
    {
        if (model_.empty()) return std::nullopt;
        const auto chosen = input_.below(model_.size());
        promised(static_cast<bool>(rows_->MoveFirst()), "the first row can be read");
        for (std::size_t i = 0; i < chosen; ++i)
            promised(static_cast<bool>(rows_->MoveNext()), "the next row can be read");
        return chosen;
    }

    void change()
    {
        const auto chosen = choose();
        if (!chosen) return;
        rows_->Edit();
        const auto row = setSome(model_[*chosen]);
        const bool done = static_cast<bool>(rows_->Update());
        promised(done == row.has_value(), "a row is changed when its values fit");
        if (row) model_[*chosen] = *row;
    }

    void remove()
    {
        const auto chosen = choose();
        if (!chosen) return promised(!rows_->Delete(), "nothing can be deleted from nothing");
        promised(static_cast<bool>(rows_->Delete()), "a row is deleted");
        model_.erase(model_.begin() + static_cast<std::ptrdiff_t>(*chosen));
    }

    /// A second recordset, in an order: the same rows, none before one that is smaller.
    void order()
    {
        const auto column = input_.below(types_.size());
        const bool down = input_.byte() % 2 == 1;
        auto sorted = database_->OpenRecordset("select * from model order by c" + std::to_string(column) +
                                               (down ? " desc" : ""));
        promised(sorted && sorted->RecordCount() == static_cast<int>(model_.size()),
                 "all rows, whatever the order");
        std::optional<double> before;
        while (!sorted->Eof()) {
            const auto value = sorted->Fields(static_cast<int>(column)).Value();
            const auto date = value.date();
            const auto number = date ? std::optional(date->serial) : value.number();
            if (before && number) promised(down ? *before >= *number : *before <= *number, "in order");
            if (number) before = number;
            promised(static_cast<bool>(sorted->MoveNext()), "the next row can be read");
        }
    }

    void addOnFullDisk()
    {
        disk_.bytesLeft = 0;
        rows_->AddNew();
        const bool done = static_cast<bool>(rows_->Update());
        if (done) model_.emplace_back(types_.size());
        disk_.bytesLeft = SIZE_MAX;
        wasFull_ = wasFull_ || !done;
        reopen();
    }

    /// The definition of the table: the last page of its kind, as nothing was made after it.
    std::size_t definition()
    {
        std::size_t found = 0;
        for (std::size_t page = 0; page < bytes().size(); page += kPageSize)
            if (get8(bytes(), page) == 2) found = page;
        return found;
    }

    /// Where the rows are, in the order in which they were written.
    std::vector<Place> places()
    {
        std::vector<Place> found;
        const auto owner = definition() / kPageSize;
        for (std::size_t page = 0; page < bytes().size(); page += kPageSize) {
            if (get8(bytes(), page) != 1 || get32(bytes(), page + 4) != owner) continue;
            for (std::size_t slot = 0; slot < get16(bytes(), page + 0x0C); ++slot)
                if (get16(bytes(), page + kSlots + 2 * slot) < 0x4000) found.push_back({page, slot});
        }
        promised(found.size() == model_.size(), "the rows are on the pages");
        return found;
    }

    void count(int change)
    {
        const auto at = definition() + kRowCountAt;
        put32(bytes(), at, get32(bytes(), at) + static_cast<std::uint32_t>(change));
    }

    /// Another program deletes a row: it flags the slot and leaves the bytes.
    void foreignRemove()
    {
        close();
        const auto rows = places();
        if (!rows.empty()) {
            const auto chosen = input_.below(rows.size());
            const auto at = rows[chosen].page + kSlots + 2 * rows[chosen].slot;
            put16(bytes(), at, get16(bytes(), at) | 0xC000);
            count(-1);
            model_.erase(model_.begin() + static_cast<std::ptrdiff_t>(chosen));
        }
        open();
    }

    /// Another program adds a copy of the last row, where its page has room.
    void foreignAdd()
    {
        close();
        const auto rows = places();
        if (!rows.empty() && copyRow(rows.back())) {
            count(1);
            model_.push_back(model_.back());
        }
        open();
    }

    bool copyRow(const Place& place)
    {
        const MutableBytes page(bytes().data() + place.page, kPageSize);
        const auto slots = get16(page, 0x0C);
        const auto offset = [&](std::size_t slot) {
            return std::size_t{get16(page, kSlots + 2 * slot)} & 0x1FFFU;
        };
        const auto end = place.slot == 0 ? kPageSize : offset(place.slot - 1);
        const auto length = end - offset(place.slot);
        const auto free = get16(page, 2);
        if (place.slot + 1 != slots || slots >= kMaxSlots || free < length + 2) return false;
        const auto lowest = offset(slots - 1U) - length;
        std::copy_n(page.begin() + static_cast<std::ptrdiff_t>(offset(place.slot)), length,
                    page.begin() + static_cast<std::ptrdiff_t>(lowest));
        put16(page, kSlots + std::size_t{2} * slots, static_cast<std::uint16_t>(lowest));
        put16(page, 0x0C, static_cast<std::uint16_t>(slots + 1));
        put16(page, 2, static_cast<std::uint16_t>(free - length - 2));
        return true;
    }

    void compare()
    {
        auto all = database_->OpenRecordset("model");
        promised(static_cast<bool>(all), "the table can be opened");
        promised(all->RecordCount() == static_cast<int>(model_.size()) &&
                     rows_->RecordCount() == all->RecordCount(),
                 "as many rows as were written");
        for (const auto& row : model_) {
            promised(!all->Eof(), "a row for each that was written");
            for (std::size_t i = 0; i < row.size(); ++i)
                promised(all->Fields(static_cast<int>(i)).Value() == row[i], "each value as it was written");
            promised(static_cast<bool>(all->MoveNext()), "the next row can be read");
        }
        promised(all->Eof(), "and no other row");
    }

    FuzzInput& input_;
    Disk disk_;
    MemoryFiles files_{disk_};
    std::vector<FieldType> types_;
    std::vector<Row> model_;
    std::optional<Database> database_;
    std::optional<Recordset> rows_;
    bool wasFull_ = false;
};

} // namespace
} // namespace quorvel::jet::testing

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    quorvel::test::FuzzInput input(data, size);
    quorvel::jet::testing::Machine(input).run();
    return 0;
}
