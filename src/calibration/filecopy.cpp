#include "calibration/filecopy.h"

#include "jet/replaceable.h"

#include <QFile>
#include <QSaveFile>

namespace quorvel::calibration {

namespace {

constexpr qint64 kPiece = 1 << 16; // bytes

jet::Failure failed(const std::filesystem::path& path, const char* what, const QString& why)
{
    return {inWords(path) + " " + what + ": " + why.toStdString() + "."};
}

bool copyBytes(QFile& source, QSaveFile& target)
{
    while (!source.atEnd()) {
        const auto piece = source.read(kPiece);
        if (piece.isEmpty() || target.write(piece) != piece.size()) return false;
    }
    return source.error() == QFileDevice::NoError;
}

} // namespace

bool isThere(const std::filesystem::path& path)
{
    std::error_code error;
    return std::filesystem::exists(std::filesystem::symlink_status(path, error));
}

jet::Status copyWhole(const std::filesystem::path& from, const std::filesystem::path& to)
{
    if (auto may = jet::replaceable(to); !may) return may;
    QFile source(from);
    if (!source.open(QIODevice::ReadOnly)) return failed(from, "could not be read", source.errorString());
    QSaveFile target(QFile(to).fileName());
    if (!target.open(QIODevice::WriteOnly)) return failed(to, "could not be written", target.errorString());
    if (!copyBytes(source, target)) {
        const bool unread = source.error() != QFileDevice::NoError;
        return unread ? failed(from, "could not be read", source.errorString())
                      : failed(to, "could not be written", target.errorString());
    }
    if (!target.commit()) return failed(to, "could not be written", target.errorString());
    return {};
}

jet::Result<std::filesystem::path> keepAside(const std::filesystem::path& path, const std::string& mark)
{
    auto aside = path;
    int number = 0;
    do {
        const auto count = ++number == 1 ? std::string() : "-" + std::to_string(number);
        aside.replace_filename(path.stem().concat("." + mark + count).concat(path.extension().native()));
    } while (isThere(aside));
    std::error_code error;
    std::filesystem::create_hard_link(path, aside, error);
    // Not every file system knows second names.
    if (error) {
        if (const auto copied = copyWhole(path, aside); !copied) return copied.failure();
    }
    return aside;
}

std::string inWords(const std::filesystem::path& path) { return QFile(path).fileName().toStdString(); }

} // namespace quorvel::calibration
