#include "link/address.h"
#include "site/readinglines.h"
#include "site/sitefile.h"
#include "support/fuzz_input.h"

#include <QJsonDocument>
#include <QJsonObject>

#include <set>

/// Takes any bytes for a site file, and checks what the header promises of a site and of the reasons why there is none.
namespace quorvel::site {
namespace {

using test::promised;

void holdSite(const Site& site)
{
    std::set<int> addresses;
    for (const auto& readout : site.readouts) {
        promised(link::isAddress(readout.address), "an address that a readout can have");
        promised(addresses.insert(readout.address).second, "each address once");
        promised(site.readoutAt(readout.address) == &readout, "found by its address");
        const Reading silent{readout.address, {}, {}, "silent", {}};
        const Place place{site.name, readout};
        promised(csvRow(place, silent).count('\n') == 1, "a row is a line");
        promised(ndjsonLine(place, silent).count('\n') == 1, "an object is a line");
        promised(influxLine(place, silent).count('\n') == 1, "a point is a line");
    }
}

void holdSaved(const Site& site, const QByteArray& bytes)
{
    const auto saved = toJson(site);
    const auto again = parseSite(saved, QStringLiteral("again"));
    promised(static_cast<bool>(again), "what was saved is read");
    promised(toJson(*again) == saved, "and saved as it is");
    const auto before = QJsonDocument::fromJson(bytes).object();
    const auto after = QJsonDocument::fromJson(saved).object();
    for (auto key = before.begin(); key != before.end(); ++key)
        promised(after.contains(key.key()), "no key is lost");
}

void holdReasons(const std::string& reasons)
{
    const auto lines = QString::fromStdString(reasons).split(u'\n');
    promised(lines.size() <= kMostReasons, "not too many reasons");
    for (const auto& line : lines)
        promised(line.startsWith(QStringLiteral("any, line ")), "a reason names its line");
}

} // namespace
} // namespace quorvel::site

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    using namespace quorvel;
    using namespace quorvel::site;
    const auto bytes = QByteArray(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    const auto site = parseSite(bytes, QStringLiteral("any"));
    if (site) {
        holdSite(*site);
        holdSaved(*site, bytes);
    } else if (bytes.trimmed().isEmpty()) {
        test::promised(site.error() == "any is empty. Open another file.", "a reason names the file");
    } else {
        holdReasons(site.error());
    }
    return 0;
}
