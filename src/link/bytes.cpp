#include "link/bytes.h"

#include <algorithm>

namespace quorvel::link {

QString shown(std::string_view bytes)
{
    return QString::fromLatin1(bytes.data(), static_cast<qsizetype>(bytes.size()));
}

bool canBeSent(const QString& text)
{
    constexpr char16_t kLastByte = 0xFF;
    return std::all_of(text.begin(), text.end(),
                       [](QChar character) { return character.unicode() <= kLastByte; });
}

std::string bytes(const QString& text) { return text.toLatin1().toStdString(); }

} // namespace quorvel::link
