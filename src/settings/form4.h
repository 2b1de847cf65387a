#pragma once

#include "settings/settings_dialog.h"
#include "settings/switches.h"

class QComboBox;
class QVBoxLayout;

namespace quorvel {

/// "Invert and Swap": four switches of a readout. All are shown for every instrument type. Opening it asks the
/// readout nothing: the lists show "False" until they are queried.
class Form4 final : public SettingsDialog {
    Q_OBJECT
public:
    /// All references must outlive the window.
    Form4(link::Bench& bench, link::Module1& module1, link::Gate& gate, Messages& messages,
          QWidget* parent = nullptr);

private:
    void addRow(const settings::SwitchRow& row, QVBoxLayout& rows);
    void query(const settings::SwitchRow& row, QComboBox& list);
    void set(const settings::SwitchRow& row, const QComboBox& list);
};

} // namespace quorvel
