#pragma once

#include "main/buswindow.h"
#include "settings/settingsmodel.h"

#include <QComboBox>
#include <QDateTime>
#include <QLineEdit>
#include <QProgressBar>
#include <QTableView>

#include <optional>

namespace quorvel {

/// The window "Settings": all settings of a readout beside those of a file and of another readout, and the way to send
/// the chosen ones to it. The file is that of `quorvelctl settings`. It does not block the other windows.
class SettingsCompare final : public BusWindow {
    Q_OBJECT
public:
    explicit SettingsCompare(const Workplace& workplace, QWidget* parent = nullptr);

private:
    /// Controls that name a readout.
    struct Readout {
        QLineEdit address;
        QComboBox type;
        QPushButton read;
    };
    /// The exchanges of a handler: how many there are, when it is to end.
    struct Run {
        int total = 0;
        int done = 0;
        bool answered = false; ///< something was
        QDateTime begun;
        QString ended; ///< why no more is asked for; empty when all was
    };

    void layOut();
    QWidget* readoutRows();
    QWidget* sendRow();
    QWidget* progressRow();
    void makeTable();
    void connectControls();
    void hideWhatIsOfNone();

    void Read_Click(SettingsModel::Side side);
    void Open_Click();
    void Save_Click();
    void Send_Click();

    Readout& controlsOf(SettingsModel::Side side) { return side == SettingsModel::Other ? other_ : now_; }
    SettingsModel::Whose whoseOf(Readout& controls) const;
    /// Whether a handler can talk to this readout; otherwise it has said why not.
    bool mayTalkTo(const SettingsModel::Whose& whose);
    /// Asks when the values are of another readout than the one they are sent to.
    bool maySend(std::size_t count);
    void sendOne(int row);

    void begin(int exchanges);
    link::Exchange step(link::Transaction transaction);
    /// True until it was asked to stop, or nothing more can be expected.
    bool goesOn();
    void end(const QString& done);

    SettingsModel model_;
    Readout now_;
    Readout other_;
    QPushButton open_;
    QPushButton save_;
    QTableView table_;
    QComboBox source_;
    QPushButton differing_;
    QPushButton none_;
    QPushButton send_;
    QProgressBar progress_;
    QPushButton stop_;
    Run run_;
    bool stopPressed_ = false;
};

} // namespace quorvel
