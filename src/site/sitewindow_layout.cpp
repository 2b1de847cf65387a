// How the window "Site" is laid out.

#include "link/address.h"
#include "main/progress.h"
#include "site/sitewindow.h"
#include "site/typedelegate.h"

#include <QHBoxLayout>
#include <QHeaderView>
#include <QSplitter>
#include <QVBoxLayout>

#include <algorithm>

namespace quorvel::site {

namespace {

constexpr QSize kStartSize(1240, 860);
constexpr int kSecondsOfDay = 86400;
constexpr int kUsualSeconds = 10;
constexpr int kRowPadding = 6;
constexpr int kTableLines = 5;
constexpr int kLongestName = 3; // times the usual one

/// Widest usual text of each column.
constexpr const char* kUsualTexts[] = {
    "Address ",
    "Block 12, crest",
    "Type ",
    "+001.50000",
    "+001.50000",
    "+001.50000",
    "+001.50000",
    "12 min 30 s",
    "not asked yet",
    "X above 2.5",
    "X +0.00000  Y +0.00000",
    "X +0.00000  Y +0.00000",
    "100 % of 9999, 120 ms",
    "-12 min 30 s",
    "-2.5 to 2.5",
    "-2.5 to 2.5",
    "-2.5 to 2.5",
    "-2.5 to 2.5",
    "Zero of 2024-05-17",
};
static_assert(std::size(kUsualTexts) == SiteModel::kColumns);

constexpr auto kFourChanges = "X +0.00000  Y +0.00000  Z1 +0.00000  Z2 +0.00000";

int widthFor(const QFontMetrics& metrics, const char* text)
{
    return metrics.horizontalAdvance(QLatin1String(text)) + metrics.horizontalAdvance(QStringLiteral("MM"));
}

void addField(QHBoxLayout& row, QLineEdit& field, const QString& caption, const char* name)
{
    auto* label = new QLabel(caption);
    label->setBuddy(&field);
    field.setObjectName(QLatin1String(name));
    row.addWidget(label);
    row.addWidget(&field);
}

} // namespace

void SiteWindow::layOut()
{
    auto* rows = new QVBoxLayout(this);
    addFileRow(*rows);
    addTextRow(*rows);
    makeTable();
    auto* upper = new QWidget;
    auto* upperRows = new QVBoxLayout(upper);
    upperRows->setContentsMargins({});
    upperRows->addWidget(&table_, 1);
    addSweepRow(*upperRows);
    addLogRow(*upperRows);
    auto* parts = new QSplitter(Qt::Vertical);
    parts->setObjectName(QStringLiteral("SiteParts"));
    parts->setChildrenCollapsible(false);
    parts->addWidget(upper);
    parts->addWidget(&trendPanel_);
    rows->addWidget(parts, 1);
    connect(&trendPanel_, &TrendPanel::told, this, &SiteWindow::tell);
    progress_.setObjectName(QStringLiteral("SiteProgress"));
    progress_.setAccessibleName(tr("Progress"));
    emptyBar(progress_);
    rows->addWidget(&progress_);
    addStatusLine();
    resize(kStartSize);
}

void SiteWindow::addButton(QHBoxLayout& row, QPushButton& button, const QString& caption, const char* name,
                           const std::function<void()>& handler)
{
    button.setText(caption);
    button.setObjectName(QLatin1String(name));
    button.setAutoDefault(false);
    connect(&button, &QPushButton::clicked, this, handler);
    row.addWidget(&button);
}

void SiteWindow::addFileRow(QBoxLayout& rows)
{
    auto* row = new QHBoxLayout;
    addButton(*row, new_, tr("&New"), "SiteNew", [this] { besides([this] { New_Click(); }); });
    addButton(*row, fromSearch_, tr("New &from Search"), "SiteFromSearch",
              [this] { talk([this] { NewFromSearch_Click(); }); });
    addButton(*row, open_, tr("&Open ..."), "SiteOpen", [this] { besides([this] { Open_Click(); }); });
    addButton(*row, save_, tr("&Save"), "SiteSave", [this] { besides([this] { Save_Click(); }); });
    addButton(*row, saveAs_, tr("Save &As ..."), "SiteSaveAs",
              [this] { besides([this] { SaveAs_Click(); }); });
    row->addStretch(1);
    addButton(*row, report_, tr("S&ite Report ..."), "SiteReport",
              [this] { besides([this] { Report_Click(); }); });
    rows.addLayout(row);
}

void SiteWindow::addTextRow(QBoxLayout& rows)
{
    auto* row = new QHBoxLayout;
    addField(*row, siteName_, tr("Na&me"), "SiteName");
    addField(*row, port_, tr("&Port"), "SitePort");
    addField(*row, note_, tr("Not&e"), "SiteNote");
    row->setStretchFactor(&siteName_, 2);
    row->setStretchFactor(&port_, 2);
    row->setStretchFactor(&note_, 3);
    for (auto* field : {&siteName_, &port_, &note_}) {
        connect(field, &QLineEdit::textEdited, this,
                [this] { model_.setTexts(siteName_.text(), port_.text(), note_.text()); });
    }
    addButton(*row, add_, tr("Add Rea&dout"), "SiteAdd", [this] {
        const int added = model_.addReadout();
        if (added < 0) return tell(tr("The site has all 249 addresses."));
        const auto cell = sorted_.mapFromSource(model_.index(added, SiteModel::AddressColumn));
        table_.setFocus();
        table_.setCurrentIndex(cell);
        table_.edit(cell);
    });
    addButton(*row, remove_, tr("Remo&ve Readout"), "SiteRemove",
              [this] { besides([this] { Remove_Click(); }); });
    rows.addLayout(row);
}

void SiteWindow::makeTable()
{
    sorted_.setSourceModel(&model_);
    sorted_.setSortRole(SiteModel::kSortRole);
    sorted_.setSortCaseSensitivity(Qt::CaseInsensitive);
    table_.setObjectName(QStringLiteral("SiteTable"));
    table_.setAccessibleName(tr("Readouts"));
    table_.setModel(&sorted_);
    table_.setItemDelegateForColumn(SiteModel::TypeColumn, new TypeDelegate(&table_));
    table_.setSelectionBehavior(QAbstractItemView::SelectRows);
    table_.setEditTriggers(QAbstractItemView::DoubleClicked | QAbstractItemView::EditKeyPressed);
    table_.setTabKeyNavigation(false);
    table_.setWordWrap(false);
    table_.setAlternatingRowColors(true);
    table_.verticalHeader()->hide();
    table_.verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    const auto metrics = table_.fontMetrics();
    table_.verticalHeader()->setDefaultSectionSize(metrics.height() + kRowPadding);
    table_.setMinimumHeight(kTableLines * (metrics.height() + kRowPadding));
    for (int column = 0; column < SiteModel::kColumns; ++column)
        table_.setColumnWidth(column, widthFor(metrics, kUsualTexts[column]));
    connect(table_.selectionModel(), &QItemSelectionModel::selectionChanged, this, &SiteWindow::chooseCurves);
    table_.setSortingEnabled(true);
    table_.sortByColumn(-1, Qt::AscendingOrder); // as in the file
}

void SiteWindow::showColumns()
{
    if (table_.isColumnHidden(SiteModel::Z1Column) && model_.hasSensor(protocol::Sensor::Z1)) {
        for (const int column : {SiteModel::SinceBeforeColumn, SiteModel::SinceZeroColumn})
            table_.setColumnWidth(column, widthFor(table_.fontMetrics(), kFourChanges));
    }
    for (const auto sensor : kSensors) {
        const auto place = static_cast<int>(placeOf(sensor));
        const bool hidden = sensor != protocol::Sensor::X && !model_.hasSensor(sensor);
        table_.setColumnHidden(SiteModel::XColumn + place, hidden);
        table_.setColumnHidden(SiteModel::LimitXColumn + place, hidden);
    }
}

/// Names are seen whole, unless one is so long that it would push the values out of sight.
void SiteWindow::fitNames()
{
    const int usual = widthFor(table_.fontMetrics(), kUsualTexts[SiteModel::NameColumn]);
    table_.resizeColumnToContents(SiteModel::NameColumn);
    table_.setColumnWidth(SiteModel::NameColumn,
                          std::clamp(table_.columnWidth(SiteModel::NameColumn), usual, kLongestName * usual));
}

/// The trend is that of the chosen rows, in the order of the site.
void SiteWindow::chooseCurves()
{
    std::vector<int> rows;
    for (const auto& index : table_.selectionModel()->selectedRows())
        rows.push_back(sorted_.mapToSource(index).row());
    std::sort(rows.begin(), rows.end());
    trendPanel_.choose(model_.site(), rows);
}

void SiteWindow::addSweepRow(QBoxLayout& rows)
{
    auto* row = new QHBoxLayout;
    addButton(*row, sweep_, tr("S&weep"), "SiteSweep", [this] { Sweep_Click(); });
    sweep_.setDefault(true);
    every_.setText(tr("eve&ry"));
    every_.setObjectName(QStringLiteral("SiteEvery"));
    every_.setAccessibleName(tr("Repeat sweeps"));
    seconds_.setObjectName(QStringLiteral("SiteSeconds"));
    seconds_.setAccessibleName(tr("Seconds from sweep to sweep"));
    seconds_.setRange(1, kSecondsOfDay);
    seconds_.setValue(kUsualSeconds);
    seconds_.setSuffix(tr(" s"));
    connect(&every_, &QCheckBox::toggled, this, &SiteWindow::refreshControls);
    row->addWidget(&every_);
    row->addWidget(&seconds_);
    addButton(*row, stop_, tr("S&top"), "SiteStop", [this] { Stop_Click(); });
    row->addStretch(1);
    addButton(*row, zero_, tr("Mark &Zero"), "SiteZero", [this] {
        model_.markZero();
        tell(tr("The values of the latest sweep are zero now. Readouts that did not answer keep their former "
                "zero."));
    });
    addButton(*row, clocks_, tr("Ask Cloc&ks"), "SiteClocks", [this] { talk([this] { Clocks_Click(); }); });
    rows.addLayout(row);
}

void SiteWindow::addLogRow(QBoxLayout& rows)
{
    auto* row = new QHBoxLayout;
    toFile_.setText(tr("&Log to File ..."));
    toFile_.setObjectName(QStringLiteral("SiteLog"));
    connect(&toFile_, &QCheckBox::clicked, this, [this](bool on) {
        toFile_.setChecked(log_ != nullptr); // until it is done, which may have to wait or be refused
        besides([this, on] { Log_Toggled(on); });
    });
    daily_.setText(tr("a new file each da&y"));
    daily_.setObjectName(QStringLiteral("SiteDaily"));
    logged_.setObjectName(QStringLiteral("SiteLogged"));
    logged_.setTextFormat(Qt::PlainText);
    logged_.setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    row->addWidget(&toFile_);
    row->addWidget(&daily_);
    row->addWidget(&logged_, 1);
    rows.addLayout(row);
}

} // namespace quorvel::site
