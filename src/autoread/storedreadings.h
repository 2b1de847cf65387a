#pragma once

#include "autoread/visit.h"
#include "main/buswindow.h"

#include <QDateTime>
#include <QJsonObject>

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace Ui {
class StoredReadings;
}

namespace quorvel {

/// The window "Stored Readings": what a readout's ring holds, and the four steps of taking it home: a new file, more into
/// an earlier one, a check, and then the deletion. It does not block the other windows.
class StoredReadings final : public BusWindow {
    Q_OBJECT
public:
    /// @param book  must outlive the window.
    StoredReadings(const Workplace& workplace, autoread::Book& book, QWidget* parent = nullptr);
    ~StoredReadings() override;

protected:
    bool event(QEvent* event) override;
    /// What is known about the records of the readout in the address box, and what comes next.
    QString standing() const override;
    QString warning() const override;

private:
    /// A report as it is shown and saved.
    struct Shown {
        QString text;
        QJsonObject json;
        std::filesystem::path file; ///< beside which it is saved; empty: there is nothing to save
        QDateTime at;
    };

    void connectControls();
    void Query_Click(autoread::Visit& visit);
    void NewFile_Click(autoread::Visit& visit);
    void ContinueFile_Click(autoread::Visit& visit);
    void Check_Click(autoread::Visit& visit);
    void Delete_Click(autoread::Visit& visit);
    void SaveReport_Click();

    /// Runs one of the above with the readout of the address box, "Stop" in reach and everything else out of it.
    void onStep(QPushButton* button, void (StoredReadings::*step)(autoread::Visit&));
    void runStep(void (StoredReadings::*step)(autoread::Visit&));
    void setRunning(bool running);
    bool isStopped() const { return stopped_ || gate_.stopRequested(); }
    autoread::Watcher watcher();

    /// Asks for the ring and shows it. @return nothing when it did not answer well, which is told.
    std::optional<autoread::RingState> lookAt(autoread::Visit& visit);
    /// Checks with the files that are known, and with those that the operator adds.
    autoread::CheckResult checkFiles(autoread::Visit& visit);
    bool agreesToDelete(const autoread::CheckResult& check);
    QString chooseFile(const QString& caption, bool toSave, const QString& proposed);
    void showRing(const autoread::RingState& ring);
    void clearRing();
    void showBusy(const QString& words);
    void showReport(const autoread::Report& report);
    void showCheck(const autoread::CheckResult& check);
    void showText(const Shown& next);
    void addressTyped();
    void refreshControls();
    QString nextStep() const;

    /// Sentences name files, whose names are UTF-8.
    static QString inWords(const std::string& sentence);
    /// The number in the address box; 0 when it does not name one readout.
    int address() const;

    std::unique_ptr<Ui::StoredReadings> ui_;
    autoread::Book& book_;
    std::vector<std::filesystem::path> addedFiles_; ///< of the readout in the address box, by the operator
    Shown shown_;
    bool running_ = false;
    bool stopped_ = false;
};

} // namespace quorvel
