#include "line/finderwindow.h"

#include "main/messages.h"

#include <QHBoxLayout>
#include <QHeaderView>
#include <QVBoxLayout>

#include <utility>

namespace quorvel::line {

namespace {

enum FinderColumn { kAddress, kAnswerTime, kType, kRemark, kFinderColumns };
constexpr int kFinderWidths[] = {80, 100, 100};

QString inTwoDigits(int address) { return QStringLiteral("%1").arg(address, 2, 10, QLatin1Char('0')); }

} // namespace

FinderWindow::FinderWindow(const Workplace& workplace, Taker take, QWidget* parent)
    : RunWindow(workplace, QLatin1String(kName), tr("Search"), parent), take_(std::move(take))
{
    setWindowTitle(tr("Find Readouts One by One"));
    layOut();
    onStart([this] { find(); });
    resize(760, 420);
}

void FinderWindow::layOut()
{
    auto* top = new QHBoxLayout;
    addRange(*top);
    addButtons(*top);
    top->addStretch();
    addButton(*top, takeButton_, tr("Put into CCD List"), "Take", [this] { takeAddresses(); });
    takeButton_.setEnabled(false);
    makeTable();
    auto* rows = new QVBoxLayout(this);
    rows->addLayout(top);
    rows->addWidget(&table_, 1);
    addProgress(*rows);
}

void FinderWindow::addRange(QHBoxLayout& row)
{
    const auto add = [&](QSpinBox& box, const QString& caption, const char* name, int value) {
        box.setObjectName(nameOf(name));
        box.setRange(link::kLowestAddress, link::kHighestAddress);
        box.setValue(value);
        auto* label = new QLabel(caption);
        label->setBuddy(&box);
        row.addWidget(label);
        row.addWidget(&box);
    };
    add(from_, tr("From"), "From", link::kLowestAddress);
    add(to_, tr("to"), "To", link::kHighestAddress);
    connect(&from_, &QSpinBox::valueChanged, &to_, &QSpinBox::setMinimum);
}

void FinderWindow::makeTable()
{
    table_.setObjectName(nameOf("Readouts"));
    table_.setAccessibleName(tr("Readouts found"));
    table_.setColumnCount(kFinderColumns);
    table_.setHorizontalHeaderLabels({tr("Address"), tr("Answer ms"), tr("Type"), tr("Remark")});
    for (int column = 0; column < kRemark; ++column) {
        table_.setColumnWidth(column, kFinderWidths[column]);
    }
    table_.horizontalHeader()->setStretchLastSection(true);
    table_.verticalHeader()->hide();
    table_.setEditTriggers(QAbstractItemView::NoEditTriggers);
    table_.setSelectionBehavior(QAbstractItemView::SelectRows);
    table_.setTabKeyNavigation(false);
    table_.setMinimumHeight(160);
}

void FinderWindow::find()
{
    if (!module1_.port().PortOpen()) return say(kPortNotOpened);
    table_.setRowCount(0);
    takeButton_.setEnabled(false);
    const FinderTask task{from_.value(), to_.value()};
    const auto begun = module1_.clock().now();
    const auto result = findReadouts(module1_, task,
                                     {[this] { return stopAsked(); },
                                      [this, task](int address, double secondsLeft) {
                                          showTime(address - task.from, task.count(), secondsLeft);
                                          tell(tr("Asking address %1 ...").arg(address));
                                      },
                                      [this](const FoundReadout& readout) { showReadout(readout); }});
    if (!result.stopped && result.lostReason.isEmpty()) showTime(task.count(), task.count(), 0);
    report(result, static_cast<double>(begun.msecsTo(module1_.clock().now())) / 1000);
}

/// Shows a readout in its row; the rows ascend.
void FinderWindow::showReadout(const FoundReadout& readout)
{
    const auto address = inTwoDigits(readout.address);
    int row = 0;
    while (row < table_.rowCount() && table_.item(row, kAddress)->text().toInt() < readout.address) {
        ++row;
    }
    if (row == table_.rowCount() || table_.item(row, kAddress)->text() != address) table_.insertRow(row);
    const QString cells[] = {address, QString::number(readout.answerMs, 'f', 1), readout.type,
                             readout.remark};
    for (int column = 0; column < kFinderColumns; ++column) {
        auto* cell = new QTableWidgetItem(cells[column]);
        cell->setToolTip(cells[column]);
        table_.setItem(row, column, cell);
    }
}

void FinderWindow::report(const FinderResult& result, double seconds)
{
    takeButton_.setEnabled(!result.readouts.empty());
    auto words = tr("Readouts found: %1, in %2 s.").arg(result.readouts.size()).arg(seconds, 0, 'f', 0);
    if (result.stopped) words += tr(" Stopped before the end.");
    tell(words);
    if (result.echoes) addStatus(kEchoRemark);
    addStatus(result.lostReason);
}

void FinderWindow::takeAddresses() const
{
    std::vector<std::string> addresses;
    addresses.reserve(static_cast<std::size_t>(table_.rowCount()));
    for (int row = 0; row < table_.rowCount(); ++row) {
        addresses.push_back(table_.item(row, kAddress)->text().toStdString());
    }
    take_(addresses);
}

} // namespace quorvel::line
