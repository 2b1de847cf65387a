#pragma once

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QProcess>

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <sstream>
#include <string>
#include <vector>

namespace quorvel::test {

/// What a program prints that reads our files.
inline QByteArray printed(const QString& program, const QStringList& arguments)
{
    QProcess tool;
    tool.start(program, arguments);
    EXPECT_TRUE(tool.waitForFinished()) << qPrintable(program) << " does not run";
    EXPECT_EQ(tool.exitCode(), 0) << tool.readAllStandardError().constData();
    return tool.readAllStandardOutput();
}

/// What mdbtools makes of table `data`: a header row and one line for each row, times in ISO 8601.
inline std::string exported(const std::filesystem::path& path)
{
    return printed(QStringLiteral("mdb-export"),
                   {QStringLiteral("-Q"), QStringLiteral("-T"), QStringLiteral("%Y-%m-%dT%H:%M:%S"),
                    QString::fromStdString(path.string()), QStringLiteral("data")})
        .toStdString();
}

/// A text file as it is.
inline std::string contents(const std::filesystem::path& path)
{
    QFile file(path);
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << path;
    return file.readAll().toStdString();
}

inline std::vector<std::string> linesOf(const std::string& table)
{
    std::vector<std::string> lines;
    std::istringstream stream(table);
    for (std::string line; std::getline(stream, line);) {
        lines.push_back(line);
    }
    return lines;
}

/// Rows below the header row.
inline int rowsIn(const std::string& table)
{
    return static_cast<int>(std::count(table.begin(), table.end(), '\n')) - 1;
}

/// One row of a file, whoever read it.
struct Row {
    std::string time; ///< ISO 8601
    std::vector<float> readings;

    bool operator==(const Row&) const = default;
};

inline void PrintTo(const Row& row, std::ostream* stream)
{
    *stream << row.time;
    for (const float reading : row.readings) {
        *stream << ' ' << reading;
    }
}

/// The row that a record should give: its answer as it came from the bus, ":0524", index, time, readings.
inline Row rowOnTheBus(const std::string& reply, int readings)
{
    const auto pair = [&](std::size_t at) { return reply.substr(at, 2); };
    Row row{"20" + pair(9) + "-" + pair(11) + "-" + pair(13) + "T" + pair(15) + ":" + pair(17) + ":" +
                pair(19),
            {}};
    for (std::size_t i = 0; i < static_cast<std::size_t>(readings); ++i) {
        row.readings.push_back(std::stof(reply.substr(21 + 8 * i, 8)));
    }
    return row;
}

/// The rows of a database file as mdbtools reads them.
inline std::vector<Row> rowsOfMdbtools(const std::filesystem::path& path)
{
    std::vector<Row> rows;
    auto lines = linesOf(exported(path));
    if (!lines.empty()) lines.erase(lines.begin());
    for (const auto& line : lines) {
        std::istringstream cells(line);
        Row row;
        std::getline(cells, row.time, ',');
        for (std::string cell; std::getline(cells, cell, ',');) {
            row.readings.push_back(std::stof(cell));
        }
        rows.push_back(row);
    }
    return rows;
}

#ifdef QUORVEL_MDB_READER
/// The same rows as mdb-reader reads them.
inline std::vector<Row> rowsOfMdbReader(const std::filesystem::path& path)
{
    std::vector<Row> rows;
    auto lines =
        printed(QStringLiteral("node"), {QStringLiteral(QUORVEL_MDB_READER "/read.js"),
                                         QString::fromStdString(path.string()), QStringLiteral("data")})
            .trimmed()
            .split('\n');
    lines.removeFirst();
    for (const auto& line : lines) {
        const auto cells = QJsonDocument::fromJson(line).array();
        Row row{cells.at(0).toString().section(u'.', 0, 0).toStdString(), {}};
        for (qsizetype i = 1; i < cells.size(); ++i) {
            row.readings.push_back(static_cast<float>(cells.at(i).toDouble()));
        }
        rows.push_back(row);
    }
    return rows;
}
#endif

} // namespace quorvel::test
