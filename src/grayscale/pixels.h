#pragma once

#include "chart/export.h"
#include "grayscale/pixelreading.h"
#include "grayscale/profilefigures.h"
#include "main/buswindow.h"
#include "protocol/grayscale.h"

#include <memory>
#include <optional>

namespace Ui {
class Pixels;
}

namespace quorvel {

/// The window "Pixels": reads the pixels of a sensor as often as wanted, draws them before a reference, says what they mean,
/// and saves them. It does not block the other windows. A reply that is not whole is never drawn.
class Pixels final : public BusWindow {
    Q_OBJECT
public:
    explicit Pixels(const Workplace& workplace, QWidget* parent = nullptr);
    ~Pixels() override;

protected:
    bool event(QEvent* event) override;
    void showEvent(QShowEvent* event) override;
    QString standing() const override;
    QString warning() const override;

private:
    /// Pixels and what they mean.
    struct Looked {
        grayscale::PixelReading reading;
        grayscale::ProfileFigures figures;
    };

    void connectControls();
    void Read_Click();
    void KeepReference_Click();
    void OpenReference_Click();
    void NoReference_Click();
    void SavePicture_Click();
    void SavePixels_Click();
    void Print_Click();

    /// Reads once into the average. @return false when it did not work, which is said.
    bool readOnce(const protocol::GrayscaleRow& row, grayscale::PixelAverage& average, QDateTime& begun);
    bool take(const protocol::GrayscaleRow& row, const link::Exchange& exchange,
              grayscale::PixelAverage& average);
    void showProgress(const protocol::GrayscaleRow& row, int before);
    void setRunning(bool running);
    void refreshControls();
    void fillDirections();
    static Looked lookAt(grayscale::PixelReading reading);
    void setReference(std::optional<Looked> reference);
    void warnOfOtherSensor();
    void showAll();
    void showFigures();
    QString titleOf() const;
    chart::About about() const;
    /// "readout-5-A-X-2026-05-17-090530", without an ending.
    QString proposedName() const;
    /// Asks for a file. @return the path, with `ending` when it was typed without any; empty when cancelled, or when an existing
    ///         file is to stay.
    QString chooseForSaving(const QString& caption, const QString& filter, const QString& ending);
    /// The number in the address box; 0 when it does not name one readout.
    int address() const;
    bool isStopped() const { return stopped_ || gate_.stopRequested(); }

    std::unique_ptr<Ui::Pixels> ui_;
    Looked now_;
    std::optional<Looked> reference_;
    int wanted_ = 1; ///< readings of the step that runs
    bool running_ = false;
    bool stopped_ = false;
};

} // namespace quorvel
