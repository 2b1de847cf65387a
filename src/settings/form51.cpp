#include "settings/form51.h"

#include "link/bytes.h"
#include "protocol/answer.h"
#include "text/number.h"

#include <QLineEdit>

namespace quorvel {

using link::shown;
using namespace protocol;

Form51::Form51(const Workplace& workplace, QWidget* parent) : DirectionDialog(workplace, parent)
{
    load(QStringLiteral("Form51"), QStringLiteral("Offset Setting"),
         QStringLiteral("Input the offset into the blank. The reading of readout will be the summation of "
                        "the offset and the real place of wire."));
}

void Form51::queryDirection(std::size_t index, QLineEdit& box)
{
    const auto& row = kOffsets[index];
    const auto exchange = perform(offsetQuery(row, addressDigits()));
    if (!answered(exchange)) return enableFeatureQuery();
    const auto offset = offsetOf(row, exchange.reply);
    warnIfUnreliable(exchange, isSignedValue(offset));
    box.setText(shown(offset));
    messages_.showResult(this, shown(offsetText(row, offset)), QString());
}

void Form51::setDirection(std::size_t index, QLineEdit& box)
{
    const auto& row = kOffsets[index];
    const auto value = signedValue(row, text::Val(link::bytes(box.text())));
    warnIfTooLong(value);
    const auto exchange = perform(offsetSet(row, addressDigits(), value));
    if (!answered(exchange)) return enableFeatureQuery();
    report(exchange, kSetFailed);
}

} // namespace quorvel
