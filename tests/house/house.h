#pragma once

#include <filesystem>
#include <map>
#include <set>
#include <string>
#include <vector>

/// The rules of the house, as docs/architecture.md draws them, and a reader of sources that finds what breaks
/// them.
namespace quorvel::house {

/// For each folder of src/ the other folders that it may include.
using Arrows = std::map<std::string, std::set<std::string>>;
const Arrows& arrows();

/// True when following the arrows from a folder never leads back to it.
bool onlyGoesDown(const Arrows& arrows);

/// Every `#include` below `root`/src and `root`/sim that goes against the arrows, one line each ("file:line:
/// what is wrong"), in the order of the files. A folder of src/ that has no arrows of its own is named too, and
/// so is a tree without sources. A file that cannot be read throws std::runtime_error.
std::vector<std::string> wrongIncludes(const std::filesystem::path& root);

/// Every .cpp and .h below src, sim, tests and bench that has more than `most` lines.
std::vector<std::string> tooLong(const std::filesystem::path& root, int most = 400);

/// Every source below src that opens something for writing by itself.
std::vector<std::string> writers(const std::filesystem::path& root);

} // namespace quorvel::house
