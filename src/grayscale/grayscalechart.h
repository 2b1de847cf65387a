#pragma once

#include "grayscale/grayscale.h"
#include "link/bench.h"
#include "link/gate.h"
#include "link/module1.h"
#include "main/messages.h"

#include <QDialog>
#include <QTimer>

#include <memory>

namespace Ui {
class GrayScaleChart;
}

namespace quorvel {

/// The window "Gray Scale Graph": reads the pixels of the direction that the bench names once per showing, draws
/// them, and saves them as data or as a picture.
class GrayScaleChart final : public QDialog {
    Q_OBJECT
public:
    /// All references must outlive the window.
    GrayScaleChart(link::Bench& bench, link::Module1& module1, link::Gate& gate, Messages& messages,
                   QWidget* parent = nullptr);
    ~GrayScaleChart() override;

    /// The pixels that are drawn and saved: those last read, empty before.
    const grayscale::PixelArray& array() const { return array_; }
    /// False from the beginning of a reading until it has come to a good end.
    bool dataReady() const { return dataReady_; }

    /// Closes the window, after the reading that runs.
    void reject() override;

protected:
    void showEvent(QShowEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    void Form_Activate();
    void Form_Resize();
    void DrawThart();
    void Read_X_Grayscale_Data();
    void Read_Y_Grayscale_Data();
    void Read_Z1_Grayscale_Data();
    void Read_Z2_Grayscale_Data();
    void Command1_Click();
    void Command2_Click();

    void readSelected();
    void read(const grayscale::Direction& direction);
    bool mayRead(const grayscale::Direction& direction);
    void finishReading(const grayscale::Direction& direction, grayscale::Outcome outcome);
    void enableButtons(bool on);
    void say(std::string_view text);
    void setStatus(const QString& text);
    void showProgress(const grayscale::Direction& direction);

    std::unique_ptr<Ui::GrayScaleChart> ui_;
    link::Bench& bench_;
    link::Module1& module1_;
    link::Gate& gate_;
    Messages& messages_;
    grayscale::PixelArray array_;
    bool dataReady_ = false;
};

} // namespace quorvel
