#include "calibration/form6.h"

#include "calibration/stitching.h"
#include "link/bytes.h"
#include "ui_form6.h"

namespace quorvel::calibration {

Form6::Form6(link::Bench& bench, link::Module1& module1, link::Gate& gate, Messages& messages,
             QWidget* parent)
    : QDialog(parent), ui_(std::make_unique<Ui::Form6>()), bench_(bench), module1_(module1), gate_(gate),
      messages_(messages)
{
    ui_->setupUi(this);
    gate_.guard(ui_->Command1, &QPushButton::clicked, this, &Form6::Command1_Click);
    gate_.guard(ui_->Command2, &QPushButton::clicked, this, &Form6::Command2_Click);
    gate_.guard(ui_->Text1, &QLineEdit::returnPressed, this, &Form6::Command2_Click);
    connect(&module1_.port(), &link::MSComm::lost, ui_->Status, &QLabel::setText);
}

Form6::~Form6() = default;

void Form6::reject()
{
    gate_.whenIdle(this, [this] { QDialog::reject(); });
}

void Form6::Command1_Click()
{
    ui_->Status->clear();
    if (!module1_.transact(locationQueryFrame(bench_.addressDigits()), kStitchingReplyLength)) {
        messages_.say(this, kCommError);
        return;
    }
    ui_->Text1->setText(link::shown(locationOf(module1_.ReplyText())));
    messages_.say(this, kLocationIs + ui_->Text1->text());
}

void Form6::Command2_Click()
{
    ui_->Status->clear();
    const auto typed = link::bytes(ui_->Text1->text());
    if (!isLocation(typed)) {
        messages_.say(this, kLocationError);
        return;
    }
    const auto frame = locationSetFrame(bench_.addressDigits(), typed);
    if (!module1_.transact(frame, kStitchingReplyLength)) {
        messages_.say(this, kCommError);
    } else if (locationTaken(frame, module1_.ReplyText())) {
        messages_.say(this, kLocationSet);
    } else {
        ui_->Status->setText(
            tr("The readout repeated something else. Query the location to see what it keeps."));
    }
}

} // namespace quorvel::calibration
