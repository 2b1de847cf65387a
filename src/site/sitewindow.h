#pragma once

#include "main/buswindow.h"
#include "site/readinglog.h"
#include "site/schedule.h"
#include "site/sitemodel.h"
#include "site/sortedrows.h"
#include "site/trendpanel.h"
#include "site/visit.h"

#include <QCheckBox>
#include <QLineEdit>
#include <QProgressBar>
#include <QSpinBox>
#include <QTableView>
#include <QTimer>

#include <filesystem>
#include <map>
#include <memory>
#include <optional>

class QBoxLayout;
class QHBoxLayout;

namespace quorvel::site {

/// The window "Site": all readouts of a site in one table, read by sweeps, once or every so many seconds. It does not
/// block the other windows. Each sweep passes the gate for itself; the waiting between two of them leaves it free.
class SiteWindow final : public BusWindow {
    Q_OBJECT
public:
    static constexpr auto kName = "Site";

    SiteWindow(const Workplace& workplace, Surroundings surroundings, QWidget* parent = nullptr);
    ~SiteWindow() override;

    /// Looks at the clock: shows ages, and sweeps when a sweep is due. A timer calls it often.
    void look();
    /// Opens a site file, as "Open ..." does once it is chosen.
    void open(const QString& path);

protected:
    QString warning() const override { return {}; } // it has many addresses
    QString standing() const override;
    bool mayClose() override;
    void done(int result) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    // sitewindow_layout.cpp
    void layOut();
    void addFileRow(QBoxLayout& rows);
    void addTextRow(QBoxLayout& rows);
    void addSweepRow(QBoxLayout& rows);
    void addLogRow(QBoxLayout& rows);
    void makeTable();
    void addButton(QHBoxLayout& row, QPushButton& button, const QString& caption, const char* name,
                   const std::function<void()>& handler);
    void showColumns();
    void fitNames();
    void chooseCurves();

    // sitewindow_files.cpp
    void New_Click();
    void NewFromSearch_Click();
    void Open_Click();
    bool Save_Click();
    bool SaveAs_Click();
    bool saveTo(const QString& path);
    void putSite(Site site, const QString& path);
    void setChanged(bool changed);
    bool mayLoseChanges(const QString& question);
    void Remove_Click();

    // sitewindow_report.cpp
    /// What the person said about a visit, and where its report goes.
    struct VisitNotes {
        QString path, person, remark;
        QDateTime since;
        bool asks = false;
    };
    void Report_Click();
    void askForReport();
    void saveReport(const VisitNotes& notes);
    Visit visitOf(const VisitNotes& notes) const;

    // sitewindow_sweeps.cpp
    void Sweep_Click();
    void Stop_Click();
    void Clocks_Click();
    void Log_Toggled(bool on);
    void sweep();
    void startSchedule();
    void endSchedule();
    void sweepWhenDue();
    QString sweepWords(const Sweep& sweep) const;
    /// @param day  on which the sweep began
    void log(const Reading& reading, const QDate& day);
    void beginLog(const std::filesystem::path& path);
    void endLogOfSweep();
    void endLog();
    void sayLogged(const QDate& day);
    void waitForDue();
    QString nextWords() const;
    /// Runs something that talks as soon as our own sweep lets it; while another command runs it is not done, which is
    /// told.
    void talk(const std::function<void()>& handler);
    /// Runs something with a box, outside of the gate, so that sweeps that are due meanwhile are taken.
    void besides(const std::function<void()>& action);
    bool isHeldUp();
    void setRunning(bool running);
    void refreshControls();
    bool isStopped() const { return stopAsked_ || gate_.stopRequested(); }
    void showProgress(int done, int total);

    SiteModel model_;
    Trend trend_;
    SortedRows sorted_;
    Surroundings surroundings_;
    QString path_; ///< of the file; empty: not saved yet
    bool changed_ = false;
    bool showing_ = false; ///< a site is put into the controls

    std::optional<Schedule> schedule_; ///< sweeps repeat
    QDateTime due_;
    qint64 skipped_ = 0;
    QTimer tick_;
    bool running_ = false;
    bool waits_ = false; ///< a handler waits for the end of our sweep
    bool stopAsked_ = false;
    std::unique_ptr<ReadingLog> log_;
    QString logFailure_;
    std::map<int, std::vector<SettingTold>> settings_; ///< of the latest report, by address

    QLineEdit siteName_, port_, note_;
    QTableView table_;
    TrendPanel trendPanel_{trend_, messages_};
    QPushButton new_, fromSearch_, open_, save_, saveAs_, add_, remove_;
    QPushButton sweep_, stop_, zero_, clocks_, report_;
    QCheckBox every_, toFile_, daily_;
    QSpinBox seconds_;
    QProgressBar progress_;
    QLabel logged_, status_;
};

} // namespace quorvel::site
