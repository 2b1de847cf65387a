#include "settings/settime.h"

#include "link/bytes.h"
#include "protocol/readout_clock.h"
#include "ui_settime.h"

namespace quorvel {

using link::shown;
using namespace protocol;

SetTime::SetTime(const Workplace& workplace, QWidget* parent)
    : BusWindow(workplace, parent), ui_(std::make_unique<Ui::SetTime>())
{
    ui_->setupUi(this);
    addStatusLine();
    enterPresses(ui_->Text1, ui_->Command1);
    onClick(ui_->Command1, [this] { Command1_Click(); });
    connect(ui_->Command2, &QPushButton::clicked, this, &SetTime::reject);
    useAddressBox(*ui_->Text1);
}

SetTime::~SetTime() = default;

void SetTime::Command1_Click()
{
    const auto exchange = perform(clockQuery(addressDigits()));
    if (!answered(exchange)) return;
    if (!clockOf(exchange.reply)) addStatus(tr("The readout's clock shows no date and time."));
    if (!link::isAnswered(exchange)) explain(exchange);
    if (!messages_.ask(this, shown(clockQuestion(exchange.reply)))) return;
    clearStatus();
    // The time is taken when the operator has answered, not when the question was asked.
    if (answered(perform(clockSet(addressDigits(), module1_.clock().now())), kClockNotSet)) say(kClockSet);
}

} // namespace quorvel
