#include "settings/settime.h"

#include "link/address.h"
#include "link/bytes.h"
#include "settings/readout_clock.h"
#include "ui_settime.h"

namespace quorvel {

using link::shown;
using namespace settings;

SetTime::SetTime(link::Bench& bench, link::Module1& module1, link::Gate& gate, Messages& messages,
                 QWidget* parent)
    : SettingsDialog(bench, module1, gate, messages, parent), ui_(std::make_unique<Ui::SetTime>())
{
    ui_->setupUi(this);
    addStatusLine();
    enterPresses(ui_->Text1, ui_->Command1);
    onClick(ui_->Command1, [this] { Command1_Click(); });
    connect(ui_->Command2, &QPushButton::clicked, this, &SetTime::reject);
    Form_Load();
}

SetTime::~SetTime() = default;

void SetTime::Form_Load() { ui_->Text1->setText(bench_.currentAddress); }

void SetTime::Command1_Click()
{
    const auto address = link::AddressToHex(link::bytes(ui_->Text1->text()));
    if (!perform(clockQuery(address))) return;
    if (!clockOf(module1_.ReplyText())) addStatus(tr("The readout's clock shows no date and time."));
    if (!messages_.ask(this, shown(clockQuestion(module1_.ReplyText())))) return;
    clearStatus();
    // The time is taken when the operator has answered, not when the question was asked.
    if (perform(clockSet(address, module1_.clock().now()), kClockNotSet)) say(kClockSet);
}

} // namespace quorvel
