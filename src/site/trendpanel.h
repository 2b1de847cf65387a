#pragma once

#include "main/messages.h"
#include "site/trendchart.h"

#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QPushButton>

class QHBoxLayout;

namespace quorvel::site {

/// The trend of the chosen readouts, with its marks in words and figures, and its ways out of the window.
class TrendPanel final : public QWidget {
    Q_OBJECT
public:
    /// @param trend     must outlive the panel.
    /// @param messages  asks for files.
    TrendPanel(const Trend& trend, Messages& messages, QWidget* parent = nullptr);

    /// @param site   what the curves are of.
    /// @param rows   places in site.readouts, in the order of the table.
    void choose(const Site& site, const std::vector<int>& rows);
    /// Readings have come.
    void refresh() { chart_.refresh(); }

    TrendChart& chart() { return chart_; }

Q_SIGNALS:
    /// Something was saved, or could not be.
    void told(const QString& sentence);

private:
    void addControls(QHBoxLayout& row);
    void describe();
    QString markWords() const;
    QString figureWords() const;
    void savePicture();
    void saveCsv();
    const Readout* currentReadout() const;

    const Trend& trend_;
    Messages& messages_;
    Site site_;
    TrendChart chart_;
    QComboBox span_, readout_;
    QCheckBox relative_;
    QPushButton picture_, csv_;
    QLabel figures_, marks_;
    bool showing_ = false;
};

} // namespace quorvel::site
