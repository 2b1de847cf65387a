#pragma once

#include "protocol/reference.h"
#include "settings/directiondialog.h"

namespace quorvel {

/// "Reference Setting": makes a readout report a chosen value for the place that the wire has now.
class Form52 final : public DirectionDialog {
    Q_OBJECT
public:
    explicit Form52(const Workplace& workplace, QWidget* parent = nullptr);

protected:
    void queryDirection(std::size_t index, QLineEdit& box) override;
    void setDirection(std::size_t index, QLineEdit& box) override;

private:
    void failed(const protocol::ReferenceRun& run);
};

} // namespace quorvel
