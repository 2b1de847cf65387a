#include "protocol/command.h"

#include "text/reply.h"

#include <fstream>
#include <map>
#include <sstream>

#include <gmock/gmock.h>

namespace quorvel::protocol {
namespace {

using link::Kind;

/// A row of the table of commands in the page on the bus protocol.
struct PageRow {
    std::string kind;
    std::string fields;
    std::string lengths; ///< of the answer: "17", "41, with Z sensors 57", "2N + 13"
};

std::string trimmed(const std::string& text) { return std::string(text::trimBlanks(text)); }

/// The rows by their digits: a row of the page can stand for several commands.
std::map<std::string, PageRow> pageRows()
{
    std::ifstream page(QUORVEL_ROOT "/docs/bus-protocol.md");
    std::map<std::string, PageRow> rows;
    for (std::string line; std::getline(page, line);) {
        if (!line.starts_with("| `")) continue;
        std::vector<std::string> cells;
        std::istringstream text(line.substr(1));
        for (std::string cell; std::getline(text, cell, '|');) {
            cells.push_back(trimmed(cell));
        }
        if (cells.size() < 4) continue;
        for (std::size_t at = cells[0].find('`'); at != std::string::npos;) {
            const auto end = cells[0].find('`', at + 1);
            rows[cells[0].substr(at + 1, end - at - 1)] = {cells[1], cells[2], cells[3]};
            at = cells[0].find('`', end + 1);
        }
    }
    return rows;
}

const char* nameOf(Kind kind)
{
    switch (kind) {
    case Kind::Search:
        return "search";
    case Kind::Query:
        return "query";
    default:
        return "set";
    }
}

TEST(Command, TableAndPageNameTheSameCommands)
{
    std::vector<std::string> digits;
    for (const auto& row : commands()) {
        digits.emplace_back(row.digits);
    }
    std::vector<std::string> page;
    for (const auto& [key, row] : pageRows()) {
        page.push_back(key);
    }
    EXPECT_THAT(digits, ::testing::UnorderedElementsAreArray(page));
}

TEST(Command, KindAndLengthAreThoseOfThePage)
{
    const auto page = pageRows();
    for (const auto& row : commands()) {
        const auto& told = page.at(std::string(row.digits));
        EXPECT_TRUE(told.kind.starts_with(nameOf(row.kind))) << row.digits;
        if (row.kind == Kind::Search) continue;
        const auto length = std::to_string(row.reply.count);
        EXPECT_TRUE(told.lengths.starts_with(length) || told.lengths.ends_with("+ " + length))
            << row.digits << ": " << told.lengths;
    }
}

// The page writes a field as "6-13: offset", one that goes on to the end as "10 on: N pixels".
TEST(Command, FieldsStandWhereThePageSays)
{
    const auto page = pageRows();
    for (const auto& row : commands()) {
        // A row of its own, or "as" that of its set command; points, pixels and times are told in one piece there.
        auto told = page.at(std::string(row.digits)).fields;
        if (told.starts_with("as `")) told = page.at(told.substr(4, 2)).fields;
        for (const auto& part : row.fields) {
            const auto first = std::to_string(part.position);
            const auto last = std::to_string(part.position + part.length - 1);
            const bool found = told.find(first + "-" + last) != std::string::npos ||
                               told.find(first + " on:") != std::string::npos ||
                               told.find(first + "-") != std::string::npos ||
                               told.find("-" + last + ":") != std::string::npos;
            const bool inside = part.name == "B" || part.name == "C";
            EXPECT_TRUE(found || inside) << row.digits << ", " << part.name << ": " << told;
        }
    }
}

TEST(Command, FrameIsAddressDigitsParameterAndEnd)
{
    EXPECT_EQ(transaction(CommandId::QueryOffsetX, "F9").frame, ":F972FF\r\n");
    EXPECT_EQ(transaction(CommandId::SetOffsetZ, "01", "+1.50000").frame, ":017805+1.50000FF\r\n");
}

// Whoever only looks, and whoever writes down what was changed, goes by the kind.
TEST(Command, WhatChangesAReadoutIsASetOrADeletion)
{
    for (const auto& row : commands()) {
        const bool asks = row.name.starts_with("Read ") || row.name.starts_with("Count ") ||
                          row.name.starts_with("Fetch ") || row.name.starts_with("Search ");
        EXPECT_EQ(asks, row.kind == Kind::Query || row.kind == Kind::Search) << row.name;
        EXPECT_EQ(row.name.starts_with("Delete "), row.kind == Kind::Delete) << row.name;
    }
}

TEST(Command, FieldOfAShortReplyIsWhatThereIs)
{
    EXPECT_EQ(field(CommandId::QueryOffsetX, 0, ":0172+1.50000FF\r\n"), "+1.50000");
    EXPECT_EQ(field(CommandId::QueryOffsetX, 0, ":0172+1.5"), "+1.5");
    EXPECT_EQ(field(CommandId::QueryOffsetX, 0, ":01"), "");
    EXPECT_EQ(field(CommandId::GrayscaleX, 1, ":01650001FFFF\r\n"), "FFFF\r\n");
}

} // namespace
} // namespace quorvel::protocol
