#pragma once

#include "link/gate.h"

#include <QObject>

class QWidget;

namespace quorvel {

/// Keeps mouse, keyboard and close requests from all windows while a handler talks to the bus, but for widgets
/// that letThrough() marked and for boxes that ask the operator something. A close request is kept and done after
/// the handler. Install it once, on the application.
class InputFilter final : public QObject {
    Q_OBJECT
public:
    explicit InputFilter(link::Gate& gate, QObject* parent = nullptr);

    /// Input to `widget` and what it contains passes also while a handler runs (or no longer does).
    static void letThrough(QWidget* widget, bool passes = true);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    bool keepClose(QObject* watched);

    link::Gate& gate_;
    bool closeKept_ = false;
};

} // namespace quorvel
