// What the window "Calibration Record" shows.

#include "calibration/calibrationrecord.h"
#include "calibration/errorchart.h"
#include "calibration/fitchart.h"
#include "files/name.h"
#include "link/address.h"
#include "link/bytes.h"
#include "text/number.h"

#include <QAbstractButton>
#include <QSignalBlocker>

namespace quorvel::calibration {

namespace {

QString inSentence(const std::string& words) { return QString::fromStdString(words); }

QString lengthOr(const std::optional<double>& mm, QString (*text)(double))
{
    return mm ? text(*mm) : QString();
}

QString general(double mm) { return link::shown(text::format(mm, "0.000")); }

QString dialText(double mm) { return link::shown(text::general(static_cast<float>(mm))); }

} // namespace

RunKind CalibrationRecord::runKind() const { return static_cast<RunKind>(std::max(0, runs_.checkedId())); }

int CalibrationRecord::point() const { return std::max(0, table_.currentRow()); }

int CalibrationRecord::address() const { return link::addressIn(link::bytes(address_.text())); }

void CalibrationRecord::openDirection()
{
    const auto* row = directionOf(direction_.currentText());
    if (!row) return;
    queue_.clear();
    latest_.clear();
    live_.clear();
    job_ = std::make_unique<RecordJob>(module1_, bench_.programFolder, *row);
    clearStatus();
    reload();
    showDetails();
}

void CalibrationRecord::reload()
{
    const auto loaded = job_->load();
    if (!loaded) tell(inSentence(loaded.error()));
    showDetails(false);
    showAll();
}

void CalibrationRecord::showAll()
{
    const auto run = job_->judge(runKind());
    showTable(run);
    showCharts();
    showJudgement();
    showPoint();
    refreshControls();
}

void CalibrationRecord::showTable(const RunJudged& run)
{
    QStringList captions{tr("Point"), tr("Dial")};
    for (const auto& column : run.columns) {
        captions << link::shown(column.column) << tr("Takes") << tr("Spread") << tr("Hysteresis")
                 << (run.kind == RunKind::Measured ? tr("Residual") : tr("Error"));
    }
    const int row = point();
    const QSignalBlocker quiet(table_);
    table_.setColumnCount(static_cast<int>(captions.size()));
    table_.setRowCount(kPoints);
    table_.setHorizontalHeaderLabels(captions);
    for (int i = 0; i < kPoints; ++i) {
        QStringList texts{QString::number(i)};
        for (const auto& column : run.columns) {
            const auto& point = column.points[static_cast<std::size_t>(i)];
            if (texts.size() == 1) texts << lengthOr(point.dial, dialText);
            texts << lengthOr(point.reading, general)
                  << (point.takes > 0 ? QString::number(point.takes) : QString())
                  << lengthOr(point.spread, plainMm) << lengthOr(point.hysteresis, signedMm)
                  << lengthOr(point.error, signedMm);
        }
        for (int column = 0; column < table_.columnCount(); ++column) {
            auto* item = new QTableWidgetItem(texts.value(column));
            item->setTextAlignment(Qt::AlignRight | Qt::AlignVCenter);
            table_.setItem(i, column, item);
        }
    }
    table_.setCurrentCell(std::min(row, kPoints - 1), 0);
}

void CalibrationRecord::showCharts()
{
    const bool measured = runKind() == RunKind::Measured;
    charts_.setCurrentWidget(measured ? static_cast<QWidget*>(fitChart_) : errorChart_);
    if (!measured) {
        return errorChart_->show({job_->judge(RunKind::Found), job_->judge(RunKind::Left)},
                                 job_->record().tolerance);
    }
    fitChart_->clear();
    for (const auto& column : job_->judge(RunKind::Measured).columns) {
        if (column.fit) fitChart_->add({link::shown(column.column), *column.table, *column.fit});
    }
}

void CalibrationRecord::showJudgement()
{
    QStringList lines;
    QStringList hints;
    for (const auto& row : kRuns) {
        const auto run = job_->judge(row.kind);
        lines << QStringLiteral("%1: %2").arg(QLatin1String(row.name), run.verdict);
        for (const auto& hint : run.hints)
            hints << QStringLiteral("%1: %2").arg(QLatin1String(row.name), hint);
    }
    judgement_.setPlainText((lines + hints).join(u'\n'));
}

void CalibrationRecord::showDetails(bool ofAnotherRecord)
{
    const auto texts = detailsOf(job_->record());
    const auto fields = detailFields();
    for (std::size_t i = 0; i < texts.size(); ++i) {
        if (ofAnotherRecord || fields.at(i)->text() == shownDetails_.at(i))
            fields.at(i)->setText(texts.at(i));
    }
    shownDetails_ = texts;
    const QSignalBlocker quiet(zeroIsFree_);
    zeroIsFree_.setChecked(job_->record().zeroIsFree);
}

void CalibrationRecord::showPoint()
{
    const auto words = tr("Point %1").arg(point());
    pointLabel_.setText(QStringLiteral("<b>%1</b>").arg(words));
    dial_.setAccessibleDescription(words);
}

void CalibrationRecord::refreshControls()
{
    const bool able = !busy_ && address() > 0 && module1_.port().PortOpen();
    for (auto* button : commands_) {
        const auto name = button->objectName();
        const bool sends = name == QLatin1String("Download") || name == QLatin1String("SwitchOff");
        button->setEnabled(sends ? able && !module1_.readOnly() : !busy_);
    }
    for (QWidget* widget : std::initializer_list<QWidget*>{&address_, &dial_})
        widget->setEnabled(!busy_);
    direction_.setEnabled(!busy_ && !isTaking());
    for (auto* button : runs_.buttons())
        button->setEnabled(!busy_);
    refreshStatus();
}

QString CalibrationRecord::warning() const
{
    QStringList texts{BusWindow::warning()};
    if (job_ && address() > 0) {
        const auto others = job_->whyNotTheirs(address());
        texts << (others.isEmpty() ? others
                                   : others + u' ' + tr("\"New Table ...\" begins one for this readout."));
    }
    texts.removeAll(QString());
    return texts.join(u' ');
}

QString CalibrationRecord::standing() const
{
    if (!job_) return {};
    if (!job_->recordTrouble().empty()) return inSentence(job_->recordTrouble());
    const auto points = ownershipText(job_->ownership());
    const auto file = tr("File: %1.").arg(inSentence(files::inWords(job_->workingFile())));
    return (points.isEmpty() ? file : file + u' ' + tr("Points: %1").arg(points)) + u' ' + nextStep();
}

QString CalibrationRecord::nextStep() const
{
    if (!module1_.port().PortOpen()) return tr("The port is closed. Press \"OpenComm\" in the main window.");
    const auto run = job_->judge(runKind());
    const bool complete = run.columns.front().complete == kPoints;
    if (!complete) return tr("Move the wire to point %1, type the dial reading, press Return.").arg(point());
    switch (runKind()) {
    case RunKind::Found:
        return tr("Next: \"Switch Correction Off ...\", then \"Measured\".");
    case RunKind::Measured:
        return tr("Next: \"Download ...\".");
    case RunKind::Left:
        return tr("Next: \"Save Record ...\".");
    }
    return {};
}

} // namespace quorvel::calibration
