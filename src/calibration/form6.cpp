#include "calibration/form6.h"

#include "link/bytes.h"
#include "protocol/stitching.h"
#include "ui_form6.h"

#include <QLineEdit>

namespace quorvel::calibration {

using namespace protocol;

Form6::Form6(const Workplace& workplace, QWidget* parent)
    : BusWindow(workplace, parent), ui_(std::make_unique<Ui::Form6>())
{
    ui_->setupUi(this);
    useStatusLine(*ui_->Status);
    onClick(ui_->Command1, [this] { Command1_Click(); });
    onClick(ui_->Command2, [this] { Command2_Click(); });
    onSignal(ui_->Text1, &QLineEdit::returnPressed, [this] { Command2_Click(); });
}

Form6::~Form6() = default;

void Form6::Command1_Click()
{
    const auto exchange = perform(locationQuery(addressDigits()));
    if (!answered(exchange)) return;
    if (!link::isAnswered(exchange)) explain(exchange);
    ui_->Text1->setText(link::shown(locationOf(exchange.reply)));
    say(kLocationIs + ui_->Text1->text());
}

void Form6::Command2_Click()
{
    const auto typed = ui_->Text1->text();
    if (!isLocation(link::bytes(typed))) return say(kLocationError);
    if (!link::canBeSent(typed)) {
        return say(
            tr("\"%1\" was not sent: it holds characters that the bus cannot carry. Type plain digits.")
                .arg(typed));
    }
    const auto exchange = perform(locationSet(addressDigits(), link::bytes(typed)));
    if (!answered(exchange)) return;
    if (link::isConfirmed(exchange)) return say(kLocationSet);
    addStatus(tr("The readout repeated something else. Query the location to see what it keeps."));
}

} // namespace quorvel::calibration
