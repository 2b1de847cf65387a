#include "settings/form51.h"

#include "link/bytes.h"
#include "text/number.h"

#include <QLineEdit>

namespace quorvel {

using link::shown;
using namespace settings;

Form51::Form51(link::Bench& bench, link::Module1& module1, link::Gate& gate, Messages& messages,
               QWidget* parent)
    : DirectionDialog(bench, module1, gate, messages, parent)
{
    load(QStringLiteral("Form51"), QStringLiteral("Offset Setting"),
         QStringLiteral("Input the offset into the blank. The reading of readout will be the summation of "
                        "the offset and the real place of wire."));
}

void Form51::queryDirection(std::size_t index, QLineEdit& box)
{
    const auto& direction = kDirections[index];
    if (!perform(offsetQuery(direction, bench_.addressDigits()))) {
        enableFeatureQuery();
        return;
    }
    const auto offset = offsetOf(direction, module1_.ReplyText());
    box.setText(shown(offset));
    messages_.showResult(this, shown(offsetText(direction, offset)), QString());
}

void Form51::setDirection(std::size_t index, QLineEdit& box)
{
    const auto& direction = kDirections[index];
    const auto value = signedValue(direction, text::Val(link::bytes(box.text())));
    const auto exchange = offsetSet(direction, bench_.addressDigits(), value);
    warnIfTooLong(value);
    if (perform(exchange)) {
        report(exchange, kSetFailed);
    } else {
        enableFeatureQuery();
    }
}

} // namespace quorvel
