#include "line/healthwindow.h"

#include "main/inputfilter.h"

#include <QApplication>
#include <QClipboard>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

namespace quorvel::line {

namespace {

using protocol::Verdict;

constexpr int kRefreshInterval = 500; // ms
constexpr double kPercentile = 95;

const QStringList& headings()
{
    static const QStringList all{HealthWindow::tr("Readout"),  HealthWindow::tr("Exchanges"),
                                 HealthWindow::tr("Complete"), HealthWindow::tr("Silent"),
                                 HealthWindow::tr("Short"),    HealthWindow::tr("Not the answer"),
                                 HealthWindow::tr("Mean ms"),  HealthWindow::tr("95 % ms"),
                                 HealthWindow::tr("Worst ms"), HealthWindow::tr("Last good answer")};
    return all;
}

QStringList cellsOf(int address, const ReadoutHealth& readout)
{
    const auto ms = [](double value) { return QString::number(value, 'f', 1); };
    const auto& times = readout.answerMs;
    const bool any = times.count() > 0;
    return {QString::number(address),
            QString::number(readout.exchanges()),
            QString::number(readout.endedAs(Verdict::Complete)),
            QString::number(readout.endedAs(Verdict::Silent)),
            QString::number(readout.endedAs(Verdict::Short)),
            QString::number(readout.endedAs(Verdict::NotTheAnswer)),
            any ? ms(times.mean()) : QString(),
            any ? ms(times.percentile(kPercentile)) : QString(),
            any ? ms(times.worst()) : QString(),
            readout.lastGood.toString(QStringLiteral("yyyy-MM-dd HH:mm:ss"))};
}

} // namespace

HealthWindow::HealthWindow(Health& health, QWidget* parent) : QDialog(parent), health_(health)
{
    setObjectName(QStringLiteral("LineHealth"));
    setWindowTitle(tr("Line Health"));
    InputFilter::letThrough(this);
    table_.setObjectName(QStringLiteral("LineHealthReadouts"));
    table_.setAccessibleName(tr("Readouts"));
    table_.setColumnCount(static_cast<int>(headings().size()));
    table_.setHorizontalHeaderLabels(headings());
    table_.verticalHeader()->hide();
    table_.setEditTriggers(QAbstractItemView::NoEditTriggers);
    table_.setSelectionBehavior(QAbstractItemView::SelectRows);
    table_.setTabKeyNavigation(false);
    table_.horizontalHeader()->setSectionResizeMode(QHeaderView::ResizeToContents);
    table_.horizontalHeader()->setStretchLastSection(true);
    auto* note =
        new QLabel(tr("Answer times run from the end of the frame to the last character of a good answer."));
    note->setWordWrap(true);
    auto* buttons = new QHBoxLayout;
    buttons->addWidget(note, 1);
    const auto addButton = [&](const QString& caption, const char* name, auto handler) {
        auto* button = new QPushButton(caption);
        button->setObjectName(QLatin1String(name));
        button->setAutoDefault(false);
        connect(button, &QPushButton::clicked, this, handler);
        buttons->addWidget(button);
    };
    addButton(tr("Copy as CSV"), "LineHealthCopy",
              [this] { QApplication::clipboard()->setText(health_.csv()); });
    addButton(tr("Reset"), "LineHealthReset", [this] {
        health_.reset();
        refresh();
    });
    auto* rows = new QVBoxLayout(this);
    rows->addWidget(&table_);
    rows->addLayout(buttons);
    resize(860, 320);
    refresh_.setInterval(kRefreshInterval);
    connect(&refresh_, &QTimer::timeout, this, &HealthWindow::refresh);
}

void HealthWindow::showEvent(QShowEvent* event)
{
    QDialog::showEvent(event);
    refresh();
    refresh_.start();
}

void HealthWindow::hideEvent(QHideEvent* event)
{
    refresh_.stop();
    QDialog::hideEvent(event);
}

void HealthWindow::setCell(int row, int column, const QString& text)
{
    auto* item = table_.item(row, column);
    if (!item) {
        item = new QTableWidgetItem;
        item->setTextAlignment(Qt::AlignRight | Qt::AlignVCenter);
        table_.setItem(row, column, item);
    }
    if (item->text() != text) item->setText(text);
}

void HealthWindow::refresh()
{
    table_.setRowCount(static_cast<int>(health_.readouts().size()));
    int row = 0;
    for (const auto& [address, readout] : health_.readouts()) {
        const auto cells = cellsOf(address, readout);
        for (int column = 0; column < static_cast<int>(cells.size()); ++column) {
            setCell(row, column, cells[column]);
        }
        ++row;
    }
}

} // namespace quorvel::line
