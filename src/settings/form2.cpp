#include "settings/form2.h"

#include "link/bytes.h"
#include "protocol/change_address.h"
#include "text/number.h"
#include "ui_form2.h"

namespace quorvel {

using link::bytes;
using namespace protocol;

Form2::Form2(const Workplace& workplace, QWidget* parent)
    : BusWindow(workplace, parent), ui_(std::make_unique<Ui::Form2>())
{
    ui_->setupUi(this);
    addStatusLine();
    enterPresses(ui_->Text1, ui_->Command1);
    enterPresses(ui_->Text2, ui_->Command1);
    onClick(ui_->Command1, [this] { Command1_Click(); });
    connect(ui_->Command2, &QPushButton::clicked, this, &Form2::reject);
    Form_Load();
}

Form2::~Form2() = default;

void Form2::Form_Load() { ui_->Text1->setText(bench_.currentAddress); }

void Form2::Command1_Click()
{
    const int oldAddress = text::integerOf(bytes(ui_->Text1->text()));
    const int newAddress = text::integerOf(bytes(ui_->Text2->text()));
    if (const auto* error = addressChangeError(oldAddress, newAddress)) {
        say(error);
        return;
    }
    const auto exchange = perform(addressChange(oldAddress, newAddress));
    if (!link::confirms(exchange.transaction, exchange.reply)) {
        explain(exchange);
        say(kAddressNotChanged);
        return;
    }
    if (oldAddress == text::integerOf(bytes(bench_.currentAddress))) {
        addStatus(
            tr("The main window still addresses readout %1. Search again, or type the new address there.")
                .arg(oldAddress));
    }
    say(kAddressChanged);
}

} // namespace quorvel
