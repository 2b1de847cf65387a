#include "settings/form52.h"

#include "link/bytes.h"
#include "text/number.h"

#include <QLineEdit>

namespace quorvel {

using link::shown;
using namespace settings;

Form52::Form52(link::Bench& bench, link::Module1& module1, link::Gate& gate, Messages& messages,
               QWidget* parent)
    : DirectionDialog(bench, module1, gate, messages, parent)
{
    load(QStringLiteral("Form52"), QStringLiteral("Reference Setting"),
         QStringLiteral("Input the reference into the blank. The reading of readout will be the input "
                        "reference value."));
}

void Form52::queryDirection(std::size_t index, QLineEdit& box)
{
    const auto& row = kReferences[index];
    const auto run = queryReference(module1_, bench_, row,
                                    [&box](const std::string& offset) { box.setText(shown(offset)); });
    if (!run.complete) {
        failed(run);
        return;
    }
    if (!isSignedValue(run.offset)) {
        addStatus(
            tr("\"%1\" is no offset as readouts give it. Query again.").arg(shown(inOneLine(run.offset))));
    }
    warnIfNoNumber(run);
    messages_.showResult(this, shown(offsetText(row.direction, run.offset)),
                         shown(realValueText(row, run.realValue)));
}

void Form52::setDirection(std::size_t index, QLineEdit& box)
{
    const auto run =
        setReference(module1_, bench_, kReferences[index], text::Val(link::bytes(box.text())),
                     [this] { addStatus(tr("Waiting 2 seconds for the readout to settle ...")); });
    clearStatus();
    if (!run.offset.empty()) warnOfOffset(run);
    if (run.confirmed) {
        say(shown(referenceSetText(run)));
    } else {
        failed(run);
    }
}

void Form52::failed(const ReferenceRun& run)
{
    explain(run.last);
    if (run.zeroed) addStatus(kOffsetLost);
    say(run.complete ? kSetFailed : kCommError);
    if (!run.complete) enableFeatureQuery();
}

void Form52::warnOfOffset(const ReferenceRun& run)
{
    warnIfNoNumber(run);
    warnIfTooLong(run.offset);
}

void Form52::warnIfNoNumber(const ReferenceRun& run)
{
    if (!text::isNumber(run.reading)) addStatus(kCountedAsZero);
}

} // namespace quorvel
