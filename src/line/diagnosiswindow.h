#pragma once

#include "line/conclusion.h"
#include "line/runwindow.h"
#include "link/portlist.h"

#include <QLineEdit>
#include <QTableWidget>

namespace quorvel::line {

/// The window "Why no answer?": tests step by step why a readout does not answer, and says the most likely fault and the
/// next step.
class DiagnosisWindow final : public RunWindow {
    Q_OBJECT
public:
    /// @param ports    names what is plugged in; must outlive the window.
    /// @param address  of the readout in question, as typed; the main window's when it is null.
    DiagnosisWindow(const Workplace& workplace, const link::PortList& ports, QWidget* parent = nullptr,
                    const QString& address = {});

    void setAddress(const QString& address) { address_.setText(address); }

    static constexpr auto kName = "WhyNoAnswer";

protected:
    QString warning() const override;

private:
    void layOut();
    DiagnosisTask task() const;
    void test();
    void showResult(Step step, const Findings& findings);
    void showVerdict(const Conclusion& verdict);
    void copy() const;

    const link::PortList& ports_;
    QLineEdit address_;
    QTableWidget steps_;
    QLabel verdict_;
};

} // namespace quorvel::line
