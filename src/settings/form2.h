#pragma once

#include "settings/settings_dialog.h"

#include <memory>

namespace Ui {
class Form2;
}

namespace quorvel {

/// "Change Address": gives a readout on the bus a new address. The main window's address stays as it is.
class Form2 final : public SettingsDialog {
    Q_OBJECT
public:
    /// All references must outlive the window.
    Form2(link::Bench& bench, link::Module1& module1, link::Gate& gate, Messages& messages,
          QWidget* parent = nullptr);
    ~Form2() override;

private:
    void Form_Load();
    void Command1_Click();

    std::unique_ptr<Ui::Form2> ui_;
};

} // namespace quorvel
