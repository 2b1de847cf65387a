#pragma once

#include "main/buswindow.h"

#include <memory>

namespace Ui {
class SetWire;
}

namespace quorvel {

/// "Set Wire and Calibration Parameter": diameter of the wire, permitted error, self-calibration. The user edition
/// hides the choice of self-calibration and always sends "Yes".
class SetWire final : public BusWindow {
    Q_OBJECT
public:
    explicit SetWire(const Workplace& workplace, QWidget* parent = nullptr);
    ~SetWire() override;

private:
    void Form_Load();
    void Command1_Click();
    void Command3_Click();

    std::unique_ptr<Ui::SetWire> ui_;
};

} // namespace quorvel
