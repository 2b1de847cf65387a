#pragma once

#include "autoread/download.h"
#include "autoread/ledger.h"
#include "link/bench.h"
#include "link/gate.h"
#include "link/module1.h"
#include "main/messages.h"

#include <QDialog>

#include <memory>
#include <string>

namespace Ui {
class SetAuto;
}

namespace quorvel {

/// The window "Set AutoReading": a readout's own reading schedule, and the download and deletion of what it has
/// stored. Modal; opened while the port is open.
class SetAuto final : public QDialog {
    Q_OBJECT
public:
    /// All references must outlive the window.
    SetAuto(const link::Bench& bench, link::Module1& module1, link::Gate& gate, Messages& messages,
            QWidget* parent = nullptr);
    ~SetAuto() override;

    /// Closes the window, after the handler that runs; a download ends with the record in flight.
    void reject() override;

protected:
    void keyPressEvent(QKeyEvent* event) override;

private:
    void Form_Load();
    void connectControls();

    void Command1_Click();
    void Command2_Click();
    void Command3_Click();

    /// One transaction, with a notice while it waits.
    bool transact(const std::string& frame, int replyLength);
    /// Books an answer about the ring that can be relied on; of any other whole answer it remarks what came.
    void noteReply(const autoread::RingPointers& pointers, bool answered);
    void fetchInto(const QString& path, autoread::Existing existing, const autoread::RecordSpan& span);
    autoread::Outcome run(autoread::RecordSink& sink, const autoread::RecordSpan& span);
    void showProgress(int total, int received, double passed);
    void addressTyped();
    /// What this window knows about the records of the readout in the address box.
    void showLedger();
    /// Shows a line at the bottom, and the remark below it.
    void showLine(const QString& line);

    /// Two hexadecimal digits of the address box, for frames.
    std::string addressDigits() const;
    /// The number in the address box, as frames understand it.
    std::string address() const;
    const autoread::RecordLayout& layout() const;

    std::unique_ptr<Ui::SetAuto> ui_;
    const link::Bench& bench_;
    link::Module1& module1_;
    link::Gate& gate_;
    Messages& messages_;
    autoread::Ledger ledger_;
    QString remark_; ///< on the last answer of the readout in the address box
};

} // namespace quorvel
