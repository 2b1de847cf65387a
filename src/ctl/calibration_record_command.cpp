#include "ctl/calibration_record_command.h"

#include "calibration/downloadnote.h"
#include "calibration/ownership.h"
#include "calibration/recordpage.h"
#include "ctl/command_line.h"
#include "ctl/commands.h"
#include "files/name.h"
#include "link/program_folder.h"

#include <QDateTime>
#include <QFileInfo>

namespace quorvel::ctl {

namespace {

using namespace calibration;

/// A remark on what became of the record; nothing when all is well.
void remark(Console& console, const files::Status& done)
{
    if (!done) console.tell(QString::fromStdString(done.error()));
}

void writeRecord(Console& console, const CalibrateOptions& options, const std::string& file)
{
    if (options.direction.empty())
        return console.fail(Failure::Usage, QStringLiteral("Name the direction: X, Y or Z."));
    if (options.direction.empty()) return console.fail(Failure::Usage, kWhichDirection);
    const auto name = QString::fromLocal8Bit(file.c_str());
    const auto path = QFileInfo(name).filesystemFilePath();
    if (!isRecordName(path)) {
        return console.fail(Failure::Usage,
                            QStringLiteral("\"%1\" does not end in .pdf, .html, .png or .json.").arg(name));
    }
    if (!console.mayMake(name)) return;
    RecordView view(link::programFolder(options.folder, link::executableFolder()),
                    *directionOf(QString::fromStdString(options.direction)));
    const auto loaded = view.load();
    if (!loaded) return console.fail(Failure::File, QString::fromStdString(loaded.error()));
    if (!view.recordTrouble().empty()) console.tell(QString::fromStdString(view.recordTrouble()));
    if (!files::isThere(view.workingFile()) && !files::isThere(view.recordFile())) {
        return console.fail(Failure::File,
                            QStringLiteral("There is nothing to record: %1 is missing.")
                                .arg(QString::fromStdString(files::inWords(view.workingFile()))));
    }
    const auto saved = saveRecord(view, path, QDateTime::currentDateTime());
    if (!saved) return console.fail(Failure::File, QString::fromStdString(saved.error()));
    console.answer(name, {{"direction", QString::fromStdString(options.direction)}, {"file", name}});
}

} // namespace

void addRecordCommand(CLI::App& calibrate, Console& console, const std::shared_ptr<CalibrateOptions>& options)
{
    const auto file = std::make_shared<std::string>();
    auto* command = addCommand(calibrate, kRecordCommand, "Write the calibration record as a page or as JSON",
                               "calibrate X record record.pdf");
    command->add_option("FILE", *file, "The file to write: .pdf, .html, .png or .json")->required();
    addForce(*command, console);
    command->callback([&console, options, file] { writeRecord(console, *options, *file); });
}

void noteReadings(Console& console, const WorkingFile& file, int point, const std::vector<double>& readings)
{
    RecordFile record(file.path, file.direction);
    remark(console,
           noteMeasured(record, point, {console.module1().clock().now(), console.address(), readings}));
}

bool mayDownload(Console& console, const WorkingFile& file, const Records& points)
{
    RecordFile record(file.path, file.direction);
    record.load();
    const auto others = whyNotTheirs(ownershipOf(record.data(), points, file.direction), console.address());
    if (!others.isEmpty() && !console.agrees(others + QStringLiteral(" Send them all the same?"))) {
        console.fail(Failure::Unsafe, others + QStringLiteral(" Nothing was sent."));
        return false;
    }
    const auto kept = keepDatedCopy(file.path);
    if (!kept) console.tell(QStringLiteral("No copy was kept: %1").arg(QString::fromStdString(kept.error())));
    return true;
}

void noteDownload(Console& console, const WorkingFile& file, const ReadingColumn& reading,
                  const link::Exchange& exchange)
{
    const auto note = noteOf(reading, console.address(), false, exchange);
    if (!note) return;
    RecordFile record(file.path, file.direction);
    remark(console, record.change([&](RecordData& data) { data.downloads.push_back(*note); }));
}

} // namespace quorvel::ctl
