#include "settings/form52.h"

#include "link/bytes.h"
#include "text/number.h"

#include <QLineEdit>

namespace quorvel {

using link::shown;
using namespace settings;

namespace {

constexpr auto kOffsetLost = "The former offset was overwritten with zero and is lost.";

} // namespace

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
    warnIfNoNumber(run);
    messages_.showResult(this, shown(offsetText(row.direction, run.offset)),
                         shown(realValueText(row, run.realValue)));
}

void Form52::setDirection(std::size_t index, QLineEdit& box)
{
    const auto run = setReference(module1_, bench_, kReferences[index], text::Val(link::bytes(box.text())),
                                  [this] { status(tr("Waiting 2 seconds for the readout to settle ...")); });
    status({});
    if (!run.complete) {
        failed(run);
        return;
    }
    if (run.confirmed) {
        warnIfNoNumber(run);
        warnIfTooLong(run.offset);
        say(shown(referenceSetText(run)));
        return;
    }
    explain(run.last);
    addStatus(kOffsetLost);
    say(kSetFailed);
}

void Form52::failed(const ReferenceRun& run)
{
    explain(run.last);
    if (run.zeroed) addStatus(kOffsetLost);
    say(kCommError);
    enableFeatureQuery();
}

void Form52::warnIfNoNumber(const ReferenceRun& run)
{
    if (!text::isNumber(run.reading)) status(tr("The readout gave no reading; it was counted as 0."));
}

} // namespace quorvel
