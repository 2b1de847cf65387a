#pragma once

#include "settings/directiondialog.h"

namespace quorvel {

/// "Offset Setting": what a readout adds to the place of the wire, per direction.
class Form51 final : public DirectionDialog {
    Q_OBJECT
public:
    /// All references must outlive the window.
    Form51(link::Bench& bench, link::Module1& module1, link::Gate& gate, Messages& messages,
           QWidget* parent = nullptr);

protected:
    void queryDirection(std::size_t index, QLineEdit& box) override;
    void setDirection(std::size_t index, QLineEdit& box) override;
};

} // namespace quorvel
