#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quorvel::jet {

/// "select * from T order by F desc, G": the one kind of query that recordsets are opened with.
struct Query {
    struct Order {
        std::string field;
        bool descending = false;
    };

    std::string table;
    std::vector<Order> order;
};

/// @return nothing when the text is no such query. Keywords in any case; names may stand in brackets.
std::optional<Query> parseQuery(std::string_view text);

/// A table name as callers may give it: blanks around it and brackets taken off.
std::string_view bareName(std::string_view text);

} // namespace quorvel::jet
