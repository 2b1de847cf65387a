#pragma once

#include "main/buswindow.h"

#include <QDateTime>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QTimer>

#include <functional>

class QHBoxLayout;
class QVBoxLayout;

namespace quorvel::line {

/// The base of windows that run something long on the bus: a button that starts it, "Stop", and a bar with the time
/// left. They do not block the other windows; while something runs, the gate does.
class RunWindow : public BusWindow {
    Q_OBJECT
public:
    /// Starts the run, as the button does.
    void start() { start_.click(); }

protected:
    /// @param name  the window's, also the beginning of its controls' names.
    RunWindow(const Workplace& workplace, const QString& name, const QString& startCaption, QWidget* parent);

    /// Adds start and stop to a row, bar and status line below the other controls.
    void addButtons(QHBoxLayout& row);
    void addProgress(QVBoxLayout& rows);
    /// @param run  what the start button does; stopAsked() is to be asked often meanwhile.
    void onStart(const std::function<void()>& run);

    /// "Stop" was pressed, or the window is to close.
    bool stopAsked() const { return stopAsked_ || gate_.stopRequested(); }
    /// Shows how far the run is. The seconds are counted down until the next call.
    void showTime(int done, int total, double secondsLeft);
    /// A button of the window that no key presses but its own.
    void addButton(QHBoxLayout& row, QPushButton& button, const QString& caption, const char* name,
                   const std::function<void()>& handler);
    /// The name of a control: that of the window and its own.
    QString nameOf(const char* control) const { return objectName() + QLatin1String(control); }

private:
    void setRunning(bool on);
    void tick();

    QPushButton start_;
    QPushButton stop_;
    QProgressBar progress_;
    QLabel status_;
    QTimer tick_;
    QDateTime end_;
    bool stopAsked_ = false;
};

} // namespace quorvel::line
