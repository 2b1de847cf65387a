#pragma once

#include "crash/recorder.h"

#include <QTemporaryDir>

#include <filesystem>
#include <functional>
#include <map>
#include <string>
#include <vector>

/// What a program did to the files of a folder, and everything that a crash may leave of it.
///
/// A program that is killed leaves all that it wrote. A machine whose power fails leaves what was flushed, and of the
/// rest since the last flush of the file any choice of its 512-byte sectors, in any order, zeros where none came, the
/// size before or after. Names change one by one and whole, but any choice of the changes since the last flush of
/// their folder may be missing: a file may have its name before its bytes, and the other way round.
namespace quorvel::test {

/// The names below a folder, with what is in these files.
using Files = std::map<std::string, std::string>;

struct Step {
    Deed deed = Deed::Said;
    std::uint64_t file = 0;
    std::int64_t at = 0;
    std::string first;
    std::string second;
};

/// A folder as a crash left it.
struct Wreck {
    std::filesystem::path folder; ///< holds these files; a check may change it
    Files files;
    std::vector<std::string> said; ///< what had been shown by then, in order
    bool killed = false;           ///< the program was; the machine went on
    int number = 0;                ///< counts the wrecks of a recording, from 0

    bool has(const std::string& name) const { return files.contains(name); }
    /// True for one in `every`: for checks that take long.
    bool sampled(int every) const { return number % every == 0; }
};

class Recording {
public:
    /// Records what happens to the files below the folder while `work` runs in this program.
    /// @param folder  must stay until the recording has been made.
    Recording(const std::filesystem::path& folder, const std::function<void()>& work);

    /// Records a program of the build.
    Recording(const std::filesystem::path& folder, const QString& program, const QStringList& arguments,
              const QString& input = {});

    const Files& before() const { return before_; }
    const Files& after() const { return after_; }
    int status() const { return status_; } ///< exit status of the program

    /// Looks at each different wreck. When one is more than `mostWhole` choices, some are taken by chance, after those
    /// that have all, nothing, all but one and only one.
    /// @return how many there were.
    int forEachWreck(const std::function<void(const Wreck&)>& look) const;

private:
    void take(const std::filesystem::path& folder);
    void read(const std::filesystem::path& log);

    Files before_;
    Files after_;
    std::map<std::uint64_t, std::string> namesBefore_; ///< of the files by their numbers
    std::vector<Step> steps_;
    std::filesystem::path folder_;
    QTemporaryDir logs_;
    int status_ = 0;
};

/// The files below a folder.
Files filesIn(const std::filesystem::path& folder);

} // namespace quorvel::test
