#pragma once

#include "calibration/recordjob.h"
#include "main/buswindow.h"

#include <QButtonGroup>
#include <QCheckBox>
#include <QComboBox>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QProgressBar>
#include <QSpinBox>
#include <QStackedWidget>
#include <QTableWidget>
#include <QTimer>

#include <array>
#include <deque>
#include <memory>
#include <vector>

class QGridLayout;
class QHBoxLayout;

namespace quorvel::calibration {

class ErrorChart;
class FitChart;

/// The window "Calibration Record": takes the points of a direction as found, measured and as left, judges them, sends the
/// table, and saves the record. It does not block the other windows.
///
/// A point is taken by Return in the field of the dial reading. What is typed while the readout answers is not lost: the
/// points wait in a queue.
class CalibrationRecord final : public BusWindow {
    Q_OBJECT
public:
    explicit CalibrationRecord(const Workplace& workplace, QWidget* parent = nullptr);
    ~CalibrationRecord() override;

protected:
    bool event(QEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;
    QString standing() const override;
    QString warning() const override;
    bool mayClose() override;
    /// A live value goes on beside what was told last.
    void beginHandler() override {}

private:
    // calibrationrecord_layout.cpp
    void layOut();
    void addDetails(QGridLayout& grid);
    void addRuns(QHBoxLayout& row);
    QWidget* makeMiddle();
    void addTaking(QHBoxLayout& row);
    void addCommands(QHBoxLayout& row);
    void addField(QGridLayout& grid, int row, int column, const QString& caption, QLineEdit& field,
                  const char* name);

    // calibrationrecord_shown.cpp
    void openDirection();
    void reload();
    std::array<QLineEdit*, 6> detailFields()
    {
        return {&serial_, &gauge_, &person_, &remark_, &tolerance_, &steady_};
    }
    void showAll();
    void showTable(const RunJudged& run);
    void showCharts();
    void showJudgement();
    /// Shows what the record says. What was typed and is not kept yet stays, unless it is of another record.
    void showDetails(bool ofAnotherRecord = true);
    void showPoint();
    void refreshControls();
    QString nextStep() const;

    void onCommand(QPushButton* button, void (CalibrationRecord::*command)());
    void whenFree(const std::function<void()>& handler);
    QString keepDetails();
    void Dial_Return();
    void takeQueued();
    void advance();
    void Download_Click();
    void SwitchOff_Click();
    void NewTable_Click();
    void ClearRun_Click();
    void SaveRecord_Click();
    void live();
    void showLive(double first);
    bool maySend(const QString& question);
    void showSent(const Sent& sent);
    std::function<void(int)> progress();

    RunKind runKind() const;
    int point() const;
    int address() const;
    bool isTaking() const { return !queue_.empty(); }

    std::unique_ptr<RecordJob> job_;
    std::deque<TakeOrder> queue_;
    std::array<QString, 6> shownDetails_; ///< of detailFields(), as the record has them
    std::vector<double> latest_;          ///< live values of the first column, newest last
    QTimer liveTimer_;
    bool busy_ = false; ///< a command other than a take runs

    QComboBox direction_;
    QLineEdit address_, serial_, gauge_, person_, remark_, tolerance_, steady_;
    QCheckBox zeroIsFree_;
    QButtonGroup runs_;
    QSpinBox repeats_;
    QCheckBox down_;
    QTableWidget table_;
    QStackedWidget charts_;
    FitChart* fitChart_ = nullptr;
    ErrorChart* errorChart_ = nullptr;
    QPlainTextEdit judgement_;
    QLabel pointLabel_;
    QLineEdit dial_;
    QCheckBox liveOn_;
    QLabel live_;
    QProgressBar progress_;
    std::vector<QPushButton*> commands_;
};

} // namespace quorvel::calibration
