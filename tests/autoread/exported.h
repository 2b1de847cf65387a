#pragma once

#include <QProcess>

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <string>

namespace quorvel::test {

/// What mdbtools makes of table `data`: a header row and one line for each row, times in ISO 8601.
inline std::string exported(const std::filesystem::path& path)
{
    QProcess tool;
    tool.start(QStringLiteral("mdb-export"),
               {QStringLiteral("-Q"), QStringLiteral("-T"), QStringLiteral("%Y-%m-%dT%H:%M:%S"),
                QString::fromStdString(path.string()), QStringLiteral("data")});
    EXPECT_TRUE(tool.waitForFinished()) << "mdb-export of mdbtools does not run";
    EXPECT_EQ(tool.exitCode(), 0) << tool.readAllStandardError().constData();
    return tool.readAllStandardOutput().toStdString();
}

/// Rows below the header row.
inline int rowsIn(const std::string& table)
{
    return static_cast<int>(std::count(table.begin(), table.end(), '\n')) - 1;
}

} // namespace quorvel::test
