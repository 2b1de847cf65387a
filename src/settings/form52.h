#pragma once

#include "settings/directiondialog.h"
#include "settings/reference.h"

namespace quorvel {

/// "Reference Setting": makes a readout report a chosen value for the place that the wire has now.
class Form52 final : public DirectionDialog {
    Q_OBJECT
public:
    /// All references must outlive the window.
    Form52(link::Bench& bench, link::Module1& module1, link::Gate& gate, Messages& messages,
           QWidget* parent = nullptr);

protected:
    void queryDirection(std::size_t index, QLineEdit& box) override;
    void setDirection(std::size_t index, QLineEdit& box) override;

private:
    void failed(const settings::ReferenceRun& run);
    /// What is worth knowing of an offset that was sent, whatever became of it.
    void warnOfOffset(const settings::ReferenceRun& run);
    void warnIfNoNumber(const settings::ReferenceRun& run);
};

} // namespace quorvel
