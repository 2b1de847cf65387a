#pragma once

#include "autoread/setauto.h"
#include "support/bench_on_the_bus.h"

#include <QComboBox>
#include <QDir>
#include <QLabel>
#include <QLineEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QTest>

namespace quorvel::test {

/// The controls of a "Set AutoReading" window by their names.
struct SetAutoControls {
    explicit SetAutoControls(SetAuto& window) : form(window) {}

    void press(const QString& name) const { child<QPushButton>(form, name)->click(); }
    QLineEdit& Text1() const { return *child<QLineEdit>(form, "Text1"); }
    QComboBox& Combo1() const { return *child<QComboBox>(form, "Combo1"); }
    QLabel& Label3() const { return *child<QLabel>(form, "Label3"); }
    QProgressBar& progress() const { return *child<QProgressBar>(form, "Progress"); }
    QString status() const { return child<QLabel>(form, "Status")->text(); }

    SetAuto& form;
};

/// What the status line says of five records that were not downloaded.
inline constexpr auto kNoneInAFile =
    "None of the 5 records that readout 5 held when it was last asked is in a file that "
    "stands as this program wrote it.";

/// The real window before a real simulated bus: readout 5 holds five records, 10 to 14 of a ring of 1000, and
/// readout 12, of three directions, a ring of three slots that has wrapped.
class SetAutoOnTheBus : public BenchOnTheBus {
protected:
    SetAutoOnTheBus()
        : BenchOnTheBus({"--fast", "--seed", "1", "--clock", "2024-05-17T09:05:30", "--readout", "5:A",
                         "--readout", "12:C", "--ring", "5:1000,10,15", "--ring", "12:3,2,1"}),
          form(workplace, book), controls(form)
    {
        form.show();
    }

    QString file(const QString& name) const { return QDir(folder.path()).filePath(name); }
    std::filesystem::path path(const QString& name) const { return file(name).toStdString(); }
    QString allIn(const QString& name) const
    {
        return QStringLiteral("All 5 records that readout 5 held when it was last asked are in %1.")
            .arg(file(name));
    }
    /// Presses "Get Auto_Reading Data" and chooses this file.
    void download(const QString& name)
    {
        messages.files.push_back(file(name));
        controls.press("Command2");
    }

    autoread::Book book;
    SetAuto form;
    SetAutoControls controls;
};

} // namespace quorvel::test
