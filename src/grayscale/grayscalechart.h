#pragma once

#include "main/buswindow.h"
#include "protocol/grayscale.h"

#include <memory>

namespace Ui {
class GrayScaleChart;
}

namespace quorvel {

/// The window "Gray Scale Graph": reads the pixels of the direction that the bench names once per showing, draws
/// them, and saves them as data or as a picture.
class GrayScaleChart final : public BusWindow {
    Q_OBJECT
public:
    explicit GrayScaleChart(const Workplace& workplace, QWidget* parent = nullptr);
    ~GrayScaleChart() override;

    /// The pixels that are drawn and saved: those last read, empty before.
    const protocol::PixelArray& array() const { return array_; }
    /// False from the beginning of a reading until it has come to a good end.
    bool dataReady() const { return dataReady_; }

protected:
    void showEvent(QShowEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    /// The line about the latest reading stays until there is something newer to say.
    void beginHandler() override {}
    /// The line may have another height now.
    void statusChanged() override { Form_Resize(); }

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
    void read(const protocol::GrayscaleRow& row);
    bool mayRead(const protocol::GrayscaleRow& row);
    void finishReading(const protocol::GrayscaleRow& row, const link::Exchange& exchange);
    void enableButtons(bool on);
    void showProgress(const protocol::GrayscaleRow& row);
    /// How much of a reply has come, in words; empty when its head has not.
    static QString arrived(const protocol::GrayscaleRow& row, const std::string& reply);

    std::unique_ptr<Ui::GrayScaleChart> ui_;
    protocol::PixelArray array_;
    bool dataReady_ = false;
};

} // namespace quorvel
