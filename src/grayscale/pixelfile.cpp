#include "grayscale/pixelfile.h"

#include "files/replace.h"
#include "jet/database.h"

#include <QFileInfo>

namespace quorvel::grayscale {

namespace {

constexpr auto kTable = "data";
constexpr auto kNumber = "sn";
constexpr auto kValue = "hd";

jet::Status saveCsv(const std::filesystem::path& path, const PixelArray& array)
{
    QByteArray table = QByteArray(kNumber) + ',' + kValue + '\n';
    for (int pixel = 1; pixel <= array.count(); ++pixel) {
        table += QByteArray::number(pixel) + ',' + QByteArray::number(array[pixel]) + '\n';
    }
    return files::replaceContent(path, {table.constData(), static_cast<std::size_t>(table.size())});
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

jet::Status saveDatabase(const std::filesystem::path& path, const PixelArray& array)
{
    const auto replaced = files::replaceFile(
        path, [&](const std::filesystem::path& fresh) { return makeDatabase(fresh, array); });
    return replaced ? jet::Status() : jet::Status(replaced.failure());
}

bool isCsvName(const QString& path) { return path.endsWith(QLatin1String(".csv"), Qt::CaseInsensitive); }

std::filesystem::path fileOf(const QString& path) { return QFileInfo(path).filesystemFilePath(); }

QString reasonOf(const jet::Status& done) { return done ? QString() : QString::fromStdString(done.error()); }

} // namespace

QString whyNotWritable(const QString& path) { return reasonOf(files::mayReplace(fileOf(path))); }

QString savePixels(const QString& path, const PixelArray& array)
{
    return reasonOf(isCsvName(path) ? saveCsv(fileOf(path), array) : saveDatabase(fileOf(path), array));
}

} // namespace quorvel::grayscale
