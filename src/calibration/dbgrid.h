#pragma once

#include <QPointer>
#include <QTableView>
#include <QToolButton>

namespace quorvel::calibration {

class CellDelegate;

/// A grid that is edited in place: double click or typing begins, Return takes the text and goes down the column, Esc
/// drops it.
///
/// One column can have a cell button: it is at the right end of the current cell, and is pressed by a click, by
/// the space bar or F4 in the cell or in the ones behind it, or reached with Tab.
class DBGrid final : public QTableView {
    Q_OBJECT
public:
    explicit DBGrid(QWidget* parent = nullptr);

    /// Gives a column the cell button. @param name  spoken by screen readers.
    void setCellButton(int column, const QString& name);
    QToolButton* cellButton() const { return button_; }

    /// Makes room for this many rows without scrolling.
    void showRows(int count);

    /// Takes a text that is still being typed, as Return does.
    /// @return false when it was refused; also, once, for a text whose cell is still the current one and that was
    ///         refused when the focus left it, as it does for the button that is pressed.
    bool commitTyped();

    /// While the model is reset the current cell stays where it is, or as near as there are cells.
    void setModel(QAbstractItemModel* model) override;

Q_SIGNALS:
    /// The cell button was pressed; it belongs to the current cell.
    void ButtonClick();

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void closeEditor(QWidget* editor, QAbstractItemDelegate::EndEditHint hint) override;
    void currentChanged(const QModelIndex& current, const QModelIndex& previous) override;
    void updateGeometries() override;
    void scrollContentsBy(int dx, int dy) override;
    bool event(QEvent* event) override;

private:
    /// Where the operator was before the model was reset.
    struct Place {
        int row = -1;
        int column = -1;
        bool typing = false;
    };

    void placeButton();
    void goDown();
    void keepPlace();
    void returnToPlace();
    void pressButton();
    bool onButtonCell() const;

    CellDelegate* delegate_;
    QPointer<QToolButton> button_;
    int buttonColumn_ = -1;
    bool refused_ = false;
    Place place_;
};

} // namespace quorvel::calibration
