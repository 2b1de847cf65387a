#include "autoread/file_name.h"

#include "files/name.h"
#include "link/address.h"
#include "text/number.h"

namespace quorvel::autoread {

namespace {

constexpr std::string_view kBegin = "readout-";

} // namespace

std::string proposedName(int address, std::string_view type, const QDate& day)
{
    return std::string(kBegin) + text::general(address) + "-" + std::string(type) + "-" +
           day.toString(Qt::ISODate).toStdString() + ".mdb";
}

std::optional<int> addressInName(const std::filesystem::path& path)
{
    const auto name = files::inWords(path.filename());
    if (!name.starts_with(kBegin)) return std::nullopt;
    const auto digits = name.substr(kBegin.size(), name.find('-', kBegin.size()) - kBegin.size());
    if (!text::allDigits(digits) || !link::isAddress(text::integerOf(digits))) return std::nullopt;
    return text::integerOf(digits);
}

} // namespace quorvel::autoread
