#include "settings/form52.h"

#include "link/bytes.h"
#include "protocol/answer.h"
#include "text/number.h"

#include <QLineEdit>

namespace quorvel {

using link::shown;
using namespace protocol;

Form52::Form52(const Workplace& workplace, QWidget* parent) : DirectionDialog(workplace, parent)
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
    if (!run.complete) return failed(run);
    if (!run.offsetIsAnswer || !isSignedValue(run.offset)) {
        addStatus(tr("\"%1\" is not a valid offset. Query again.").arg(shown(inOneLine(run.offset))));
    }
    addStatus(shown(countedText(run)));
    messages_.showResult(this, shown(offsetText(row.offset, run.offset)),
                         shown(realValueText(row, run.realValue)));
}

void Form52::setDirection(std::size_t index, QLineEdit& box)
{
    const auto run =
        setReference(module1_, bench_, kReferences[index], text::Val(link::bytes(box.text())),
                     [this] { addStatus(tr("Waiting 2 seconds for the readout to settle ...")); });
    clearStatus();
    addStatus(shown(countedText(run)));
    warnIfTooLong(run.offset);
    if (!run.confirmed) return failed(run);
    say(shown(referenceSetText(run)));
}

void Form52::failed(const ReferenceRun& run)
{
    explain(run.last);
    addStatus(shown(lossText(run)));
    say(run.complete ? kSetFailed : kCommError);
    if (!run.complete) enableFeatureQuery();
}

} // namespace quorvel
