#include "ctl/mdb_command.h"

#include "jet/database.h"

#include <cerrno>
#include <cmath>
#include <cstdio>
#include <iostream>
#include <memory>
#include <system_error>

namespace quorvel::ctl {

namespace {

struct MdbRequest {
    std::string file;
    std::string table;
    bool json = false;
};

std::string quoted(const std::string& text, bool json)
{
    std::string out = "\"";
    for (const char character : text) {
        const auto byte = static_cast<unsigned char>(character);
        if (!json) {
            out.append(character == '"' ? 2 : 1, character);
        } else if (character == '"' || character == '\\') {
            out += {'\\', character};
        } else if (byte < 0x20) {
            char escape[8];
            std::snprintf(std::begin(escape), std::size(escape), "\\u%04x", byte);
            out += std::begin(escape);
        } else {
            out += character;
        }
    }
    out += '"';
    return out;
}

std::string csvCell(const std::string& text)
{
    return text.find_first_of(",\"\r\n") == std::string::npos ? text : quoted(text, false);
}

/// Numbers and yes/no stand bare in JSON, all else as text; what JSON has no number for is null.
std::string jsonCell(const jet::Value& value)
{
    if (value.isNull()) return "null";
    const auto number = value.number();
    if (number) return std::isfinite(*number) ? value.text() : "null";
    return quoted(value.text(), true);
}

std::string jsonRow(jet::Recordset& rows)
{
    std::string line = "{";
    for (int i = 0; i < rows.FieldCount(); ++i) {
        const auto field = rows.Fields(i);
        if (i > 0) line += ", ";
        line.append(quoted(field.Name(), true)).append(": ").append(jsonCell(field.Value()));
    }
    line += '}';
    return line;
}

std::string csvRow(jet::Recordset& rows, bool names)
{
    std::string line;
    for (int i = 0; i < rows.FieldCount(); ++i) {
        const auto field = rows.Fields(i);
        if (i > 0) line += ',';
        line += csvCell(names ? field.Name() : field.Value().text());
    }
    return line;
}

/// Printed rows reach stdout in large pieces: a line at a time is slow through a pipe. Rows that cannot be read are
/// left out and counted. Ends early when the output cannot be written.
jet::Status printRows(jet::Recordset& rows, bool json)
{
    std::cout << (json ? "[" : csvRow(rows, true) + "\n");
    const char* between = "\n";
    int unread = 0;
    jet::Status last;
    for (auto read = rows.MoveFirst(); !rows.Eof() && std::cout; read = rows.MoveNext()) {
        if (!read) {
            ++unread;
            last = read;
        } else if (json) {
            std::cout << between << jsonRow(rows);
            between = ",\n";
        } else {
            std::cout << csvRow(rows, false) << '\n';
        }
    }
    if (json) std::cout << "\n]\n";
    if (unread == 0) return {};
    return jet::Failure{"Left out " + std::to_string(unread) + " of " + std::to_string(rows.RecordCount()) +
                        " rows: " + last.error()};
}

void printTables(const std::vector<jet::TableInfo>& tables, bool json)
{
    if (!json) std::cout << "table\n";
    const char* between = "\n";
    if (json) std::cout << "[";
    for (const auto& table : tables) {
        if (table.system) continue;
        if (json) {
            std::cout << between << quoted(table.name, true);
            between = ",\n";
        } else {
            std::cout << csvCell(table.name) << '\n';
        }
    }
    if (json) std::cout << "\n]\n";
}

/// Writes what is left of the output. @return why it could not be written, empty when it was.
std::string unwritten()
{
    // Of an output that failed earlier the reason is still the last error: nothing was read since.
    if (std::cout.flush()) return {};
    return "The output could not be written: " + std::generic_category().message(errno) + ".";
}

jet::Status answer(const MdbRequest& request)
{
    const std::u8string file(request.file.begin(), request.file.end());
    auto database = jet::OpenDatabase(std::filesystem::path(file), {.access = jet::Access::ReadOnly});
    if (!database) return database.failure();
    if (request.table.empty()) {
        const auto tables = database->Tables();
        if (!tables) return tables.failure();
        printTables(*tables, request.json);
        return {};
    }
    auto rows = database->OpenRecordset(request.table);
    if (!rows) return rows.failure();
    const auto printed = printRows(*rows, request.json);
    return printed ? rows->Complete() : printed;
}

} // namespace

void addMdbCommand(CLI::App& app, const std::function<void(const std::string& reason)>& fail)
{
    auto* const command =
        app.add_subcommand("mdb", "List the tables of an Access database file, or print one");
    const auto request = std::make_shared<MdbRequest>();
    command->add_option("FILE", request->file, "The database file (.mdb)")->required();
    command->add_option("TABLE", request->table, "The table to print; the list of tables when left out");
    command->add_flag("--json", request->json, "Print JSON instead of CSV");
    command->callback([request, fail] {
        const auto done = answer(*request);
        const auto lost = unwritten();
        if (done && lost.empty()) return;
        fail(lost.empty() ? done.error() : lost);
    });
}

} // namespace quorvel::ctl
