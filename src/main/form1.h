#pragma once

#include "link/portlist.h"
#include "main/workplace.h"

#include <QLabel>
#include <QMainWindow>
#include <QMenu>
#include <QPushButton>
#include <QTimer>

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace Ui {
class Form1;
}

namespace quorvel {

class WhyLink;

/// The main window: port, instrument type, search, live reading, and the menus that lead to all other windows.
///
/// It does not know the other windows: the program says with setOpener() what each menu item opens. An item
/// without an opener is disabled.
class Form1 final : public QMainWindow {
    Q_OBJECT
public:
    /// @param ports  must outlive the window.
    Form1(const Workplace& workplace, link::PortList& ports, QWidget* parent = nullptr);
    ~Form1() override;

    /// What the menu item called `action` ("ChangeAddress", "OS", "XD" ...) opens; called with the port open where
    /// the item asks for it, never while a handler talks to the bus, and never while the instrument type or the
    /// edition hides the item.
    void setOpener(const QString& action, std::function<void()> opener);

    /// Adds an item to the menu of the button "Tools" at the right end of the status bar. Chosen while another window is
    /// open, it does nothing; while a handler talks to the bus, it is chosen all the same.
    QAction* addTool(const QString& caption, const std::function<void()>& tool);
    /// Shows or hides the mark in the status bar that says that nothing is changed in readouts.
    void showReadOnly(bool on) { readOnlyMark_.setVisible(on); }

    /// From now on the status bar offers a test after a command of this window that was not answered.
    /// @param test  is called when the offer is taken.
    void offerTest(const std::function<void()>& test);
    /// Runs a command of this window that is not its own: the test is offered when it was not answered.
    void runCommand(const std::function<void()>& command);

    /// Shows addresses as found, and makes the first of them the current one.
    /// @param addresses  decimal text of at least two digits, in the order to be shown.
    void showFound(const std::vector<std::string>& addresses);
    /// Those that were shown last.
    const std::vector<std::string>& found() const { return found_; }

    /// Shows a text in the status bar until the next one.
    void showStatus(const QString& text);

    /// Another way of opening the port: modem lines on, mark parity, COM1 to COM5 only. No control calls it;
    /// it stays for readouts that want an address mark.
    /// @return empty on success, otherwise the reason in words.
    QString OpenComm(const QString& portNumber);

    /// Seconds that `Timer1` has counted since the start. Nothing reads it but tests.
    float ElapsedSeconds() const { return elapsedSeconds_; }

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    void connectControls();
    void connectMenus();
    void addToolsButton();
    void whenChosen(QAction* action, const std::function<void()>& handler);
    void ComboList();
    void selectPort(int index);
    void addPort();
    void copyReadings();
    void refreshPorts();
    QString openChosenPort();
    void showPortState();
    void portLost(const QString& reason);
    void addressTyped(const QString& text);
    void selectType(link::InstrumentType type);
    bool isOffered(const QAction& action) const;
    void openWindow(const QAction& action, bool guarded);

    void Command1_Click();
    void Command2_Click();
    void Command4_Click();
    void Help_Click();
    void Quit_Click();
    void Timer1_Timer();

    bool isReading() const;
    void immediateReading();
    bool addressIsValid();
    void beginReading();
    void unlock(bool on);
    void addReading(const QString& time);
    void endReading();

    std::unique_ptr<Ui::Form1> ui_;
    link::Bench& bench_;
    link::PortList& ports_;
    link::Module1& module1_;
    link::Gate& gate_;
    Messages& messages_;
    std::map<QString, std::function<void()>> openers_;
    QLabel status_; ///< a label, because screen readers do not see a status bar's own text
    WhyLink* why_ = nullptr;
    QLabel readOnlyMark_;
    QPushButton tools_;
    QMenu toolsMenu_;
    QTimer timer1_;
    std::vector<std::string> found_;
    float elapsedSeconds_ = 0;
    bool stopFlag_ = false;
};

} // namespace quorvel
