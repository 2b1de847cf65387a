#pragma once

#include "line/health.h"

#include <QDialog>
#include <QTableWidget>
#include <QTimer>

namespace quorvel::line {

/// The window "Line Health": how well each readout has answered since the start. It does not block the other windows.
class HealthWindow final : public QDialog {
    Q_OBJECT
public:
    /// @param health  must outlive the window.
    explicit HealthWindow(Health& health, QWidget* parent = nullptr);

protected:
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;

private:
    void refresh();
    void setCell(int row, int column, const QString& text);

    Health& health_;
    QTableWidget table_;
    QTimer refresh_;
};

} // namespace quorvel::line
