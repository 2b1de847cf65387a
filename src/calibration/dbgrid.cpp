#include "calibration/dbgrid.h"

#include "calibration/celldelegate.h"

#include <QHeaderView>
#include <QKeyEvent>
#include <QScrollBar>

#include <algorithm>
#include <utility>

namespace quorvel::calibration {

DBGrid::DBGrid(QWidget* parent) : QTableView(parent), delegate_(new CellDelegate(this))
{
    setItemDelegate(delegate_);
    setSelectionMode(QAbstractItemView::SingleSelection);
    setEditTriggers(DoubleClicked | EditKeyPressed | AnyKeyPressed);
    setTabKeyNavigation(false);
    setAlternatingRowColors(true);
    verticalHeader()->hide();
    horizontalHeader()->setSectionResizeMode(QHeaderView::Stretch);
    horizontalHeader()->setHighlightSections(false);
}

// A child of the window and not of the cells: screen readers look for buttons there only.
void DBGrid::setCellButton(int column, const QString& name)
{
    buttonColumn_ = column;
    button_ = new QToolButton(parentWidget());
    button_->setObjectName(QStringLiteral("CellButton"));
    button_->setText(QStringLiteral("…"));
    button_->setAccessibleName(name);
    button_->setToolTip(tr("%1 (space bar or F4)").arg(name));
    button_->setFocusPolicy(Qt::TabFocus);
    button_->hide();
    setTabOrder(this, button_);
    // The button goes away with its cell, and would hand the focus to the next box of the window.
    connect(button_, &QToolButton::clicked, this, [this] {
        setFocus();
        Q_EMIT ButtonClick();
    });
    delegate_->leaveRoom(column, verticalHeader()->defaultSectionSize());
    placeButton();
}

void DBGrid::showRows(int count)
{
    const int rows = count * verticalHeader()->defaultSectionSize();
    setMinimumHeight(rows + horizontalHeader()->sizeHint().height() + 2 * frameWidth());
}

void DBGrid::setModel(QAbstractItemModel* model)
{
    QTableView::setModel(model);
    connect(model, &QAbstractItemModel::modelAboutToBeReset, this, &DBGrid::keepPlace);
    connect(model, &QAbstractItemModel::modelReset, this, &DBGrid::returnToPlace);
}

void DBGrid::keepPlace()
{
    const auto* editor = delegate_->openEditor();
    place_ = {currentIndex().row(), currentIndex().column(), editor && editor->hasFocus()};
}

void DBGrid::returnToPlace()
{
    setCurrentIndex(model()->index(std::min(place_.row, model()->rowCount() - 1),
                                   std::min(place_.column, model()->columnCount() - 1)));
    if (place_.typing) setFocus();
    placeButton();
}

bool DBGrid::commitTyped()
{
    if (QPointer<QWidget> editor = delegate_->openEditor()) {
        commitData(editor);
        if (editor) closeEditor(editor, QAbstractItemDelegate::NoHint);
    }
    return !std::exchange(refused_, false);
}

bool DBGrid::onButtonCell() const { return button_ && currentIndex().column() == buttonColumn_; }

void DBGrid::keyPressEvent(QKeyEvent* event)
{
    switch (event->key()) {
    case Qt::Key_Return:
    case Qt::Key_Enter:
        goDown();
        return;
    case Qt::Key_Space:
    case Qt::Key_F4:
        pressButton();
        return;
    default:
        QTableView::keyPressEvent(event);
    }
}

// The columns behind the button are filled by it, too: measuring Z leaves the last one current.
void DBGrid::pressButton()
{
    if (!button_ || currentIndex().column() < buttonColumn_) return;
    setCurrentIndex(currentIndex().siblingAtColumn(buttonColumn_));
    button_->click();
}

void DBGrid::goDown()
{
    const auto index = currentIndex();
    if (index.row() + 1 < model()->rowCount()) setCurrentIndex(index.siblingAtRow(index.row() + 1));
}

// Return, and nothing else, ends an editor with SubmitModelCache; losing the focus ends it without a hint.
void DBGrid::closeEditor(QWidget* editor, QAbstractItemDelegate::EndEditHint hint)
{
    // A reset of the model has closed it before, when taking its text moved the columns.
    if (editor == delegate_->openEditor()) QTableView::closeEditor(editor, hint);
    refused_ = hint == QAbstractItemDelegate::NoHint && !delegate_->taken();
    if (hint == QAbstractItemDelegate::SubmitModelCache && delegate_->taken()) goDown();
}

void DBGrid::currentChanged(const QModelIndex& current, const QModelIndex& previous)
{
    QTableView::currentChanged(current, previous);
    refused_ = false;
    if (current.row() != previous.row() && model()) model()->submit();
    placeButton();
}

void DBGrid::updateGeometries()
{
    QTableView::updateGeometries();
    placeButton();
}

void DBGrid::scrollContentsBy(int dx, int dy)
{
    QTableView::scrollContentsBy(dx, dy);
    placeButton();
}

bool DBGrid::event(QEvent* event)
{
    const bool done = QTableView::event(event);
    if (event->type() == QEvent::Move || event->type() == QEvent::Show) placeButton();
    return done;
}

void DBGrid::placeButton()
{
    if (!button_) return;
    auto cell = visualRect(currentIndex());
    const bool there = onButtonCell() && viewport()->rect().contains(cell);
    button_->setVisible(there);
    if (!there) return;
    cell.setLeft(cell.right() - verticalHeader()->defaultSectionSize() + 1);
    button_->setGeometry(QRect(viewport()->mapTo(button_->parentWidget(), cell.topLeft()), cell.size()));
    button_->raise();
}

} // namespace quorvel::calibration
