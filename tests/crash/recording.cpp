#include "crash/recording.h"

#include "crash/sunken_disk.h"
#include "support/program_run.h"

#include <QProcess>
#include <QProcessEnvironment>

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <set>
#include <sys/stat.h>

namespace quorvel::test {

namespace {

namespace fs = std::filesystem;

constexpr unsigned kSeed = 1;
constexpr int kPatience = 120'000; // ms

std::string contentOf(const fs::path& path)
{
    std::ifstream stream(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

std::uint64_t numberOf(const fs::path& path)
{
    struct stat about {};
    EXPECT_EQ(::stat(path.c_str(), &about), 0) << path;
    return about.st_ino;
}

/// A folder that is brought from one set of files to the next with few writes.
class Stage {
public:
    const fs::path& folder() const { return folder_; }

    /// What a check changed is written again.
    void show(const Files& files)
    {
        for (const auto& entry : fs::directory_iterator(folder_)) {
            const auto name = fs::relative(entry.path(), folder_).string();
            if (entry.is_directory() || !files.contains(name)) fs::remove_all(entry.path());
        }
        for (const auto& [name, content] : files) {
            const auto path = folder_ / name;
            if (contentOf(path) == content && fs::exists(path)) continue;
            fs::create_directories(path.parent_path());
            std::ofstream stream(path, std::ios::binary | std::ios::trunc);
            stream << content;
            EXPECT_TRUE(stream.flush().good()) << path;
        }
    }

private:
    QTemporaryDir made_;
    fs::path folder_ = fs::canonical(made_.path().toStdString());
};

} // namespace

Files filesIn(const fs::path& folder)
{
    Files files;
    for (const auto& entry : fs::recursive_directory_iterator(folder)) {
        if (entry.is_regular_file() && !entry.is_symlink())
            files[fs::relative(entry.path(), folder).string()] = contentOf(entry.path());
    }
    return files;
}

void Recording::take(const fs::path& folder)
{
    folder_ = fs::canonical(folder);
    before_ = filesIn(folder_);
    for (const auto& [name, content] : before_)
        namesBefore_[numberOf(folder_ / name)] = name;
}

Recording::Recording(const fs::path& folder, const std::function<void()>& work)
{
    take(folder);
    const auto log = logs_.filePath("log").toStdString();
    startRecorder(log.c_str(), folder_.c_str());
    work();
    stopRecorder();
    read(log);
}

Recording::Recording(const fs::path& folder, const QString& program, const QStringList& arguments,
                     const QString& input)
{
    take(folder);
    const auto log = logs_.filePath("log");
    QProcess process;
    auto environment = QProcessEnvironment::systemEnvironment();
    environment.insert("LD_PRELOAD", QUORVEL_RECORDER);
    environment.insert(kRecordLog, log);
    environment.insert(kRecordFolder, QString::fromStdString(folder_.string()));
    // the recorder comes before the sanitizer's library, which only looks at calls
    environment.insert("ASAN_OPTIONS", "verify_asan_link_order=0:detect_leaks=0");
    process.setProcessEnvironment(environment);
    process.setStandardInputFile(input.isEmpty() ? QProcess::nullDevice() : input);
    process.setProcessChannelMode(QProcess::MergedChannels);
    process.start(programPath(program), arguments);
    EXPECT_TRUE(process.waitForFinished(kPatience)) << qPrintable(process.errorString());
    status_ = process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
    EXPECT_EQ(status_, 0) << process.readAll().constData();
    read(log.toStdString());
}

void Recording::read(const fs::path& log)
{
    after_ = filesIn(folder_);
    std::ifstream stream(log, std::ios::binary);
    StepHead head;
    while (stream.read(reinterpret_cast<char*>(&head), sizeof head)) {
        Step step{head.deed, head.file, head.at, std::string(head.firstLength, '\0'),
                  std::string(head.secondLength, '\0')};
        stream.read(step.first.data(), head.firstLength);
        stream.read(step.second.data(), head.secondLength);
        ASSERT_TRUE(stream.good()) << "the log ends in a step";
        steps_.push_back(std::move(step));
    }
    ASSERT_FALSE(steps_.empty()) << "nothing was recorded";
    SunkenDisk disk(before_, namesBefore_, folder_.string());
    for (const auto& step : steps_)
        disk.apply(step);
    ASSERT_EQ(disk.now() == after_, true) << "the recorder has missed a call";
}

int Recording::forEachWreck(const std::function<void(const Wreck&)>& look) const
{
    SunkenDisk disk(before_, namesBefore_, folder_.string());
    Stage stage;
    Wreck wreck{stage.folder(), {}, {}, false, -1};
    std::set<std::pair<std::size_t, std::size_t>> seen;
    std::mt19937 chance(kSeed);
    const auto show = [&](const Files& files, bool killed) {
        if (::testing::Test::HasFailure()) return;
        std::size_t hash = killed ? 1 : 0;
        for (const auto& [name, content] : files)
            hash = hash * 31 + std::hash<std::string>()(name) * 17 + std::hash<std::string>()(content);
        if (!seen.emplace(hash, wreck.said.size()).second) return;
        wreck.files = files;
        wreck.killed = killed;
        ++wreck.number;
        stage.show(files);
        SCOPED_TRACE("wreck " + std::to_string(wreck.number) + (killed ? ", killed" : ", power cut") +
                     (wreck.said.empty() ? "" : ", after \"" + wreck.said.back() + "\""));
        look(wreck);
    };
    for (const auto& step : steps_) {
        // what may be missing until here includes what may be missing earlier
        if (step.deed == Deed::Flushed || step.deed == Deed::FolderFlushed)
            disk.forEachCut(chance, [&](const Files& files) { show(files, false); });
        disk.apply(step);
        if (step.deed == Deed::Said) wreck.said.push_back(step.first);
        show(disk.now(), true);
    }
    disk.forEachCut(chance, [&](const Files& files) { show(files, false); });
    return wreck.number + 1;
}

} // namespace quorvel::test
