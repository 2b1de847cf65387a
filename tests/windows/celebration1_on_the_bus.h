#pragma once

#include "calibration/celebration1.h"
#include "calibration/dbgrid.h"
#include "calibration/fitchart.h"
#include "support/bench_on_the_bus.h"

#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTest>

namespace quorvel::test {

/// Opens the calibration window on a bench and works in it.
class Celebration1Hands {
protected:
    explicit Celebration1Hands(const Workplace& workplace) : workplace_(workplace)
    {
        workplace.bench.edition = "FACTORY";
    }

    void open(const QString& direction)
    {
        workplace_.bench.CalibrationDirection = direction;
        window = std::make_unique<calibration::Celebration1>(workplace_);
        window->show();
    }

    /// Gives the window the keyboard, as it has on a desktop.
    void activate()
    {
        window->activateWindow();
        ASSERT_TRUE(QTest::qWaitForWindowActive(window.get()));
        grid().setFocus();
    }

    QPushButton& button(const QString& name) { return *child<QPushButton>(*window, name); }
    calibration::DBGrid& grid() { return *child<calibration::DBGrid>(*window, "DBGrid1"); }
    QString label(const QString& name) { return child<QLabel>(*window, name)->text(); }
    QString status() { return label("Status"); }
    /// What the status line says while nothing else is to be told.
    QString standing() const
    {
        const auto file = workplace_.bench.CalibrationDirection + QStringLiteral("Direction.mdb");
        return QStringLiteral("File: ") +
               QString::fromStdString((workplace_.bench.programFolder / file.toStdString()).string());
    }
    QString cell(int row, int column) { return grid().model()->index(row, column).data().toString(); }
    void goTo(int row, int column) { grid().setCurrentIndex(grid().model()->index(row, column)); }
    /// The open one; those that were closed may not be gone yet.
    QLineEdit* editor()
    {
        for (auto* found : grid().viewport()->findChildren<QLineEdit*>()) {
            if (found->isVisible()) return found;
        }
        return nullptr;
    }

    /// Types into the current cell as a person does, without ending it.
    void type(const QString& text)
    {
        QTest::keyClick(&grid(), text.front().toLatin1());
        ASSERT_NE(editor(), nullptr);
        QTest::keyClicks(editor(), text.mid(1));
    }
    void enter(const QString& text)
    {
        type(text);
        QTest::keyClick(editor(), Qt::Key_Return);
    }
    void measure(int row)
    {
        goTo(row, 2);
        grid().cellButton()->click();
    }
    /// Fills columns of all points with the numbers of the points.
    void fill(std::initializer_list<int> columns)
    {
        for (int row = 0; row < grid().model()->rowCount(); ++row) {
            for (const int column : columns) {
                grid().model()->setData(grid().model()->index(row, column), QString::number(row));
            }
        }
    }
    /// What is in a file, a row as "1 0.5 -", Null as "-".
    QStringList rowsOf(const QString& file)
    {
        QStringList texts;
        calibration::DataControl data;
        data.setDatabaseName(file.toStdString());
        const auto opened = data.Refresh();
        EXPECT_TRUE(opened) << opened.error();
        for (int row = 0; row < data.rowCount(); ++row) {
            QStringList cells;
            for (int column = 0; column < static_cast<int>(data.fields().size()); ++column) {
                const auto& value = data.value(row, column);
                cells << (value.isNull() ? QStringLiteral("-") : QString::fromStdString(value.text()));
            }
            texts << cells.join(u' ');
        }
        return texts;
    }

    std::unique_ptr<calibration::Celebration1> window;

private:
    const Workplace& workplace_;
};

/// The calibration window of the factory edition before readouts 5 (type A) and 33 (type C).
class Celebration1OnTheBus : public BenchOnTheBus, protected Celebration1Hands {
protected:
    Celebration1OnTheBus()
        : BenchOnTheBus({"--fast", "--seed", "1", "--readout", "5:A", "--readout", "33:C"}),
          Celebration1Hands(workplace)
    {}

    /// The wire stands at `place` mm before a sensor of a readout.
    void put(int address, const char* sensor, double place)
    {
        bus.command(QStringLiteral("set %1 %2 %3").arg(address).arg(QLatin1String(sensor)).arg(place));
    }
    QString inFolder(const QString& name) const { return folder.filePath(name); }
};

} // namespace quorvel::test
