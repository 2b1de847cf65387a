#pragma once

#include "settings/directiondialog.h"

namespace quorvel {

/// "Offset Setting": what a readout adds to the place of the wire, per direction.
class Form51 final : public DirectionDialog {
    Q_OBJECT
public:
    explicit Form51(const Workplace& workplace, QWidget* parent = nullptr);

protected:
    void queryDirection(std::size_t index, QLineEdit& box) override;
    void setDirection(std::size_t index, QLineEdit& box) override;
};

} // namespace quorvel
