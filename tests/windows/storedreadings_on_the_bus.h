#pragma once

#include "autoread/exported.h"
#include "autoread/storedreadings.h"
#include "support/bench_on_the_bus.h"

#include <QCheckBox>
#include <QDir>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QProgressBar>
#include <QPushButton>

namespace quorvel::test {

inline std::string plain(const QString& text) { return text.toStdString(); }

/// The controls of a window "Stored Readings" by their names.
struct StoredReadingsControls {
    explicit StoredReadingsControls(StoredReadings& window) : form(window) {}

    QPushButton& button(const QString& name) const { return *child<QPushButton>(form, name); }
    void press(const QString& name) const { button(name).click(); }
    QLineEdit& address() const { return *child<QLineEdit>(form, "Address"); }
    QCheckBox& verify() const { return *child<QCheckBox>(form, "Verify"); }
    QProgressBar& progress() const { return *child<QProgressBar>(form, "Progress"); }
    QString ring() const { return child<QLabel>(form, "Ring")->text(); }
    QString report() const { return child<QPlainTextEdit>(form, "Report")->toPlainText(); }
    QString status() const { return child<QLabel>(form, "Status")->text(); }

    StoredReadings& form;
};

/// The real window before a real simulated bus: readout 5 holds five records, 10 to 14 of a ring of 1000, and readout 12,
/// of three directions, four of a ring of ten.
class StoredReadingsOnTheBus : public BenchOnTheBus {
protected:
    StoredReadingsOnTheBus()
        : BenchOnTheBus({"--fast", "--seed", "1", "--clock", "2024-05-17T09:05:30", "--readout", "5:A",
                         "--readout", "12:C", "--ring", "5:1000,10,15", "--ring", "12:10,1,5"})
    {
        form.show();
        bus.frames();
    }

    QString file(const QString& name) const { return QDir(folder.path()).filePath(name); }
    std::vector<std::string> lines(const QString& name) const
    {
        const auto path = file(name).toStdString();
        return linesOf(name.endsWith(".csv") ? contents(path) : exported(path));
    }
    void put(const QString& name, const std::vector<std::string>& rows) const
    {
        QFile out(file(name));
        EXPECT_TRUE(out.open(QIODevice::WriteOnly));
        for (const auto& row : rows) {
            out.write((row + "\n").c_str());
        }
    }
    /// Presses a button that asks for a file, and chooses this one.
    void with(const QString& name, const QString& button)
    {
        messages.files.push_back(file(name));
        controls.press(button);
    }
    /// How often this frame has come since the last frames() of the bus.
    qsizetype came(const QString& frame) { return bus.frames().count(frame); }
    int held(int address) { return bus.state(address)["ring"].toObject()["stored"].toInt(); }

    autoread::Book book;
    StoredReadings form{workplace, book};
    StoredReadingsControls controls{form};
};

} // namespace quorvel::test
