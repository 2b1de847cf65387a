#include "link/bytes.h"

namespace quorvel::link {

QString shown(std::string_view bytes)
{
    return QString::fromLatin1(bytes.data(), static_cast<qsizetype>(bytes.size()));
}

std::string bytes(const QString& text) { return text.toLatin1().toStdString(); }

} // namespace quorvel::link
