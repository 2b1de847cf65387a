#pragma once

#include "grayscale/grayscalechart.h"
#include "grayscale/tchart.h"
#include "support/bench_on_the_bus.h"

#include <QLabel>
#include <QPushButton>
#include <QTest>

#include <gmock/gmock.h>

#include <vector>

namespace quorvel {

using grayscale::TChart;
using test::child;

/// Where one window's tests begin: it is shown, and has read.
struct Shown {
    explicit Shown(const Workplace& workplace) : window(workplace), gate(workplace.gate) {}

    /// Shows the window (again) and waits until its reading has ended.
    void show()
    {
        chart().setTitle(QString());
        window.show();
        EXPECT_TRUE(QTest::qWaitFor([&] { return !gate.busy() && !title().isEmpty(); }, 30'000));
    }
    void showAgain()
    {
        window.hide();
        show();
    }
    QString title() const { return chart().title(); }
    QString status() const { return child<QLabel>(window, "Status")->text(); }
    QPushButton& saveGraph() const { return *child<QPushButton>(window, "Command1"); }
    QPushButton& saveData() const { return *child<QPushButton>(window, "Command2"); }
    TChart& chart() const { return *child<TChart>(window, "TChart1"); }
    int drawn() const { return chart().graph(0)->dataCount(); }
    std::vector<std::int16_t> pixels() const
    {
        const auto pixels = window.array().pixels();
        return {pixels.begin(), pixels.end()};
    }

    GrayScaleChart window;
    link::Gate& gate;
};

/// The window against readouts of the simulator: 5 of type A, 12 of type C.
class GrayScaleChartOnTheBus : public test::BenchOnTheBus {
protected:
    Shown& open(const char* direction, const char* address = "5", link::InstrumentType type = link::TypeA)
    {
        bench.GrayscaleDirection = QString::fromLatin1(direction);
        bench.currentAddress = QString::fromLatin1(address);
        bench.instrumentType = type;
        shown = std::make_unique<Shown>(workplace);
        shown->show();
        return *shown;
    }
    QString file(const char* name) const { return folder.filePath(QString::fromUtf8(name)); }

    std::unique_ptr<Shown> shown;
};

} // namespace quorvel
