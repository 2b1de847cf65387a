#include "line/trafficpanel.h"

#include "link/bytes.h"
#include "main/inputfilter.h"

#include <QAction>
#include <QApplication>
#include <QClipboard>
#include <QFontDatabase>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QScrollBar>
#include <QVBoxLayout>

#include <algorithm>

namespace quorvel::line {

namespace {

constexpr int kWidths[] = {100, 60, 210, 160, 290, 110, 64, 64};
constexpr int kMostAddress = 255;

void addLabelled(QLayout& row, const QString& caption, QWidget& field, const char* name)
{
    auto* label = new QLabel(caption);
    label->setBuddy(&field);
    field.setObjectName(QLatin1String(name));
    field.setAccessibleName(caption);
    row.addWidget(label);
    row.addWidget(&field);
}

} // namespace

TrafficPanel::TrafficPanel(TrafficModel& model, Trace& trace, const Workplace& workplace, QWidget* parent)
    : QDockWidget(tr("Traffic"), parent), model_(model), trace_(trace), gate_(workplace.gate),
      messages_(workplace.messages)
{
    setObjectName(QStringLiteral("Traffic"));
    auto* content = new QWidget;
    auto* rows = new QVBoxLayout(content);
    auto* filters = new QHBoxLayout;
    makeFilters(*filters);
    filters->addStretch();
    rows->addLayout(filters);
    makeTable();
    rows->addWidget(&table_);
    auto* buttons = new QHBoxLayout;
    makeButtons(*buttons);
    rows->addLayout(buttons);
    setWidget(content);
    // It is of use while a handler talks.
    InputFilter::letThrough(this);
    connect(&trace_, &Trace::failed, this, [this](const QString& reason) {
        record_.setText(tr("Record to File ..."));
        showRecording(reason);
    });
}

void TrafficPanel::makeFilters(QLayout& row)
{
    readout_.setPlaceholderText(tr("all"));
    readout_.setMaximumWidth(60);
    addLabelled(row, tr("Readout"), readout_, "TrafficReadout");
    connect(&readout_, &QLineEdit::textChanged, this, [this](const QString& text) {
        bool isNumber = false;
        const int address = text.toInt(&isNumber);
        const bool one = isNumber && address >= 0 && address <= kMostAddress;
        filter_.setReadout(one ? std::optional(address) : std::nullopt);
    });
    kind_.addItem(tr("all"));
    for (const auto kind : {link::Kind::Search, link::Kind::Query, link::Kind::Set, link::Kind::Delete}) {
        kind_.addItem(link::shown(protocol::nameOf(kind)));
    }
    addLabelled(row, tr("Kind"), kind_, "TrafficKind");
    connect(&kind_, &QComboBox::currentIndexChanged, this, [this](int index) {
        filter_.setKind(index > 0 ? std::optional(static_cast<link::Kind>(index - 1)) : std::nullopt);
    });
    outcome_.addItem(tr("all"));
    for (int i = 0; i < protocol::kVerdicts; ++i) {
        outcome_.addItem(link::shown(protocol::nameOf(static_cast<protocol::Verdict>(i))));
    }
    addLabelled(row, tr("Outcome"), outcome_, "TrafficOutcome");
    connect(&outcome_, &QComboBox::currentIndexChanged, this, [this](int index) {
        filter_.setVerdict(index > 0 ? std::optional(static_cast<protocol::Verdict>(index - 1))
                                     : std::nullopt);
    });
    find_.setPlaceholderText(tr("text, then Return"));
    addLabelled(row, tr("Find"), find_, "TrafficFind");
    connect(&find_, &QLineEdit::returnPressed, this,
            [this] { find(QApplication::keyboardModifiers().testFlag(Qt::ShiftModifier) ? -1 : 1); });
}

void TrafficPanel::makeTable()
{
    filter_.setSourceModel(&model_);
    table_.setObjectName(QStringLiteral("TrafficLines"));
    table_.setAccessibleName(tr("Traffic"));
    table_.setModel(&filter_);
    table_.setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    table_.setSelectionBehavior(QAbstractItemView::SelectRows);
    table_.setEditTriggers(QAbstractItemView::NoEditTriggers);
    table_.setWordWrap(false);
    table_.setTabKeyNavigation(false);
    table_.verticalHeader()->hide();
    table_.verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    table_.verticalHeader()->setDefaultSectionSize(table_.fontMetrics().height() + 6);
    for (int column = 0; column < TrafficModel::kColumns; ++column) {
        table_.setColumnWidth(column, kWidths[column]);
    }
    table_.setMinimumSize(700, 160);
    auto* copyRows = new QAction(tr("Copy"), &table_);
    copyRows->setShortcut(QKeySequence::Copy);
    copyRows->setShortcutContext(Qt::WidgetShortcut);
    connect(copyRows, &QAction::triggered, this, &TrafficPanel::copy);
    table_.addAction(copyRows);
    // The newest line stays in sight while the last one is.
    connect(&filter_, &QAbstractItemModel::rowsAboutToBeInserted, this, [this] {
        const auto* bar = table_.verticalScrollBar();
        table_.setProperty("follows", bar->value() == bar->maximum());
    });
    connect(&filter_, &QAbstractItemModel::rowsInserted, this, [this] {
        if (table_.property("follows").toBool()) table_.scrollToBottom();
    });
}

void TrafficPanel::makeButtons(QLayout& row)
{
    pause_.setText(tr("Pause"));
    pause_.setObjectName(QStringLiteral("TrafficPause"));
    connect(&pause_, &QCheckBox::toggled, this, [this](bool on) { model_.setPaused(on); });
    row.addWidget(&pause_);
    const auto addButton = [&](QPushButton& button, const QString& caption, const char* name, auto handler) {
        button.setText(caption);
        button.setObjectName(QLatin1String(name));
        connect(&button, &QPushButton::clicked, this, handler);
        row.addWidget(&button);
    };
    addButton(*new QPushButton, tr("Copy"), "TrafficCopy", [this] { copy(); });
    addButton(*new QPushButton, tr("Clear"), "TrafficClear", [this] { model_.clear(); });
    addButton(record_, tr("Record to File ..."), "TrafficRecord", [this] { record(); });
    status_.setObjectName(QStringLiteral("TrafficStatus"));
    status_.setTextFormat(Qt::PlainText);
    status_.setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    row.addWidget(&status_);
    static_cast<QHBoxLayout&>(row).setStretchFactor(&status_, 1);
    showRecording(trace_.isOpen() ? tr("Recording to %1").arg(trace_.path()) : QString());
    if (trace_.isOpen()) record_.setText(tr("Stop Recording"));
}

/// Goes to the next line, or the one before, in which the text occurs; round the end.
void TrafficPanel::find(int step)
{
    const int count = filter_.rowCount();
    const auto text = find_.text();
    if (count == 0 || text.isEmpty()) return;
    const int start = table_.currentIndex().isValid() ? table_.currentIndex().row() : (step > 0 ? -1 : count);
    for (int tried = 1; tried <= count; ++tried) {
        const int row = ((start + step * tried) % count + count) % count;
        for (int column = 0; column < TrafficModel::kColumns; ++column) {
            const auto cell = filter_.index(row, column);
            if (!cell.data().toString().contains(text, Qt::CaseInsensitive)) continue;
            table_.setCurrentIndex(cell);
            return showRecording({});
        }
    }
    showRecording(tr("\"%1\" was not found.").arg(text));
}

/// The selected lines, or all that are shown, with tabs between the columns.
void TrafficPanel::copy() const
{
    auto rows = table_.selectionModel()->selectedRows();
    if (rows.isEmpty()) {
        for (int row = 0; row < filter_.rowCount(); ++row) {
            rows << filter_.index(row, 0);
        }
    }
    std::sort(rows.begin(), rows.end());
    QStringList lines;
    for (const auto& row : rows) {
        QStringList cells;
        for (int column = 0; column < TrafficModel::kColumns; ++column) {
            cells << row.siblingAtColumn(column).data().toString();
        }
        lines << cells.join(u'\t');
    }
    QApplication::clipboard()->setText(lines.join(u'\n'));
}

void TrafficPanel::record()
{
    if (trace_.isOpen()) {
        showRecording(tr("Recorded to %1").arg(trace_.path()));
        trace_.close();
        record_.setText(tr("Record to File ..."));
        return;
    }
    // The dialog would halt the command until it is closed.
    if (gate_.busy())
        return showRecording(tr("Wait until the running command has ended, then choose the file."));
    const auto path = messages_.chooseFile(this, {tr("Record Traffic"), tr("Traffic (*.jsonl)"), true});
    if (path.isEmpty()) return;
    const auto reason = trace_.open(path);
    showRecording(reason.isEmpty() ? tr("Recording to %1").arg(path) : reason);
    if (reason.isEmpty()) record_.setText(tr("Stop Recording"));
}

void TrafficPanel::showRecording(const QString& words)
{
    status_.setText(words);
    status_.setToolTip(words);
}

} // namespace quorvel::line
