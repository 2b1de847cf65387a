#pragma once

#include "settings/settings_dialog.h"

#include <memory>

namespace Ui {
class SetTime;
}

namespace quorvel {

/// "Set Clock": shows a readout's clock and sets it to the machine's.
class SetTime final : public SettingsDialog {
    Q_OBJECT
public:
    /// All references must outlive the window.
    SetTime(link::Bench& bench, link::Module1& module1, link::Gate& gate, Messages& messages,
            QWidget* parent = nullptr);
    ~SetTime() override;

private:
    void Form_Load();
    void Command1_Click();

    std::unique_ptr<Ui::SetTime> ui_;
};

} // namespace quorvel
