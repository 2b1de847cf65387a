#pragma once

#include "settings/settings_dialog.h"

#include <memory>

namespace Ui {
class SetWire;
}

namespace quorvel {

/// "Set Wire and Calibration Parameter": diameter of the wire, permitted error, self-calibration. The user edition
/// hides the choice of self-calibration and always sends "Yes".
class SetWire final : public SettingsDialog {
    Q_OBJECT
public:
    /// All references must outlive the window.
    SetWire(link::Bench& bench, link::Module1& module1, link::Gate& gate, Messages& messages,
            QWidget* parent = nullptr);
    ~SetWire() override;

private:
    void Form_Load();
    void Command1_Click();
    void Command3_Click();
    std::string addressDigits() const;

    std::unique_ptr<Ui::SetWire> ui_;
};

} // namespace quorvel
