#pragma once

#include "support/bench_on_the_bus.h"

#include <QComboBox>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTest>

namespace quorvel::test {

/// The warning of an offset that makes its frame too long.
inline const QString kLongFrame =
    QStringLiteral("The frame is longer than the readout expects: values between -1000 and 1000 fit.");

/// A settings window on a bench with an open port: one by hand, or one before a real simulated bus.
template<class Window, class Bench>
class SettingsWindow : public Bench {
protected:
    /// Makes the window anew for this instrument type, and shows it.
    void open(link::InstrumentType type = link::TypeA)
    {
        this->bench.instrumentType = type;
        form = std::make_unique<Window>(this->workplace);
        form->show();
    }

    QPushButton& button(const QString& name) { return *child<QPushButton>(*form, name); }
    QLineEdit& box(const QString& name) { return *child<QLineEdit>(*form, name); }
    QComboBox& list(const QString& name) { return *child<QComboBox>(*form, name); }
    QString status() { return child<QLabel>(*form, "Status")->text(); }
    bool shows(const QString& name) { return child<QWidget>(*form, name)->isVisibleTo(form.get()); }

    /// Presses a button; the handler has ended when this returns.
    /// @return the texts shown meanwhile.
    QStringList press(QPushButton& pressed)
    {
        this->messages.shown.clear();
        pressed.click();
        return this->messages.shown;
    }
    QStringList press(const QString& name) { return press(button(name)); }

    std::unique_ptr<Window> form;
};

template<class Window>
class SettingsOnTheBus : public SettingsWindow<Window, BenchOnTheBus> {
protected:
    QJsonObject state(const QString& part, int address = 5)
    {
        return this->bus.state(address).value(part).toObject();
    }
};

} // namespace quorvel::test
