#include "settings/directiondialog.h"

#include "protocol/answer.h"
#include "protocol/feature.h"
#include "ui_directiondialog.h"

#include <algorithm>

namespace quorvel {

using namespace protocol;

DirectionDialog::DirectionDialog(const Workplace& workplace, QWidget* parent)
    : BusWindow(workplace, parent), ui_(std::make_unique<Ui::DirectionDialog>())
{
    ui_->setupUi(this);
    addStatusLine();
    enterPresses(ui_->Combo1, ui_->Command2, ui_->Command1);
    onClick(ui_->Command1, [this] { Command1_Click(); });
    onClick(ui_->Command2, [this] { Command2_Click(); });
    connectDirections();
}

DirectionDialog::~DirectionDialog() = default;

void DirectionDialog::connectDirections()
{
    struct Row {
        QLabel* label;
        QLineEdit* box;
        QPushButton* query;
        QPushButton* set;
    };
    const Row rows[] = {{ui_->Label2, ui_->Text2, ui_->Command3, ui_->Command4},
                        {ui_->Label3, ui_->Text3, ui_->Command5, ui_->Command6},
                        {ui_->Label4, ui_->Text4, ui_->Command7, ui_->Command8}};
    for (std::size_t i = 0; i < std::size(rows); ++i) {
        auto* box = rows[i].box;
        // All rows begin at the same place, whatever frame they are in.
        rows[i].label->setMinimumWidth(ui_->Label1->sizeHint().width());
        enterPresses(box, rows[i].set, rows[i].query);
        onClick(rows[i].query, [this, i, box] { queryDirection(i, *box); });
        onClick(rows[i].set, [this, i, box] { setDirection(i, *box); });
    }
}

void DirectionDialog::load(const QString& name, const QString& caption, const QString& instruction)
{
    setObjectName(name);
    setWindowTitle(caption);
    ui_->Frame2->setVisible(hasY(bench_.instrumentType));
    ui_->Frame1->setVisible(hasZ(bench_.instrumentType));
    ui_->Combo1->setCurrentIndex(kTrue);
    ui_->Label5->setText(instruction);
}

void DirectionDialog::Command1_Click()
{
    const auto exchange = perform(featureQuery(addressDigits()));
    if (!answered(exchange)) return;
    warnIfUnreliable(exchange, featureStateOf(exchange.reply).has_value());
    const bool on = featureIsOn(exchange.reply);
    say(on ? kReferenceUsed : kReferenceNotUsed);
    ui_->Combo1->setCurrentIndex(on ? kTrue : kFalse);
}

void DirectionDialog::Command2_Click()
{
    const auto exchange = perform(featureSet(addressDigits(), ui_->Combo1->currentIndex() == kTrue));
    if (!answered(exchange)) return enableFeatureQuery();
    report(exchange, kSetFailed);
}

void DirectionDialog::enableFeatureQuery() { ui_->Command1->setEnabled(true); }

void DirectionDialog::warnIfTooLong(const std::string& value)
{
    if (value.size() > kValueLength) addStatus(kOffsetTooLong);
}

} // namespace quorvel
