#pragma once

#include <QPointer>
#include <QStyledItemDelegate>

namespace quorvel::calibration {

/// Edits cells of DBGrid, and leaves the right end of one column's cells to a button.
class CellDelegate final : public QStyledItemDelegate {
    Q_OBJECT
public:
    using QStyledItemDelegate::QStyledItemDelegate;

    /// @param column  -1 for none.
    void leaveRoom(int column, int width);

    QWidget* openEditor() const { return editor_; }
    /// False when the text edited last was refused by the model.
    bool taken() const { return taken_; }

    QWidget* createEditor(QWidget* parent, const QStyleOptionViewItem& option,
                          const QModelIndex& index) const override;
    void destroyEditor(QWidget* editor, const QModelIndex& index) const override;
    void setModelData(QWidget* editor, QAbstractItemModel* model, const QModelIndex& index) const override;
    void updateEditorGeometry(QWidget* editor, const QStyleOptionViewItem& option,
                              const QModelIndex& index) const override;
    void paint(QPainter* painter, const QStyleOptionViewItem& option,
               const QModelIndex& index) const override;

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    QStyleOptionViewItem withoutButton(QStyleOptionViewItem option, const QModelIndex& index) const;

    int column_ = -1;
    int width_ = 0;
    // Qt asks for editors through const calls.
    mutable QPointer<QWidget> editor_;
    mutable bool taken_ = true;
};

} // namespace quorvel::calibration
