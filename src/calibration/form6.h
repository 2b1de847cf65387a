#pragma once

#include "link/bench.h"
#include "link/gate.h"
#include "link/module1.h"
#include "main/messages.h"

#include <QDialog>

#include <memory>

namespace Ui {
class Form6;
}

namespace quorvel::calibration {

/// The window "Y-Direction Stitching": queries and sets the stitching location of the readout at the current
/// address. Opened with the port open.
class Form6 final : public QDialog {
    Q_OBJECT
public:
    /// All references must outlive the window.
    Form6(link::Bench& bench, link::Module1& module1, link::Gate& gate, Messages& messages,
          QWidget* parent = nullptr);
    ~Form6() override;

public Q_SLOTS:
    void reject() override;

private:
    void Command1_Click();
    void Command2_Click();

    std::unique_ptr<Ui::Form6> ui_;
    link::Bench& bench_;
    link::Module1& module1_;
    link::Gate& gate_;
    Messages& messages_;
};

} // namespace quorvel::calibration
