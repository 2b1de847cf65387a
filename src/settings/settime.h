#pragma once

#include "main/buswindow.h"

#include <memory>

namespace Ui {
class SetTime;
}

namespace quorvel {

/// "Set Clock": shows a readout's clock and sets it to the machine's.
class SetTime final : public BusWindow {
    Q_OBJECT
public:
    explicit SetTime(const Workplace& workplace, QWidget* parent = nullptr);
    ~SetTime() override;

private:
    void Command1_Click();

    std::unique_ptr<Ui::SetTime> ui_;
};

} // namespace quorvel
