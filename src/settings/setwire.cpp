#include "settings/setwire.h"

#include "link/address.h"
#include "link/bytes.h"
#include "settings/wire.h"
#include "ui_setwire.h"

namespace quorvel {

using link::bytes;
using link::shown;
using namespace settings;

namespace {

constexpr int kYes = 1;

} // namespace

SetWire::SetWire(link::Bench& bench, link::Module1& module1, link::Gate& gate, Messages& messages,
                 QWidget* parent)
    : SettingsDialog(bench, module1, gate, messages, parent), ui_(std::make_unique<Ui::SetWire>())
{
    ui_->setupUi(this);
    addStatusLine();
    for (auto* field : std::initializer_list<QWidget*>{ui_->Dia, ui_->Dia_error, ui_->SensorNo, ui_->Combo1})
        enterPresses(field, ui_->Command1);
    onClick(ui_->Command1, [this] { Command1_Click(); });
    onClick(ui_->Command3, [this] { Command3_Click(); });
    connect(ui_->Command2, &QPushButton::clicked, this, &SetWire::reject);
    Form_Load();
}

SetWire::~SetWire() = default;

void SetWire::Form_Load()
{
    ui_->Combo1->setCurrentIndex(kYes);
    ui_->SensorNo->setText(bench_.currentAddress);
    ui_->Combo1->setVisible(!bench_.isUserEdition());
    ui_->Label4->setVisible(!bench_.isUserEdition());
}

std::string SetWire::addressDigits() const { return link::AddressToHex(bytes(ui_->SensorNo->text())); }

void SetWire::Command3_Click()
{
    if (!perform(wireQuery(addressDigits()))) return;
    const auto wire = wireOf(module1_.ReplyText());
    if (!wire) {
        addStatus(tr("The answer \"%1\" holds no numbers where the diameter and the permitted error belong.")
                      .arg(shown(inOneLine(module1_.ReplyText()))));
        return;
    }
    say(shown(wireText(*wire, bench_.isUserEdition())));
}

void SetWire::Command1_Click()
{
    const auto diameter = bytes(ui_->Dia->text());
    const auto permittedError = bytes(ui_->Dia_error->text());
    if (ui_->SensorNo->text().isEmpty()) {
        say(kAddressError);
        return;
    }
    if (const auto* error = wireInputError(diameter, permittedError)) {
        say(error);
        return;
    }
    const WireParameters wire{tenthsOf(diameter), tenthsOf(permittedError),
                              ui_->Combo1->currentIndex() == kYes};
    if (!fitsWireField(wire.diameterTenthsMm) || !fitsWireField(wire.errorTenthsMm))
        addStatus(tr("The frame is longer than the readout expects: lengths from 0 to 9.9 mm fit."));
    if (perform(wireSet(addressDigits(), wire))) say(kWireSet);
}

} // namespace quorvel
