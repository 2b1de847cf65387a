#pragma once

#include "main/form1.h"
#include "support/bench_on_the_bus.h"
#include "support/fake_device.h"
#include "support/hand_clock.h"

#include <QAction>
#include <QApplication>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QTest>

namespace quorvel::test {

constexpr auto kReadingReply = ":052101+12.3456-00.0078FF\r\nxx";

/// The real main window on a clock moved by hand and devices without hardware.
class Form1ByHand : public ::testing::Test {
protected:
    struct Opening {
        QString name;
        link::LineSettings line;
    };

    explicit Form1ByHand(const QStringList& devices = {"/dev/ttyFake"})
        : ports(devices, [] { return std::vector<link::PortInfo>(); })
    {
        clock.startNow = QDateTime(QDate(2024, 5, 17), QTime(14, 5, 13));
        qApp->installEventFilter(&filter);
    }

    QPushButton& button(const QString& name) { return *child<QPushButton>(form, name); }
    QLineEdit& TestNo() { return *child<QLineEdit>(form, "TestNo"); }
    QListWidget& List1() { return *child<QListWidget>(form, "List1"); }
    QComboBox& Combo1() { return *child<QComboBox>(form, "Combo1"); }
    QString NoList() { return child<QLabel>(form, "NoList")->text(); }
    QString status() { return child<QLabel>(form, "Status")->text(); }
    /// Chooses a menu item and lets what it leads to happen.
    void choose(const QString& name)
    {
        child<QAction>(form, name)->trigger();
        QCoreApplication::processEvents();
    }
    /// Shows the window and gives it the keyboard.
    void activate()
    {
        form.show();
        form.activateWindow();
        ASSERT_TRUE(QTest::qWaitForWindowActive(&form));
    }
    /// Presses a key where the focus is.
    static void press(Qt::Key key) { QTest::keyClick(QApplication::focusWidget(), key); }
    /// The names of the widgets that `key` takes the focus to, until it is back where it was.
    static QStringList roundTrip(Qt::Key key)
    {
        const auto start = QApplication::focusWidget()->objectName();
        QStringList visited;
        do {
            press(key);
            visited << QApplication::focusWidget()->objectName();
        } while (visited.last() != start && visited.size() < 20);
        return visited;
    }

    FakeDevice* device = nullptr;
    bool answers = true;
    std::vector<Opening> openings;
    HandClock clock;
    link::Bench bench;
    link::PortList ports;
    link::MSComm mscomm1{ports, [this](const QString& name, const link::LineSettings& line) {
                             openings.push_back({name, line});
                             return link::OpenedDevice{answeringDevice(), {}};
                         }};
    link::Module1 module1{mscomm1, clock};
    link::Gate gate;
    InputFilter filter{gate};
    TestMessages messages;
    Form1 form{{bench, module1, gate, messages}, ports};

private:
    std::unique_ptr<FakeDevice> answeringDevice()
    {
        auto opened = std::make_unique<FakeDevice>();
        opened->onCharacter = [this](char c) {
            if (c == '\n' && answers) device->receive(kReadingReply);
        };
        device = opened.get();
        return opened;
    }
};

} // namespace quorvel::test
