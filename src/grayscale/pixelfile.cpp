#include "grayscale/pixelfile.h"

#include "jet/database.h"
#include "jet/replaceable.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QSaveFile>
#include <QTemporaryFile>

#include <system_error>

namespace quorvel::grayscale {

namespace {

constexpr auto kTable = "data";
constexpr auto kNumber = "sn";
constexpr auto kValue = "hd";

QString cannotBeWritten(const QString& path, const QString& why)
{
    return QCoreApplication::translate("PixelFile", "The file %1 cannot be written: %2.").arg(path, why);
}

/// A link stays one: what it points to is replaced.
QString targetOf(const QString& path)
{
    const QFileInfo there(path);
    return there.exists() ? there.canonicalFilePath() : path;
}

QString saveCsv(const QString& path, const PixelArray& array)
{
    QSaveFile file(targetOf(path));
    if (!file.open(QIODevice::WriteOnly)) return cannotBeWritten(path, file.errorString());
    file.write(QByteArray(kNumber) + ',' + kValue + '\n');
    for (int pixel = 1; pixel <= array.count(); ++pixel) {
        file.write(QByteArray::number(pixel) + ',' + QByteArray::number(array[pixel]) + '\n');
    }
    return file.commit() ? QString() : cannotBeWritten(path, file.errorString());
}

jet::Status addRows(jet::Database& database, const PixelArray& array)
{
    auto rows = database.OpenRecordset("select * from data order by sn");
    if (!rows) return rows.failure();
    for (int pixel = 1; pixel <= array.count(); ++pixel) {
        rows->AddNew();
        rows->Fields(kNumber).SetValue(static_cast<std::int16_t>(pixel));
        rows->Fields(kValue).SetValue(array[pixel]);
        if (auto done = rows->Update(); !done) return done;
    }
    return {};
}

jet::Status makeDatabase(const std::filesystem::path& path, const PixelArray& array)
{
    auto made = jet::CreateDatabase(path, jet::kGeneralLocale);
    if (!made) return made.failure();
    auto table = jet::Database::CreateTableDef(kTable);
    table.Append(jet::TableDef::CreateField(kNumber, jet::FieldType::Integer));
    table.Append(jet::TableDef::CreateField(kValue, jet::FieldType::Integer));
    if (auto done = made->Append(table); !done) return done;
    if (auto done = addRows(*made, array); !done) return done;
    return made->Close();
}

/// A name in the same folder that is free.
QString freeName(const QString& path)
{
    QString name = path + QStringLiteral(".new");
    for (int i = 2; QFileInfo::exists(name); ++i) {
        name = path + QStringLiteral(".new%1").arg(i);
    }
    return name;
}

/// The reason for `path`, the name that was chosen, whatever file it was about.
QString reasonOf(const jet::Status& done, const QString& file, const QString& path)
{
    return done ? QString() : QString::fromStdString(done.error()).replace(file, path);
}

QString saveDatabase(const QString& path, const PixelArray& array)
{
    const QFileInfo target(targetOf(path));
    const auto name = target.exists() ? freeName(target.filePath()) : path;
    const auto file = QFileInfo(name).filesystemFilePath();
    if (const auto done = makeDatabase(file, array); !done) return reasonOf(done, name, path);
    if (name == path) return {};
    std::error_code error;
    std::filesystem::rename(file, target.filesystemFilePath(), error);
    if (!error) return {};
    std::error_code ignored;
    std::filesystem::remove(file, ignored);
    return cannotBeWritten(path, QString::fromStdString(error.message()));
}

bool isCsvName(const QString& path) { return path.endsWith(QLatin1String(".csv"), Qt::CaseInsensitive); }

} // namespace

QString whyNotWritable(const QString& path)
{
    const QFileInfo target(targetOf(path));
    const auto may = jet::replaceable(target.filesystemFilePath());
    if (!may) return reasonOf(may, target.filePath(), path);
    if (target.exists() && !target.isWritable()) {
        return cannotBeWritten(path, QCoreApplication::translate("PixelFile", "it is write-protected"));
    }
    QTemporaryFile trial(target.filePath() + QStringLiteral(".XXXXXX"));
    return trial.open() ? QString() : cannotBeWritten(path, trial.errorString());
}

QString savePixels(const QString& path, const PixelArray& array)
{
    if (auto reason = whyNotWritable(path); !reason.isEmpty()) return reason;
    return isCsvName(path) ? saveCsv(path, array) : saveDatabase(path, array);
}

} // namespace quorvel::grayscale
