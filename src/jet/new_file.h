#pragma once

#include "jet/bytes.h"
#include "jet/database.h"
#include "jet/definition.h"
#include "jet/header.h"

#include <vector>

namespace quorvel::jet {

/// The pages of a database file in the making: the header, the maps, the system tables with their indexes, and
/// the tables added so far, all without rows.
class NewFile {
public:
    /// @param stamp  the moment of creation, in the header and the catalog.
    explicit NewFile(Date stamp);

    /// Adds a table. Fails as Database::Append() does; the pages are then unchanged.
    Status append(const TableDef& table);

    const std::vector<Page>& pages() const { return pages_; }

private:
    struct ObjectRow {
        std::uint32_t id, parent;
        std::string_view name;
        std::uint16_t type;
        std::array<std::uint8_t, 2> owner;
        std::uint32_t flags;
    };
    struct RightRow {
        std::uint32_t object;
        std::array<std::uint8_t, 2> who;
        std::uint32_t mask;
        bool inheritable;
    };

    void layMaps();
    void listObjects();
    void listRights();
    Status checkNames(const TableDef& table) const;
    bool addObject(const ObjectRow& row);
    bool addRight(const RightRow& row);
    void addMaps();
    void setMapBit(std::uint32_t mapPage, int slot, std::uint32_t page, bool on);
    bool refreshSystemPages();

    Date stamp_;
    SecurityIds ids_;
    std::vector<Page> pages_;
    std::vector<std::string> names_;
    std::vector<ByteVector> parentNameKeys_, idKeys_, rightKeys_;
};

} // namespace quorvel::jet
