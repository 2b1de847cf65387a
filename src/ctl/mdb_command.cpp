#include "ctl/command_line.h"
#include "ctl/commands.h"
#include "jet/database.h"
#include "text/number.h"

#include <cmath>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

namespace quorvel::ctl {

namespace {

struct MdbRequest {
    std::string file;
    std::string table;
};

QString inUtf8(const std::string& text) { return QString::fromStdString(text); }

QString csvCell(const std::string& text)
{
    if (text.find_first_of(",\"\r\n") == std::string::npos) return inUtf8(text);
    return u'"' + inUtf8(text).replace(u'"', QStringLiteral("\"\"")) + u'"';
}

/// Numbers and yes/no as such, all else as text; what JSON has no number for is null.
QJsonValue jsonCell(const jet::Value& value)
{
    if (value.isNull()) return {};
    const auto text = value.text();
    const auto number = value.number();
    if (!number) return inUtf8(text);
    if (text == "true" || text == "false") return text == "true";
    // with the digits of its precision
    return std::isfinite(*number) ? QJsonValue(text::Val(text)) : QJsonValue();
}

QJsonObject jsonRow(jet::Recordset& rows)
{
    QJsonObject row;
    for (int i = 0; i < rows.FieldCount(); ++i) {
        row.insert(inUtf8(rows.Fields(i).Name()), jsonCell(rows.Fields(i).Value()));
    }
    return row;
}

QString csvRow(jet::Recordset& rows, bool names)
{
    QStringList cells;
    for (int i = 0; i < rows.FieldCount(); ++i) {
        cells << csvCell(names ? rows.Fields(i).Name() : rows.Fields(i).Value().text());
    }
    return cells.join(u',');
}

/// Rows that cannot be read are left out and counted. Ends early when the output cannot be written.
jet::Status printRows(Console& console, jet::Recordset& rows)
{
    if (!console.options.json) console.answer(csvRow(rows, true), {}, true);
    int unread = 0;
    jet::Status last;
    for (auto read = rows.MoveFirst(); !rows.Eof() && !console.endRequested(); read = rows.MoveNext()) {
        if (!read) {
            ++unread;
            last = read;
        } else if (console.options.json) {
            console.answer({}, jsonRow(rows), true);
        } else {
            console.answer(csvRow(rows, false), {}, true);
        }
    }
    if (unread == 0) return {};
    return jet::Failure{"Left out " + std::to_string(unread) + " of " + std::to_string(rows.RecordCount()) +
                        " rows: " + last.error()};
}

void printTables(Console& console, const std::vector<jet::TableInfo>& tables)
{
    if (!console.options.json) console.answer(QStringLiteral("table"), {}, true);
    for (const auto& table : tables) {
        if (!table.system) console.answer(csvCell(table.name), {{"table", inUtf8(table.name)}}, true);
    }
}

jet::Status printFile(Console& console, const MdbRequest& request)
{
    const std::u8string file(request.file.begin(), request.file.end());
    auto database = jet::OpenDatabase(std::filesystem::path(file), {.access = jet::Access::ReadOnly});
    if (!database) return database.failure();
    if (request.table.empty()) {
        const auto tables = database->Tables();
        if (!tables) return tables.failure();
        printTables(console, *tables);
        return {};
    }
    auto rows = database->OpenRecordset(request.table);
    if (!rows) return rows.failure();
    const auto printed = printRows(console, *rows);
    return printed ? rows->Complete() : printed;
}

} // namespace

void addMdbCommand(CLI::App& app, Console& console)
{
    auto* const command = addCommand(
        app, "mdb", "List the tables of an Access database file, or print one as CSV; never writes to it",
        "mdb readout-5.mdb data");
    const auto request = std::make_shared<MdbRequest>();
    command->add_option("FILE", request->file, "The database file (.mdb)")->required();
    command->add_option("TABLE", request->table, "The table to print; the list of tables when left out");
    command->callback([&console, request] {
        const auto done = printFile(console, *request);
        console.flush();
        if (!done) console.fail(Failure::File, inUtf8(done.error()));
    });
}

} // namespace quorvel::ctl
