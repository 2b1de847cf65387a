#pragma once

#include "main/buswindow.h"

#include <memory>

namespace Ui {
class Form6;
}

namespace quorvel::calibration {

/// The window "Y-Direction Stitching": queries and sets the stitching location of the readout at the current
/// address. Opened with the port open.
class Form6 final : public BusWindow {
    Q_OBJECT
public:
    explicit Form6(const Workplace& workplace, QWidget* parent = nullptr);
    ~Form6() override;

private:
    void Command1_Click();
    void Command2_Click();

    std::unique_ptr<Ui::Form6> ui_;
};

} // namespace quorvel::calibration
