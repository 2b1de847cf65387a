#pragma once

#include "jet/fixture.h"

#include <functional>

/// Writes that came to the disk in parts, as at a power cut.
namespace quorvel::jet::testing {

inline constexpr std::size_t kSector = 512;

/// Where the sectors begin that differ; those behind the end of `from` are zero there.
inline std::vector<std::size_t> differingSectors(ByteVector from, const ByteVector& to)
{
    from.resize(to.size());
    std::vector<std::size_t> sectors;
    for (std::size_t at = 0; at < to.size(); at += kSector) {
        if (std::memcmp(from.data() + at, to.data() + at, kSector) != 0) sectors.push_back(at);
    }
    return sectors;
}

/// Looks at the file with every choice of the sectors in which two states of it differ.
inline void forEachTorn(const ByteVector& before, const ByteVector& after,
                        const std::function<void(Disk& torn, unsigned parts)>& look)
{
    const auto sectors = differingSectors(before, after);
    ASSERT_LE(sectors.size(), 10U);
    for (unsigned parts = 0; parts >> sectors.size() == 0; ++parts) {
        Disk torn;
        auto& bytes = torn.files[kPath.string()] = before;
        bytes.resize(after.size());
        for (std::size_t k = 0; k < sectors.size(); ++k) {
            if ((parts >> k & 1) == 0) continue;
            std::memcpy(bytes.data() + sectors[k], after.data() + sectors[k], kSector);
        }
        look(torn, parts);
    }
}

/// The file as it is now, as each flush leaves it while `change` is made to its table, and at the end.
inline std::vector<ByteVector> flushedStates(Disk disk, const std::function<void(Recordset&)>& change)
{
    auto& bytes = disk.files[kPath.string()];
    std::vector<ByteVector> states{bytes};
    MemoryFiles files(disk);
    auto opened = OpenDatabase(kPath, {.durability = Durability::EachUpdate, .files = &files});
    EXPECT_TRUE(opened) << opened.error();
    auto rows = opened->OpenRecordset("data");
    EXPECT_TRUE(rows) << rows.error();
    disk.atSync = [&] { states.push_back(bytes); };
    change(*rows);
    disk.atSync = nullptr;
    states.push_back(bytes);
    return states;
}

} // namespace quorvel::jet::testing
