#include "line/journalwindow.h"

#include "line/journal.h"
#include "main/inputfilter.h"

#include <QApplication>
#include <QClipboard>
#include <QFileInfo>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QPushButton>
#include <QShowEvent>
#include <QVBoxLayout>

namespace quorvel::line {

namespace {

/// A column of the window and the member of a line that it shows.
struct JournalColumn {
    const char* heading;
    const char* member;
    int width;
};
constexpr JournalColumn kColumns[] = {
    {"Time", "time", 180},     {"Readout", "address", 60}, {"What", "meaning", 260},
    {"Before", "old", 90},     {"Set to", "new", 110},     {"Confirmed", "confirmed", 75},
    {"Answer", "outcome", 85}, {"Program", "program", 85}, {"User", "user", 70},
    {"Port", "port", 110},
};

QString wordsOf(const QJsonValue& value)
{
    if (value.isBool()) return value.toBool() ? JournalWindow::tr("yes") : JournalWindow::tr("no");
    return value.toVariant().toString();
}

QString quoted(QString text)
{
    if (!text.contains(u',') && !text.contains(u'"') && !text.contains(u'\n')) return text;
    return u'"' + text.replace(u'"', QLatin1String("\"\"")) + u'"';
}

} // namespace

JournalWindow::JournalWindow(std::filesystem::path file, QWidget* parent)
    : QDialog(parent), file_(std::move(file))
{
    setObjectName(QStringLiteral("Journal"));
    setWindowTitle(tr("Journal"));
    InputFilter::letThrough(this);
    shown_.setSourceModel(&lines_);
    shown_.setFilterKeyColumn(-1);
    shown_.setFilterCaseSensitivity(Qt::CaseInsensitive);
    layOut();
    resize(1180, 420);
}

void JournalWindow::layOut()
{
    search_.setObjectName(QStringLiteral("JournalSearch"));
    search_.setPlaceholderText(tr("part of any column"));
    connect(&search_, &QLineEdit::textChanged, &shown_, &QSortFilterProxyModel::setFilterFixedString);
    auto* label = new QLabel(tr("Search"));
    label->setBuddy(&search_);
    auto* copy = new QPushButton(tr("Copy as CSV"));
    copy->setObjectName(QStringLiteral("JournalCopy"));
    copy->setAutoDefault(false);
    connect(copy, &QPushButton::clicked, this, &JournalWindow::copyCsv);
    auto* top = new QHBoxLayout;
    top->addWidget(label);
    top->addWidget(&search_, 1);
    top->addWidget(copy);
    table_.setObjectName(QStringLiteral("JournalLines"));
    table_.setAccessibleName(tr("Journal"));
    table_.setModel(&shown_);
    table_.setEditTriggers(QAbstractItemView::NoEditTriggers);
    table_.setSelectionBehavior(QAbstractItemView::SelectRows);
    table_.setTabKeyNavigation(false);
    table_.setWordWrap(false);
    table_.verticalHeader()->hide();
    status_.setObjectName(QStringLiteral("JournalStatus"));
    status_.setTextFormat(Qt::PlainText);
    status_.setWordWrap(true);
    status_.setTextInteractionFlags(Qt::TextSelectableByMouse);
    auto* rows = new QVBoxLayout(this);
    rows->addLayout(top);
    rows->addWidget(&table_);
    rows->addWidget(&status_);
}

void JournalWindow::showEvent(QShowEvent* event)
{
    QDialog::showEvent(event);
    if (!event->spontaneous()) read();
}

void JournalWindow::read()
{
    lines_.clear();
    QStringList headings;
    for (const auto& column : kColumns) {
        headings << tr(column.heading);
    }
    lines_.setHorizontalHeaderLabels(headings);
    const auto journal = readJournal(file_);
    for (const auto& line : journal.lines) {
        QList<QStandardItem*> cells;
        for (const auto& column : kColumns) {
            cells << new QStandardItem(wordsOf(line[QLatin1String(column.member)]));
        }
        lines_.appendRow(cells);
    }
    for (int i = 0; i < static_cast<int>(std::size(kColumns)); ++i) {
        table_.setColumnWidth(i, kColumns[i].width);
    }
    table_.scrollToBottom();
    auto words = tr("Lines in %1: %2. Older ones are in the files beside it.")
                     .arg(QFileInfo(file_).filePath())
                     .arg(lines_.rowCount());
    if (!journal.unread.empty())
        words += u' ' + tr("Lines that could not be read: %1.").arg(journal.unread.size());
    if (!journal.failure.isEmpty()) words = journal.failure;
    status_.setText(words);
}

void JournalWindow::copyCsv() const
{
    QStringList rows;
    QStringList names;
    for (const auto& column : kColumns) {
        names << QLatin1String(column.member);
    }
    rows << names.join(u',');
    for (int row = 0; row < shown_.rowCount(); ++row) {
        QStringList cells;
        for (int column = 0; column < shown_.columnCount(); ++column) {
            cells << quoted(shown_.index(row, column).data().toString());
        }
        rows << cells.join(u',');
    }
    QApplication::clipboard()->setText(rows.join(u'\n') + u'\n');
}

} // namespace quorvel::line
