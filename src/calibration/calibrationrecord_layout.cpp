// Where the controls of the window "Calibration Record" stand, their names and their keys.

#include "calibration/calibrationrecord.h"
#include "calibration/errorchart.h"
#include "calibration/fitchart.h"

#include <QGridLayout>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QRadioButton>
#include <QSplitter>
#include <QVBoxLayout>

namespace quorvel::calibration {

namespace {

constexpr int kNarrow = 90;
constexpr int kMostRepeats = 50;
constexpr int kJudgementLines = 6;
constexpr int kLiveWidth = 230;
constexpr int kTableWidth = 520;
constexpr double kLiveSize = 1.6; // of the other texts
constexpr QSize kWindowSize(1180, 820);

QLabel* labelFor(const QString& caption, QWidget& field)
{
    auto* label = new QLabel(caption);
    label->setBuddy(&field);
    return label;
}

} // namespace

void CalibrationRecord::addField(QGridLayout& grid, int row, int column, const QString& caption,
                                 QLineEdit& field, const char* name)
{
    field.setObjectName(QLatin1String(name));
    grid.addWidget(labelFor(caption, field), row, column);
    grid.addWidget(&field, row, column + 1);
}

void CalibrationRecord::addDetails(QGridLayout& grid)
{
    direction_.setObjectName(QStringLiteral("Direction"));
    grid.addWidget(labelFor(tr("D&irection"), direction_), 0, 0);
    grid.addWidget(&direction_, 0, 1);
    addField(grid, 0, 2, tr("&Address"), address_, "Address");
    addField(grid, 0, 4, tr("Serial num&ber"), serial_, "Serial");
    addField(grid, 0, 6, tr("&Gauge"), gauge_, "Gauge");
    addField(grid, 1, 0, tr("Permitted err&or, mm"), tolerance_, "Tolerance");
    addField(grid, 1, 2, tr("Stead&y within, mm"), steady_, "Steady");
    addField(grid, 1, 4, tr("&Person"), person_, "Person");
    addField(grid, 1, 6, tr("Remar&k"), remark_, "Remark");
    for (QWidget* narrow : std::initializer_list<QWidget*>{&direction_, &address_, &tolerance_, &steady_})
        narrow->setMaximumWidth(kNarrow);
    grid.setColumnStretch(5, 2);
    grid.setColumnStretch(7, 3);
}

void CalibrationRecord::addRuns(QHBoxLayout& row)
{
    const QString captions[] = {tr("As &found"), tr("&Measured"), tr("As &left")};
    for (std::size_t i = 0; i < std::size(kRuns); ++i) {
        auto* button = new QRadioButton(captions[i]);
        button->setObjectName(QLatin1String(kRuns[i].key));
        runs_.addButton(button, static_cast<int>(i));
        row.addWidget(button);
    }
    runs_.button(static_cast<int>(RunKind::Measured))->setChecked(true);
    repeats_.setObjectName(QStringLiteral("Repeats"));
    repeats_.setRange(1, kMostRepeats);
    row.addSpacing(24);
    row.addWidget(labelFor(tr("Repea&ts"), repeats_));
    row.addWidget(&repeats_);
    down_.setObjectName(QStringLiteral("Down"));
    down_.setText(tr("Going do&wn"));
    down_.setToolTip(tr("The points are come to from above; both ways together show the hysteresis"));
    row.addWidget(&down_);
    zeroIsFree_.setObjectName(QStringLiteral("ZeroIsFree"));
    zeroIsFree_.setText(tr("The &zero of the gauge is free"));
    zeroIsFree_.setToolTip(tr("Errors as found and as left count from their mean"));
    row.addWidget(&zeroIsFree_);
    row.addStretch();
}

QWidget* CalibrationRecord::makeMiddle()
{
    table_.setObjectName(QStringLiteral("Points"));
    table_.setAccessibleName(tr("Points"));
    table_.setEditTriggers(QAbstractItemView::NoEditTriggers);
    table_.setSelectionBehavior(QAbstractItemView::SelectRows);
    table_.setSelectionMode(QAbstractItemView::SingleSelection);
    table_.setTabKeyNavigation(false);
    table_.verticalHeader()->hide();
    table_.horizontalHeader()->setSectionResizeMode(QHeaderView::ResizeToContents);
    fitChart_ = new FitChart;
    errorChart_ = new ErrorChart;
    charts_.addWidget(fitChart_);
    charts_.addWidget(errorChart_);
    charts_.setMinimumSize(360, 280);
    auto* middle = new QSplitter;
    middle->addWidget(&table_);
    middle->addWidget(&charts_);
    middle->setStretchFactor(0, 1);
    middle->setStretchFactor(1, 1);
    middle->setChildrenCollapsible(false);
    middle->setSizes({kTableWidth, kWindowSize.width() - kTableWidth});
    return middle;
}

void CalibrationRecord::addTaking(QHBoxLayout& row)
{
    pointLabel_.setObjectName(QStringLiteral("Point"));
    row.addWidget(&pointLabel_);
    dial_.setObjectName(QStringLiteral("Dial"));
    dial_.setMaximumWidth(kNarrow * 3 / 2);
    dial_.setToolTip(tr("Return takes the point, the arrows up and down choose it"));
    row.addWidget(labelFor(tr("Dial &reading, mm"), dial_));
    row.addWidget(&dial_);
    row.addSpacing(24);
    liveOn_.setObjectName(QStringLiteral("LiveOn"));
    liveOn_.setText(tr("Li&ve value"));
    liveOn_.setToolTip(tr("Asks the readout again and again while this window is in use"));
    row.addWidget(&liveOn_);
    live_.setObjectName(QStringLiteral("Live"));
    live_.setAccessibleDescription(tr("Live value"));
    live_.setMinimumWidth(kLiveWidth);
    auto large = live_.font();
    large.setPointSizeF(large.pointSizeF() * kLiveSize);
    live_.setFont(large);
    row.addWidget(&live_);
    row.addStretch();
    progress_.setObjectName(QStringLiteral("Progress"));
    progress_.setAccessibleName(tr("Progress"));
    progress_.setTextVisible(false);
    progress_.setMaximumWidth(kLiveWidth);
    progress_.hide();
    row.addWidget(&progress_);
}

void CalibrationRecord::addCommands(QHBoxLayout& row)
{
    const struct {
        const char* name;
        QString caption;
        QString about;
        void (CalibrationRecord::*command)();
    } rows[] = {
        {"Download", tr("&Download ..."), tr("Sends the measured points to the readout"),
         &CalibrationRecord::Download_Click},
        {"SwitchOff", tr("Switch &Correction Off ..."),
         tr("Sends a table of zeros, so that readings come as measured"),
         &CalibrationRecord::SwitchOff_Click},
        {"ClearRun", tr("Cl&ear Run ..."), tr("Forgets what was taken of the chosen run"),
         &CalibrationRecord::ClearRun_Click},
        {"NewTable", tr("&New Table ..."),
         tr("Empties all points, after a dated copy of both files was kept"),
         &CalibrationRecord::NewTable_Click},
        {"SaveRecord", tr("&Save Record ..."), tr("Saves the record as PDF, HTML, picture or JSON"),
         &CalibrationRecord::SaveRecord_Click},
    };
    for (const auto& [name, caption, about, command] : rows) {
        auto* button = new QPushButton(caption);
        button->setObjectName(QLatin1String(name));
        button->setToolTip(about);
        button->setAutoDefault(false);
        onCommand(button, command);
        commands_.push_back(button);
        row.addWidget(button);
    }
    row.addStretch();
}

void CalibrationRecord::layOut()
{
    auto* rows = new QVBoxLayout(this);
    rows->setContentsMargins(16, 16, 16, 12);
    rows->setSpacing(10);
    auto* details = new QGridLayout;
    auto* runs = new QHBoxLayout;
    auto* taking = new QHBoxLayout;
    auto* commands = new QHBoxLayout;
    addDetails(*details);
    addRuns(*runs);
    addTaking(*taking);
    addCommands(*commands);
    judgement_.setObjectName(QStringLiteral("Judgement"));
    judgement_.setAccessibleName(tr("Judgement"));
    judgement_.setReadOnly(true);
    judgement_.setTabChangesFocus(true);
    judgement_.setFixedHeight(kJudgementLines * judgement_.fontMetrics().lineSpacing() + 12);
    rows->addLayout(details);
    rows->addLayout(runs);
    rows->addWidget(makeMiddle(), 1);
    rows->addLayout(taking);
    rows->addWidget(&judgement_);
    rows->addLayout(commands);
    addStatusLine();
    std::vector<QWidget*> order{&dial_, &liveOn_, &judgement_};
    for (auto* button : commands_)
        order.push_back(button);
    for (QWidget* widget : std::initializer_list<QWidget*>{
             &direction_, &address_, &serial_, &gauge_, &tolerance_, &steady_, &person_, &remark_,
             runs_.button(0), runs_.button(1), runs_.button(2), &repeats_, &down_, &zeroIsFree_, &table_})
        order.push_back(widget);
    for (std::size_t i = 1; i < order.size(); ++i)
        setTabOrder(order[i - 1], order[i]);
    resize(kWindowSize);
}

} // namespace quorvel::calibration
