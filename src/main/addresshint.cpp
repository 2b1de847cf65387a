#include "main/addresshint.h"

#include "link/address.h"
#include "link/bytes.h"
#include "text/number.h"

#include <QCoreApplication>

namespace quorvel {

namespace {

constexpr int kEveryReadout = 255;

QString tr(const char* text) { return QCoreApplication::translate("AddressHint", text); }

} // namespace

QString addressHint(const QString& text)
{
    const auto typed = link::bytes(text);
    if (link::addressIn(typed) > 0) return {};
    if (text.isEmpty())
        return tr("The address box is empty: no readout will answer. Addresses are 1 to 249.");
    const int reached = text::integerOf(link::HexToDec(link::AddressToHex(typed)));
    if (reached == kEveryReadout) {
        return tr("\"%1\" addresses every readout on the bus: what is set or deleted is set or deleted in "
                  "all of them. One readout has an address from 1 to 249.")
            .arg(text);
    }
    if (link::isAddress(reached))
        return tr("\"%1\" is sent as the address %2. Addresses are 1 to 249.").arg(text).arg(reached);
    return tr("No readout has the address \"%1\". Addresses are 1 to 249.").arg(text);
}

QString oneReadoutHint(const QString& text)
{
    return link::addressIn(link::bytes(text)) > 0 ? QString()
                                                  : tr("Type the address of one readout, 1 to 249.");
}

} // namespace quorvel
