#include "settings/setwire.h"

#include "link/bytes.h"
#include "protocol/answer.h"
#include "protocol/wire.h"
#include "ui_setwire.h"

namespace quorvel {

using link::bytes;
using link::shown;
using namespace protocol;

namespace {

constexpr int kYes = 1;

} // namespace

SetWire::SetWire(const Workplace& workplace, QWidget* parent)
    : BusWindow(workplace, parent), ui_(std::make_unique<Ui::SetWire>())
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
    useAddressBox(*ui_->SensorNo);
    ui_->Combo1->setVisible(!bench_.isUserEdition());
    ui_->Label4->setVisible(!bench_.isUserEdition());
}

void SetWire::Command3_Click()
{
    const auto exchange = perform(wireQuery(addressDigits()));
    if (!answered(exchange)) return;
    const auto wire = wireOf(exchange.reply);
    if (!wire) {
        addStatus(tr("The answer \"%1\" holds no numbers where the diameter and the permitted error belong.")
                      .arg(shown(inOneLine(exchange.reply))));
        return;
    }
    warnIfUnreliable(exchange, isPlainWireReply(exchange.reply));
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
    if (answered(perform(wireSet(addressDigits(), wire)))) say(kWireSet);
}

} // namespace quorvel
