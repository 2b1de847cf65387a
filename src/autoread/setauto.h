#pragma once

#include "autoread/book.h"
#include "autoread/download.h"
#include "main/buswindow.h"

#include <memory>
#include <string>

namespace Ui {
class SetAuto;
}

namespace quorvel {

/// The window "Set AutoReading": a readout's own reading schedule, and the download and deletion of what it has
/// stored. Modal; opened while the port is open. Closed during a download, it ends that with the record in flight.
class SetAuto final : public BusWindow {
    Q_OBJECT
public:
    SetAuto(const Workplace& workplace, autoread::Book& book, QWidget* parent = nullptr);
    ~SetAuto() override;

protected:
    void keyPressEvent(QKeyEvent* event) override;
    /// What is known about the records of the readout in the address box.
    QString standing() const override;
    /// Grows, so that names of files are never cut off.
    void statusChanged() override;

private:
    void Form_Load();
    void connectControls();

    void Command1_Click();
    void Command2_Click();
    void Command3_Click();

    /// One exchange, with a notice while it waits.
    link::Exchange ask(const link::Transaction& transaction);
    /// Books an answer about the ring that can be relied on; of any other whole answer it remarks what came.
    void noteReply(const protocol::RingPointers& pointers, const link::Exchange& exchange);
    void fetchInto(const QString& path, autoread::Existing existing, const protocol::RecordSpan& span);
    autoread::Report run(const QString& path, autoread::RecordSink& sink, const protocol::RecordSpan& span);
    autoread::Watcher watch(const QString& path, const protocol::RecordSpan& span);
    void showProgress(const autoread::Progress& progress);
    /// Something about a reply, said while the download runs and until the address changes.
    void noteOdd(const std::string& words);
    void addressTyped();
    /// The number in the address box, as frames understand it.
    int address() const;
    const autoread::RecordLayout& layout() const;

    std::unique_ptr<Ui::SetAuto> ui_;
    autoread::Book& book_;
    QString remark_; ///< on the last answer of the readout in the address box
    QString odd_;    ///< on replies of its download that do not fit or cannot be read
    QString firstOdd_;
    int oddCount_ = 0;
};

} // namespace quorvel
