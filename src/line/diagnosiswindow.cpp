#include "line/diagnosiswindow.h"

#include "line/diagnosis.h"
#include "link/address.h"
#include "link/bytes.h"

#include <QApplication>
#include <QClipboard>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QVBoxLayout>

#include <algorithm>

namespace quorvel::line {

namespace {

constexpr int kAddressBoxWidth = 60;
constexpr int kStepWidth = 130;
constexpr int kRowHeight = 26;
constexpr int kVerdictLines = 6;

} // namespace

DiagnosisWindow::DiagnosisWindow(const Workplace& workplace, const link::PortList& ports, QWidget* parent,
                                 const QString& address)
    : RunWindow(workplace, QLatin1String(kName), tr("Test"), parent), ports_(ports)
{
    setWindowTitle(tr("Why no answer?"));
    layOut();
    useAddressBox(address_);
    if (!address.isNull()) setAddress(address);
    onStart([this] { test(); });
    resize(720, 480);
}

void DiagnosisWindow::layOut()
{
    address_.setObjectName(nameOf("Address"));
    address_.setMaximumWidth(kAddressBoxWidth);
    auto* label = new QLabel(tr("CCD Address"));
    label->setBuddy(&address_);
    auto* top = new QHBoxLayout;
    top->addWidget(label);
    top->addWidget(&address_);
    addButtons(*top);
    top->addStretch();
    addButton(*top, *new QPushButton, tr("Copy"), "Copy", [this] { copy(); });
    steps_.setObjectName(nameOf("Steps"));
    steps_.setAccessibleName(tr("Steps"));
    steps_.setRowCount(kSteps);
    steps_.setColumnCount(2);
    steps_.setHorizontalHeaderLabels({tr("Step"), tr("Result")});
    steps_.setColumnWidth(0, kStepWidth);
    steps_.horizontalHeader()->setStretchLastSection(true);
    steps_.verticalHeader()->hide();
    steps_.verticalHeader()->setMinimumSectionSize(kRowHeight);
    steps_.verticalHeader()->setSectionResizeMode(QHeaderView::ResizeToContents);
    steps_.setEditTriggers(QAbstractItemView::NoEditTriggers);
    steps_.setSelectionBehavior(QAbstractItemView::SelectRows);
    steps_.setTabKeyNavigation(false);
    for (int i = 0; i < kSteps; ++i) {
        steps_.setItem(i, 0, new QTableWidgetItem(line::nameOf(static_cast<Step>(i))));
        steps_.setItem(i, 1, new QTableWidgetItem);
    }
    verdict_.setObjectName(nameOf("Verdict"));
    verdict_.setTextFormat(Qt::PlainText);
    verdict_.setWordWrap(true);
    verdict_.setAlignment(Qt::AlignTop | Qt::AlignLeft);
    verdict_.setMinimumHeight(kVerdictLines * verdict_.fontMetrics().lineSpacing());
    verdict_.setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    verdict_.setFocusPolicy(Qt::StrongFocus);
    auto* rows = new QVBoxLayout(this);
    rows->addLayout(top);
    rows->addWidget(&steps_, 1);
    rows->addWidget(&verdict_);
    addProgress(*rows);
}

// Without an address the line alone is tested.
QString DiagnosisWindow::warning() const
{
    return address_.text().isEmpty() ? QString() : RunWindow::warning();
}

DiagnosisTask DiagnosisWindow::task() const
{
    DiagnosisTask task;
    const auto& port = module1_.port();
    const int index = ports_.indexOf(port.deviceName());
    task.port = index >= 0 ? ports_.entries()[static_cast<std::size_t>(index)].text : port.deviceName();
    task.whyClosed = port.PortOpen() ? QString() : port.lostReason();
    if (const int number = link::addressIn(link::bytes(address_.text())); number > 0) {
        task.address = number;
    } else {
        task.notAnAddress = address_.text();
    }
    task.type = bench_.instrumentType;
    return task;
}

void DiagnosisWindow::test()
{
    for (int i = 0; i < kSteps; ++i) {
        steps_.item(i, 1)->setText(QString());
    }
    verdict_.clear();
    const auto findings = diagnose(module1_, task(),
                                   {[this] { return stopAsked(); },
                                    [this](Step step, double secondsLeft) {
                                        const int row = static_cast<int>(step);
                                        steps_.item(row, 1)->setText(tr("..."));
                                        steps_.selectRow(row);
                                        showTime(row, kSteps, secondsLeft);
                                    },
                                    [this](Step step, const Findings& found) { showResult(step, found); }});
    showVerdict(conclude(findings));
}

void DiagnosisWindow::showResult(Step step, const Findings& findings)
{
    const int row = static_cast<int>(step);
    steps_.item(row, 1)->setText(resultOf(step, findings));
    showTime(row + 1, kSteps, 0);
}

void DiagnosisWindow::showVerdict(const Conclusion& verdict)
{
    steps_.clearSelection();
    for (int i = 0; i < kSteps; ++i) {
        if (steps_.item(i, 1)->text() == tr("...")) steps_.item(i, 1)->setText(QString());
    }
    QStringList lines{isWell(verdict.fault) ? verdict.what : tr("Most likely: %1").arg(verdict.what),
                      tr("Next step: %1").arg(verdict.next)};
    if (!verdict.unknown.isEmpty()) lines << tr("Not known: %1").arg(verdict.unknown);
    verdict_.setText(lines.join(u'\n'));
}

/// Steps and verdict, for whoever is asked for help.
void DiagnosisWindow::copy() const
{
    QStringList lines;
    for (int i = 0; i < kSteps; ++i) {
        lines << steps_.item(i, 0)->text() + QStringLiteral(": ") + steps_.item(i, 1)->text();
    }
    QApplication::clipboard()->setText(lines.join(u'\n') + u'\n' + verdict_.text() + u'\n');
}

} // namespace quorvel::line
