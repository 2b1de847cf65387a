#pragma once

#include "line/trace.h"
#include "line/trafficfilter.h"
#include "main/workplace.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDockWidget>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTableView>

namespace quorvel::line {

/// The dock "Traffic": what is said on the bus, as it is said. It can stay open beside all windows.
class TrafficPanel final : public QDockWidget {
    Q_OBJECT
public:
    /// All references must outlive the panel.
    TrafficPanel(TrafficModel& model, Trace& trace, const Workplace& workplace, QWidget* parent = nullptr);

private:
    void makeFilters(QLayout& row);
    void makeTable();
    void makeButtons(QLayout& row);
    void find(int step);
    void copy() const;
    void record();
    void showRecording(const QString& words);

    TrafficModel& model_;
    Trace& trace_;
    link::Gate& gate_;
    Messages& messages_;
    TrafficFilter filter_;
    QLineEdit readout_;
    QComboBox kind_;
    QComboBox outcome_;
    QLineEdit find_;
    QTableView table_;
    QCheckBox pause_;
    QPushButton record_;
    QLabel status_;
};

} // namespace quorvel::line
