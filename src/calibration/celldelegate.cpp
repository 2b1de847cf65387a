#include "calibration/celldelegate.h"

#include <QKeyEvent>
#include <QLineEdit>

namespace quorvel::calibration {

void CellDelegate::leaveRoom(int column, int width)
{
    column_ = column;
    width_ = width;
}

QStyleOptionViewItem CellDelegate::withoutButton(QStyleOptionViewItem option, const QModelIndex& index) const
{
    if (index.column() == column_) option.rect.setRight(option.rect.right() - width_);
    return option;
}

QWidget* CellDelegate::createEditor(QWidget* parent, const QStyleOptionViewItem&,
                                    const QModelIndex& index) const
{
    auto* editor = new QLineEdit(parent);
    editor->setFrame(false);
    editor->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    editor->setAccessibleName(index.model()->headerData(index.column(), Qt::Horizontal).toString());
    editor_ = editor;
    taken_ = true;
    return editor;
}

// A closed editor lives on until the event loop deletes it; it is no longer open, though.
void CellDelegate::destroyEditor(QWidget* editor, const QModelIndex& index) const
{
    if (editor_ == editor) editor_ = nullptr;
    QStyledItemDelegate::destroyEditor(editor, index);
}

void CellDelegate::setModelData(QWidget* editor, QAbstractItemModel* model, const QModelIndex& index) const
{
    taken_ = model->setData(index, static_cast<QLineEdit*>(editor)->text(), Qt::EditRole);
}

// Qt ends an editor some events after Return. What a dial gauge with a keyboard plug types would be faster, and the next
// value would go into the cell of the last one.
bool CellDelegate::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == editor_ && event->type() == QEvent::KeyPress) {
        const auto key = static_cast<QKeyEvent*>(event)->key();
        if (key == Qt::Key_Return || key == Qt::Key_Enter) {
            const QPointer<QWidget> editor = editor_;
            Q_EMIT commitData(editor);
            if (editor) Q_EMIT closeEditor(editor, SubmitModelCache);
            return true;
        }
    }
    return QStyledItemDelegate::eventFilter(watched, event);
}

void CellDelegate::updateEditorGeometry(QWidget* editor, const QStyleOptionViewItem& option,
                                        const QModelIndex& index) const
{
    editor->setGeometry(withoutButton(option, index).rect);
}

void CellDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option,
                         const QModelIndex& index) const
{
    QStyledItemDelegate::paint(painter, withoutButton(option, index), index);
}

} // namespace quorvel::calibration
