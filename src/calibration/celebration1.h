#pragma once

#include "calibration/calibrationmodel.h"
#include "calibration/datacontrol.h"
#include "calibration/direction.h"
#include "calibration/recordfile.h"
#include "main/buswindow.h"

#include <memory>
#include <vector>

namespace Ui {
class Celebration1;
}

namespace quorvel::calibration {

/// The calibration window of one direction: points typed and measured into the direction's file, fitted to a line, and
/// downloaded into the readout. Files are loaded and saved whole.
///
/// What is typed reaches the file with Return, when the row changes, when a button is pressed and when the window
/// closes.
class Celebration1 final : public BusWindow {
    Q_OBJECT
public:
    /// Loads the direction that the bench of `workplace` names.
    explicit Celebration1(const Workplace& workplace, QWidget* parent = nullptr);
    ~Celebration1() override;

    /// Appends an empty row, numbered by the count of rows. No control calls it; errors only show in the status line.
    void AddCalibrationRow();
    /// Deletes the last row. No control calls it; errors only show in the status line.
    void DeleteLastCalibrationRow();

protected:
    QString standing() const override;
    QString warning() const override;
    bool mayClose() override { return mayGoOn(); }
    /// What the status line says about a refused text stays until that is settled.
    void beginHandler() override {}

private:
    void Form_Load();
    bool bind();
    bool commitTyped();
    bool mayGoOn();

    void DBGrid1_ButtonClick();
    void takeMeasurement(const QModelIndex& first, const std::string& reply);

    void Command1_Click();
    std::vector<Points> pointsToSend();
    QString download(const ReadingColumn& reading, const Points& points);
    QString judgeEcho(const ReadingColumn& reading, const link::Exchange& exchange);

    void Command2_Click();
    bool fit(int column);

    void Command3_Click();
    void Command4_Click();

    void changed(const jet::Status& done);
    using BusWindow::tell;
    void tell(const std::string& words) { tell(QString::fromStdString(words)); }
    QString tooLong() const;
    QString fileAndPoints() const;
    QString ofAnotherReadout() const;
    void noteReadings(int row, const std::vector<double>& readings);
    void noteDownload(const ReadingColumn& reading, const link::Exchange& exchange);
    QString keepCopy() const;
    int address() const;
    void tellNoColumn(const ReadingColumn& reading);

    std::unique_ptr<Ui::Celebration1> ui_;
    const DirectionRow* direction_ = nullptr;
    std::filesystem::path CalibrationDatabasePath;
    DataControl Data1;
    CalibrationModel model_;
    /// Told of what happens here; nothing here waits for it.
    std::unique_ptr<RecordFile> record_;
    std::string unreadableBecause_; ///< empty when the points are shown
};

} // namespace quorvel::calibration
