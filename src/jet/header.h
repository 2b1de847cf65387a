#pragma once

#include "jet/bytes.h"
#include "jet/file.h"
#include "jet/layout.h"
#include "jet/result.h"
#include "jet/value.h"

#include <cstdint>

/// Page 0 of a database file.
///
///     000  00 01 00 00  "Standard Jet DB" 0           09C  "4.0" 0
///     014  u32 version: 0 Jet 3, 1 Jet 4              E00  256 commit words
///     018..097 masked: map pointers, pages of the system tables, code page, encoding key, password,
///              build, sort order, creation stamp
namespace quorvel::jet {

/// What the rest of the module needs to know of page 0.
struct Header {
    const Layout* layout = &kJet4;
    std::uint32_t freeMap = 0;  ///< row pointer of the map of free pages
    std::uint16_t codePage = 0; ///< of text in Jet 3 files
};

/// Reads page 0. Fails with the reason when the file is no database, or one that is encoded, protected by a
/// password, cut off, or of a version that is not read.
///
/// @param start     the first bytes of the file, at least kHeaderBytes when the file is that long.
/// @param fileSize  in bytes.
Result<Header> readHeader(Bytes start, std::uint64_t fileSize);
inline constexpr std::size_t kHeaderBytes = 160;

/// Fails unless a file is empty or begins as a database does: what a killed program leaves of one that it was making.
///
/// @param path  its path; the reason tells its name.
Status expectLeftOver(File& file, const std::filesystem::path& path);

/// Page 0 of a new Jet 4 file, with the masked bytes masked.
Page newHeader(Date stamp);

/// The two-byte ids that the catalog carries as owners, as they must be stored in a file created at `stamp`.
struct SecurityIds {
    std::array<std::uint8_t, 2> admin, users, engine, creator;
};
SecurityIds securityIds(Date stamp);

/// The first `count` bytes of the RC4 key stream of a little-endian 4-byte key.
ByteVector rc4Stream(std::uint32_t key, std::size_t count);

/// The key that the security ids of a file are stored under. `header` is page 0 without its mask.
std::uint32_t securityKey(Bytes header);

/// Puts the mask on page 0, or takes it off.
void maskHeader(MutableBytes page, const Layout& layout);

} // namespace quorvel::jet
