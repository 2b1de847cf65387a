#include "house/house.h"

#include <algorithm>
#include <fstream>
#include <functional>
#include <optional>
#include <regex>
#include <stdexcept>

namespace quorvel::house {

namespace fs = std::filesystem;

namespace {

/// Headers that a folder must not include, by the beginning of their name.
struct Ban {
    std::set<std::string> folders;
    std::vector<std::string> headers;
    std::string reason;
};

const std::vector<Ban>& bans()
{
    static const std::vector<Ban> all{
        {{"text", "files", "jet"},
         {"Q", "CLI/", "termios.h", "sys/ioctl.h"},
         "knows no widget and no serial port"},
        {{"page"}, {"QWidget", "QApplication", "QDialog", "QMessageBox", "QtWidgets"}, "knows no widget"},
        {{"link"}, {"QMessageBox", "QFileDialog", "QInputDialog"}, "opens no box"},
        {{"protocol"},
         {"QWidget", "QApplication", "QDialog", "QLabel", "QLineEdit", "QMessageBox", "QtWidgets",
          "QSerialPort", "QIODevice"},
         "knows no widget and no port"},
        {{"chart", "settings", "autoread", "grayscale", "calibration", "site"},
         {"QMessageBox", "QFileDialog", "QInputDialog", "QSerialPort"},
         "asks for boxes and devices through what it is given"},
        {{"sim"}, {"QWidget", "QApplication", "QMessageBox"}, "is a program without windows"},
    };
    return all;
}

/// What the rooms above the database files may include of them.
const std::set<std::string>& publicOfJet()
{
    static const std::set<std::string> all{"jet/database.h", "jet/recordset.h", "jet/result.h",
                                           "jet/text_coding.h", "jet/value.h"};
    return all;
}

std::vector<std::string> linesOf(const fs::path& file)
{
    std::ifstream in(file);
    if (!in) throw std::runtime_error(file.string() + " cannot be read");
    std::vector<std::string> lines;
    for (std::string line; std::getline(in, line);) {
        lines.push_back(line);
    }
    return lines;
}

std::vector<fs::path> sourcesBelow(const fs::path& folder)
{
    std::vector<fs::path> found;
    if (!fs::is_directory(folder)) return found;
    for (auto at = fs::recursive_directory_iterator(folder); at != fs::recursive_directory_iterator(); ++at) {
        if (at->path().filename() == "node_modules") at.disable_recursion_pending();
        const auto kind = at->path().extension();
        if (at->is_regular_file() && (kind == ".cpp" || kind == ".h")) found.push_back(at->path());
    }
    std::sort(found.begin(), found.end());
    return found;
}

/// What is wrong with including `header` from `folder` of src/ (or from "sim"); nothing when all is well.
std::optional<std::string> fault(const std::string& folder, const std::string& header, bool quoted)
{
    for (const auto& ban : bans()) {
        const auto isBanned = [&](const std::string& begin) { return header.rfind(begin, 0) == 0; };
        if (!quoted && ban.folders.count(folder) > 0 &&
            std::any_of(ban.headers.begin(), ban.headers.end(), isBanned)) {
            return folder + " " + ban.reason;
        }
    }
    if (header.find("..") != std::string::npos) return "an include is written from src/, without \"..\"";
    const auto slash = header.find('/');
    const auto target = header.substr(0, slash);
    const bool ours = slash != std::string::npos && (arrows().count(target) > 0 || target == "sim");
    // without a folder: generated from a form or by moc, or another library's
    if (!ours) {
        return quoted && slash != std::string::npos ? std::optional("\"" + target + "\" is no folder of ours")
                                                    : std::nullopt;
    }
    if (target == folder) return std::nullopt;
    if (folder == "sim" || arrows().at(folder).count(target) == 0)
        return folder + " must not include " + target;
    if (target == "jet" && publicOfJet().count(header) == 0) return "\"" + header + "\" is for jet alone";
    return std::nullopt;
}

void readFile(const fs::path& file, const std::string& shown, const std::string& folder,
              std::vector<std::string>& found)
{
    static const std::regex kInclude(R"(^\s*#\s*include(_next)?\b\s*(.*)$)");
    static const std::regex kNamed(R"re(^([<"])([^>"]+)[>"].*$)re");
    int number = 0;
    for (const auto& line : linesOf(file)) {
        ++number;
        std::smatch include;
        if (!std::regex_match(line, include, kInclude)) continue;
        const auto rest = include[2].str();
        std::smatch named;
        const auto wrong = std::regex_match(rest, named, kNamed)
                               ? fault(folder, named[2].str(), named[1].str() == "\"")
                               : std::optional<std::string>("an include names its file");
        if (wrong) found.push_back(shown + ":" + std::to_string(number) + ": " + *wrong);
    }
}

} // namespace

const Arrows& arrows()
{
    static const Arrows all{
        {"text", {}},
        {"files", {}},
        {"page", {"files"}},
        {"jet", {"files"}},
        {"chart", {"files"}},
        {"link", {"text"}},
        {"protocol", {"link", "text", "jet"}},
        {"main", {"protocol", "link", "text", "files"}},
        {"settings", {"main", "protocol", "link", "text", "files"}},
        {"autoread", {"main", "protocol", "link", "text", "jet", "files"}},
        {"grayscale", {"chart", "main", "protocol", "link", "text", "jet", "files"}},
        {"calibration", {"chart", "main", "protocol", "page", "link", "text", "jet", "files"}},
        {"line", {"main", "protocol", "link", "text", "files"}},
        {"site", {"chart", "main", "protocol", "page", "link", "text", "files"}},
        {"ctl",
         {"site", "line", "autoread", "grayscale", "calibration", "chart", "protocol", "page", "link", "text",
          "jet", "files"}},
        {"app",
         {"site", "line", "settings", "autoread", "grayscale", "calibration", "chart", "main", "protocol",
          "page", "link", "text", "jet", "files"}},
    };
    return all;
}

bool onlyGoesDown(const Arrows& arrows)
{
    const std::function<bool(const std::string&, const std::string&, std::size_t)> leadsTo =
        [&](const std::string& from, const std::string& to, std::size_t steps) {
            const auto next = arrows.find(from);
            if (next == arrows.end() || steps == 0) return false;
            return std::any_of(next->second.begin(), next->second.end(), [&](const std::string& folder) {
                return folder == to || leadsTo(folder, to, steps - 1);
            });
        };
    return std::none_of(arrows.begin(), arrows.end(),
                        [&](const auto& row) { return leadsTo(row.first, row.first, arrows.size()); });
}

std::vector<std::string> wrongIncludes(const fs::path& root)
{
    std::vector<std::string> found;
    auto files = sourcesBelow(root / "src");
    const auto sim = sourcesBelow(root / "sim");
    files.insert(files.end(), sim.begin(), sim.end());
    if (files.empty()) found.push_back(root.string() + " holds no sources");
    for (const auto& file : files) {
        const auto shown = fs::relative(file, root);
        auto part = shown.begin();
        const auto folder = *part == "sim" ? std::string("sim") : (++part)->string();
        if (folder != "sim" && arrows().count(folder) == 0) {
            found.push_back(shown.string() + ":1: src/" + folder + " is not in the drawing");
            continue;
        }
        readFile(file, shown.generic_string(), folder, found);
    }
    return found;
}

std::vector<std::string> tooLong(const fs::path& root, int most)
{
    std::vector<std::string> found;
    for (const char* folder : {"src", "sim", "tests", "bench"}) {
        for (const auto& file : sourcesBelow(root / folder)) {
            const auto lines = linesOf(file).size();
            if (lines <= static_cast<std::size_t>(most)) continue;
            found.push_back(fs::relative(file, root).generic_string() + " has " + std::to_string(lines) +
                            " lines");
        }
    }
    return found;
}

std::vector<std::string> writers(const fs::path& root)
{
    static const std::regex opens(
        R"(\b(WriteOnly|NewOnly|QIODevice::ReadWrite|ofstream|fopen|QSaveFile|QSettings|)"
        R"(QTemporaryFile|O_CREAT|O_WRONLY|O_RDWR|CreateFileW)\b)");
    std::vector<std::string> found;
    for (const auto& file : sourcesBelow(root / "src")) {
        const auto lines = linesOf(file);
        if (std::any_of(lines.begin(), lines.end(),
                        [](const std::string& line) { return std::regex_search(line, opens); }))
            found.push_back(fs::relative(file, root / "src").generic_string());
    }
    return found;
}

} // namespace quorvel::house
