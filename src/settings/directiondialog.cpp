#include "settings/directiondialog.h"

#include "settings/feature.h"
#include "ui_directiondialog.h"

#include <algorithm>

namespace quorvel {

using namespace settings;

DirectionDialog::DirectionDialog(link::Bench& bench, link::Module1& module1, link::Gate& gate,
                                 Messages& messages, QWidget* parent)
    : SettingsDialog(bench, module1, gate, messages, parent), ui_(std::make_unique<Ui::DirectionDialog>())
{
    ui_->setupUi(this);
    addStatusLine();
    enterPresses(ui_->Combo1, ui_->Command2);
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
        enterPresses(box, rows[i].set);
        onClick(rows[i].query, [this, i, box] { queryDirection(i, *box); });
        onClick(rows[i].set, [this, i, box] { setDirection(i, *box); });
    }
}

void DirectionDialog::load(const QString& name, const QString& caption, const QString& instruction)
{
    setObjectName(name);
    setWindowTitle(caption);
    ui_->Frame2->setVisible(hasDirection(bench_.instrumentType, kY));
    ui_->Frame1->setVisible(hasDirection(bench_.instrumentType, kZ));
    ui_->Combo1->setCurrentIndex(kTrue);
    ui_->Label5->setText(instruction);
}

void DirectionDialog::Command1_Click()
{
    if (!perform(featureQuery(bench_.addressDigits()))) return;
    const bool on = featureIsOn(module1_.ReplyText());
    say(on ? kReferenceUsed : kReferenceNotUsed);
    ui_->Combo1->setCurrentIndex(on ? kTrue : kFalse);
}

void DirectionDialog::Command2_Click()
{
    const auto exchange = featureSet(bench_.addressDigits(), ui_->Combo1->currentIndex() == kTrue);
    if (perform(exchange)) {
        report(exchange, kSetFailed);
    } else {
        enableFeatureQuery();
    }
}

void DirectionDialog::enableFeatureQuery() { ui_->Command1->setEnabled(true); }

void DirectionDialog::warnIfTooLong(const std::string& value)
{
    if (value.size() > kValueLength) addStatus(kOffsetTooLong);
}

} // namespace quorvel
