#include "main/inputfilter.h"
#include "settings/settingscompare.h"

#include <QGridLayout>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QVBoxLayout>

namespace quorvel {

namespace {

constexpr QSize kStartSize(1100, 620);
constexpr int kAddressCharacters = 6;
constexpr int kTypeCharacters = 10; // an easy target

void name(QWidget& widget, const char* objectName) { widget.setObjectName(QLatin1String(objectName)); }

void name(QPushButton& button, const char* objectName, const QString& caption)
{
    name(button, objectName);
    button.setText(caption);
    button.setAutoDefault(false);
}

QLabel* labelFor(const QString& caption, QWidget& buddy)
{
    auto* label = new QLabel(caption);
    label->setBuddy(&buddy);
    return label;
}

} // namespace

void SettingsCompare::layOut()
{
    makeTable();
    auto* note = new QLabel(
        tr("Calibration tables are not among the settings: a readout cannot be asked for them. Keep "
           "the calibration files."));
    name(*note, "SettingsNote");
    note->setWordWrap(true);
    auto* all = new QVBoxLayout(this);
    all->addWidget(readoutRows());
    all->addWidget(&table_, 1);
    all->addWidget(sendRow());
    all->addWidget(note);
    all->addWidget(progressRow());
    addStatusLine();
    resize(kStartSize);
}

QWidget* SettingsCompare::readoutRows()
{
    struct Row {
        Readout& controls;
        QString caption, type, read;
        const char* names[3];
    };
    const Row rows[] = {
        {now_, tr("Readout"), tr("Type"), tr("Read"), {"SettingsAddress", "SettingsType", "SettingsRead"}},
        {other_,
         tr("Other Readout"),
         tr("Its Type"),
         tr("Read Other"),
         {"SettingsOtherAddress", "SettingsOtherType", "SettingsReadOther"}},
    };
    auto* box = new QWidget;
    auto* grid = new QGridLayout(box);
    grid->setContentsMargins({});
    for (int i = 0; i < static_cast<int>(std::size(rows)); ++i) {
        auto& controls = rows[i].controls;
        name(controls.address, rows[i].names[0]);
        name(controls.type, rows[i].names[1]);
        name(controls.read, rows[i].names[2], rows[i].read);
        controls.address.setMaximumWidth(kAddressCharacters * fontMetrics().averageCharWidth() * 2);
        controls.type.addItems(
            {QStringLiteral("A"), QStringLiteral("B"), QStringLiteral("C"), QStringLiteral("D")});
        controls.type.setMinimumContentsLength(kTypeCharacters);
        controls.type.setAccessibleName(rows[i].type);
        int column = 0;
        for (auto* widget : std::initializer_list<QWidget*>{
                 labelFor(rows[i].caption, controls.address), &controls.address,
                 labelFor(rows[i].type, controls.type), &controls.type, &controls.read}) {
            grid->addWidget(widget, i, column++);
        }
    }
    name(open_, "SettingsOpen", tr("Open File ..."));
    name(save_, "SettingsSave", tr("Save to File ..."));
    constexpr int kGap = 5;
    grid->setColumnStretch(kGap, 1);
    grid->addWidget(&save_, 0, kGap + 1);
    grid->addWidget(&open_, 1, kGap + 1);
    return box;
}

void SettingsCompare::makeTable()
{
    name(table_, "SettingsTable");
    table_.setAccessibleName(tr("Settings"));
    table_.setModel(&model_);
    table_.setTabKeyNavigation(false);
    table_.setWordWrap(true);
    table_.setSelectionMode(QAbstractItemView::SingleSelection);
    table_.verticalHeader()->hide();
    for (const int column :
         {SettingsModel::BeforeColumn, SettingsModel::SentColumn, SettingsModel::ReadBackColumn}) {
        table_.hideColumn(column);
    }
    table_.horizontalHeader()->setSectionResizeMode(QHeaderView::Stretch);
    table_.horizontalHeader()->setSectionResizeMode(SettingsModel::NameColumn, QHeaderView::ResizeToContents);
    connect(table_.horizontalHeader(), &QHeaderView::sectionResized, &table_,
            &QTableView::resizeRowsToContents);
}

QWidget* SettingsCompare::sendRow()
{
    auto* box = new QWidget;
    auto* row = new QHBoxLayout(box);
    row->setContentsMargins({});
    name(source_, "SettingsSource");
    source_.addItems({tr("File"), tr("Other Readout")});
    source_.setAccessibleName(tr("Send values of"));
    name(differing_, "SettingsChooseDiffering", tr("Choose What Differs"));
    name(none_, "SettingsChooseNothing", tr("Choose Nothing"));
    name(send_, "SettingsSend", tr("Send Chosen to Readout"));
    row->addWidget(labelFor(tr("Send values of"), source_));
    for (auto* widget : std::initializer_list<QWidget*>{&source_, &differing_, &none_, &send_}) {
        row->addWidget(widget);
    }
    row->addStretch(1);
    return box;
}

QWidget* SettingsCompare::progressRow()
{
    auto* box = new QWidget;
    auto* row = new QHBoxLayout(box);
    row->setContentsMargins({});
    name(progress_, "SettingsProgress");
    progress_.setAccessibleName(tr("Progress"));
    progress_.setFormat(QString());
    name(stop_, "SettingsStop", tr("Stop"));
    stop_.setEnabled(false);
    InputFilter::letThrough(&stop_);
    row->addWidget(&progress_, 1);
    row->addWidget(&stop_);
    return box;
}

} // namespace quorvel
