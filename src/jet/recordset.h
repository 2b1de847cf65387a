#pragma once

#include "jet/result.h"
#include "jet/value.h"

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

/// Rows of a table, one at a time.
namespace quorvel::jet {

class Recordset;
class RecordsetRows;

/// Ends the reason of Recordset::Update() when the disk failed at a moment at which it may have taken the new row.
inline constexpr auto kRowMayBeThere = "One more row may be in the file: look before you add it again.";

/// Names one row of a recordset; good as long as the recordset is open and the row not deleted.
struct RowBookmark {
    std::uint32_t row = 0; ///< 0: no row
    friend bool operator==(const RowBookmark&, const RowBookmark&) = default;
};

/// One field of the current row. Short-lived: use it at once, as in `rows.Fields("x").Value()`.
class Field {
public:
    /// False when the recordset has no field of that name or position.
    bool Exists() const { return column_ >= 0; }

    /// The name as the table has it; "" when the field does not exist.
    const std::string& Name() const;
    FieldType Type() const;

    /// The value: during AddNew() and Edit() the one being written, else that of the current row. Null when there
    /// is no current row or no such field.
    const jet::Value& Value() const;

    /// Sets the value for the next Update(). Numbers are converted to the field's type: whole-number fields round
    /// halves to the even neighbour, Single takes the nearest. What cannot be done (no such field, no AddNew() or
    /// Edit() begun, a number out of range or not finite, a text) is kept and reported by Update().
    void SetValue(const jet::Value& value);

private:
    friend class Recordset;
    Field(RecordsetRows* rows, int column) : rows_(rows), column_(column) {}

    RecordsetRows* rows_;
    int column_;
};

/// The rows of one table as they were when the recordset was opened, in the order asked for, plus the rows added
/// through it, which come last. Each Move reads the row it reaches.
class Recordset {
public:
    Recordset(Recordset&&) noexcept;
    Recordset& operator=(Recordset&&) noexcept;
    ~Recordset();

    /// True when the position is past the last row; always for an empty recordset.
    bool Eof() const;

    /// Moves to the first or last row; on an empty recordset Eof() stays true and nothing fails.
    /// Fails when the row cannot be read; the position is then on that row, with all fields Null.
    Status MoveFirst();
    Status MoveLast();

    /// Moves to the next row. Past the last one Eof() turns true; at Eof() nothing happens.
    /// Fails like MoveFirst().
    Status MoveNext();

    /// Number of rows, those added through this recordset included and those deleted through it not.
    int RecordCount() const;

    /// Success when the recordset had all rows of its table as it was opened. Fails when the table counts more rows
    /// than were found: pages are damaged, and what is shown is not the whole.
    Status Complete() const;

    /// Fields by name (case does not matter) or by position, counted from 0.
    Field Fields(std::string_view name);
    Field Fields(int position);
    int FieldCount() const;

    /// Why rows of this table cannot be written; success when they can.
    Status Updatable() const;

    /// Begins a new row, every field Null (yes/no fields false). The current row stays where it is.
    void AddNew();

    /// Begins a change of the current row.
    void Edit();

    /// Writes the row that AddNew() or Edit() began. When it returns true the row is in the file, whatever happens
    /// to this program; with Durability::EachUpdate it is on the disk. After AddNew() the current row is the one
    /// from before; SetBookmark(LastModified()) goes to the new one.
    ///
    /// Fails when nothing was begun, when a value could not be set, when the table cannot be written (Updatable()),
    /// and when the disk is full or gone: the file then keeps its earlier rows. What was begun is dropped. A disk that
    /// fails while it is flushed may have taken the row: the reason then says so.
    Status Update();

    /// Deletes the current row. There is no current row then (all fields Null) until the next Move; MoveNext() goes
    /// to the row after the deleted one. Fails when there is no current row, and like Update().
    Status Delete();

    /// The row that Update() wrote last; {0} when there is none.
    RowBookmark LastModified() const;

    /// The current row; {0} when there is none.
    RowBookmark Bookmark() const;

    /// Moves to a row. Fails when the recordset has no such row, and like MoveFirst().
    Status SetBookmark(RowBookmark bookmark);

    /// Ends the recordset; it is empty then. What AddNew() or Edit() began is dropped.
    void Close();

private:
    friend class Database;
    explicit Recordset(std::unique_ptr<RecordsetRows> rows);

    std::unique_ptr<RecordsetRows> rows_;
};

} // namespace quorvel::jet
