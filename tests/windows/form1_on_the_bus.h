#pragma once

#include "main/form1.h"
#include "support/bench_on_the_bus.h"

#include <QAction>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QTest>

namespace quorvel::test {

constexpr int kPatience = 20'000; // ms

/// The real main window before a real simulated bus, its port closed as at start-up.
class Form1OnTheBus : public BenchOnTheBus {
protected:
    explicit Form1OnTheBus(const QStringList& arguments = {"--fast", "--seed", "1", "--readout", "5:A",
                                                           "--readout", "12:B"})
        : BenchOnTheBus(arguments)
    {
        mscomm1.setPortOpen(false);
        bench.currentAddress.clear();
        startAs("USER");
    }

    void startAs(const QString& edition)
    {
        bench.edition = edition;
        form = std::make_unique<Form1>(workplace, ports);
        form->show();
    }

    QPushButton& button(const QString& name) { return *child<QPushButton>(*form, name); }
    QLineEdit& TestNo() { return *child<QLineEdit>(*form, "TestNo"); }
    QListWidget& List1() { return *child<QListWidget>(*form, "List1"); }
    QString NoList() { return child<QLabel>(*form, "NoList")->text(); }
    QString status() { return child<QLabel>(*form, "Status")->text(); }
    QAction& action(const QString& name) { return *child<QAction>(*form, name); }
    /// Chooses a menu item and lets what it leads to happen.
    void choose(const QString& name)
    {
        action(name).trigger();
        QCoreApplication::processEvents();
    }
    void openPort() { button("Command1").click(); }

    std::unique_ptr<Form1> form;
};

} // namespace quorvel::test
