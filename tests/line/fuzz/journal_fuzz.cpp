#include "line/journal.h"
#include "support/fuzz_input.h"

#include <QBuffer>
#include <QJsonDocument>

#include <algorithm>

/// Takes any bytes for a journal, and goes on with it as a program does: no line gets lost uncounted, and a line of ours is
/// found after whatever was there.
namespace quorvel::line {
namespace {

using test::promised;

JournalLines linesOf(QByteArray bytes)
{
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::ReadOnly);
    return readJournal(buffer);
}

std::size_t countLines(const QByteArray& bytes)
{
    const auto ends = static_cast<std::size_t>(bytes.count('\n'));
    return bytes.isEmpty() || bytes.endsWith('\n') ? ends : ends + 1;
}

} // namespace
} // namespace quorvel::line

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    using namespace quorvel;
    auto bytes = QByteArray(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    const auto before = line::linesOf(bytes);
    test::promised(before.failure.isEmpty(), "bytes at hand are read");
    test::promised(before.lines.size() + before.unread.size() == line::countLines(bytes),
                   "each line is read or counted");
    if (!bytes.isEmpty() && !bytes.endsWith('\n')) bytes += '\n';
    for (const auto& line : before.lines)
        bytes += QJsonDocument(line).toJson(QJsonDocument::Compact) + '\n';
    const auto after = line::linesOf(bytes);
    test::promised(after.lines.size() == 2 * before.lines.size() && after.unread == before.unread,
                   "what is appended is read");
    test::promised(std::equal(before.lines.begin(), before.lines.end(),
                              after.lines.end() - static_cast<qsizetype>(before.lines.size())),
                   "as it was");
    return 0;
}
