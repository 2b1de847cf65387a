#pragma once

#include <QDate>

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

/// Names that say what is in a file, since its table cannot.
namespace quorvel::autoread {

/// "readout-5-A-2024-05-17.mdb"
/// @param type  "A" ... "D".
std::string proposedName(int address, std::string_view type, const QDate& day);

/// The address in a name that begins like a proposed one; nothing for any other name.
std::optional<int> addressInName(const std::filesystem::path& path);

} // namespace quorvel::autoread
