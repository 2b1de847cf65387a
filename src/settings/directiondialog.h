#pragma once

#include "main/buswindow.h"
#include "protocol/offset.h"

#include <memory>

class QLineEdit;

namespace Ui {
class DirectionDialog;
}

namespace quorvel {

/// The offset and the reference window have the same controls and the same reference feature; they differ in
/// what "Query" and "Set" of a direction do. Y and Z are hidden where the instrument type has none.
class DirectionDialog : public BusWindow {
    Q_OBJECT
public:
    ~DirectionDialog() override;

protected:
    DirectionDialog(const Workplace& workplace, QWidget* parent);

    /// @param name         name of the window.
    /// @param instruction  what `Label5` shows.
    void load(const QString& name, const QString& caption, const QString& instruction);

    /// "Query" and "Set" of the direction at `index` of protocol::kOffsets; `box` is its text box.
    virtual void queryDirection(std::size_t index, QLineEdit& box) = 0;
    virtual void setDirection(std::size_t index, QLineEdit& box) = 0;

    /// What follows an incomplete reply to any button but "Query" of the reference feature.
    void enableFeatureQuery();
    /// Warns of a value that makes the frame longer than the readout expects.
    void warnIfTooLong(const std::string& value);

private:
    void connectDirections();
    void Command1_Click();
    void Command2_Click();

    std::unique_ptr<Ui::DirectionDialog> ui_;
};

} // namespace quorvel
