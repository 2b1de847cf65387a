#pragma once

#include "calibration/calibrationmodel.h"
#include "calibration/datacontrol.h"
#include "calibration/direction.h"
#include "link/bench.h"
#include "link/gate.h"
#include "link/module1.h"
#include "main/messages.h"

#include <QDialog>

#include <memory>

namespace Ui {
class Celebration1;
}

namespace quorvel::calibration {

/// The calibration window of one direction: points typed and measured into the direction's file, fitted to a line, and
/// downloaded into the readout. Files are loaded and saved whole.
///
/// What is typed reaches the file with Return, when the row changes, when a button is pressed and when the window
/// closes.
class Celebration1 final : public QDialog {
    Q_OBJECT
public:
    /// Loads the direction that `bench` names. All references must outlive the window.
    Celebration1(link::Bench& bench, link::Module1& module1, link::Gate& gate, Messages& messages,
                 QWidget* parent = nullptr);
    ~Celebration1() override;

    /// Appends an empty row, numbered by the count of rows. No control calls it; errors only show in the status line.
    void AddCalibrationRow();
    /// Deletes the last row. No control calls it; errors only show in the status line.
    void DeleteLastCalibrationRow();

public Q_SLOTS:
    void reject() override;

private:
    void Form_Load();
    bool bind();
    bool commitTyped();
    bool mayGoOn();

    void DBGrid1_ButtonClick();
    void takeMeasurement(const QModelIndex& first, const std::string& reply);

    void Command1_Click();
    std::vector<Points> pointsToSend();
    QString download(const Reading& reading, const Points& points);
    QString judgeEcho(const Reading& reading, const std::string& frame, const std::string& echo);

    void Command2_Click();
    bool fit(int column);

    void Command3_Click();
    void Command4_Click();

    void changed(const jet::Status& done);
    std::string addressDigits() const;
    void tell(const QString& words);
    void tell(const std::string& words);
    void tellNoColumn(const Reading& reading);
    QString standing() const;

    std::unique_ptr<Ui::Celebration1> ui_;
    link::Bench& bench_;
    link::Module1& module1_;
    link::Gate& gate_;
    Messages& messages_;
    const Direction* direction_ = nullptr;
    std::filesystem::path CalibrationDatabasePath;
    DataControl Data1;
    CalibrationModel model_;
    std::string unreadableBecause_; ///< empty when the points are shown
};

} // namespace quorvel::calibration
