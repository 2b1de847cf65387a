#pragma once

#include "main/buswindow.h"

#include <memory>

namespace Ui {
class Form2;
}

namespace quorvel {

/// "Change Address": gives a readout on the bus a new address. The main window's address stays as it is.
class Form2 final : public BusWindow {
    Q_OBJECT
public:
    explicit Form2(const Workplace& workplace, QWidget* parent = nullptr);
    ~Form2() override;

protected:
    /// The window refuses addresses that name no readout.
    QString warning() const override { return {}; }

private:
    void Form_Load();
    void Command1_Click();

    std::unique_ptr<Ui::Form2> ui_;
};

} // namespace quorvel
