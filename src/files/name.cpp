#include "files/name.h"

#include <array>
#include <system_error>

namespace quorvel::files {

namespace {

namespace fs = std::filesystem;

constexpr int kMostLinks = 40; // as many as Linux follows

} // namespace

std::string inWords(const fs::path& path)
{
    const auto text = path.u8string();
    return {text.begin(), text.end()};
}

bool isThere(const fs::path& path)
{
    std::error_code error;
    return fs::exists(fs::symlink_status(path, error));
}

Result<fs::path> targetOf(const fs::path& path)
{
    fs::path target = path;
    for (int links = 0; links <= kMostLinks; ++links) {
        std::error_code error;
        const auto next = fs::read_symlink(target, error);
        if (error) return target;
        // A relative link counts from its own folder; operator/ lets an absolute one stand alone.
        target = target.parent_path() / next;
    }
    return Failure{inWords(path) + " is a link that leads in a circle. Delete it or choose another name."};
}

fs::path unfinished(fs::path path)
{
    path += ".part";
    return path;
}

fs::path freeName(const fs::path& path, const std::string& mark)
{
    auto name = path;
    int number = 0;
    do {
        const auto count = ++number == 1 ? std::string() : "-" + std::to_string(number);
        name.replace_filename(path.stem().concat("." + mark + count).concat(path.extension().native()));
    } while (isThere(name) || isThere(unfinished(name)));
    return name;
}

std::string dateMark(std::time_t moment)
{
    const std::tm* const day = std::localtime(&moment); // NOLINT(concurrency-mt-unsafe)
    std::array<char, 32> text{};
    if (day == nullptr || std::strftime(text.data(), text.size(), "%Y-%m-%d", day) == 0) return "kept";
    return text.data();
}

} // namespace quorvel::files
