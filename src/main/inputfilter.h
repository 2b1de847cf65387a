#pragma once

#include "link/gate.h"

#include <QEvent>
#include <QObject>
#include <QPointer>

#include <memory>
#include <vector>

class QWidget;

namespace quorvel {

/// Keeps mouse, keyboard and close requests from all windows while a handler talks to the bus, but for widgets
/// that letThrough() marked and for boxes that ask the operator something. A close request is kept and done after
/// the handler, and so is a click while a handler runs that nobody asked for. Install it once, on the application.
class InputFilter final : public QObject {
    Q_OBJECT
public:
    explicit InputFilter(link::Gate& gate, QObject* parent = nullptr);

    /// Input to `widget` and what it contains passes also while a handler runs (or no longer does).
    static void letThrough(QWidget* widget, bool passes = true);
    /// Tab and Shift+Tab pass everywhere in `window`, so that a widget that was let through can be reached from one
    /// that was not.
    static void letFocusMove(QWidget* window, bool moves = true);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    struct KeptEvent {
        QPointer<QObject> target;
        std::unique_ptr<QEvent> event;
    };
    bool keepClose(QObject* watched);
    void keepClick(QObject* watched, const QEvent& event);
    void sendKept();

    link::Gate& gate_;
    std::vector<KeptEvent> kept_; ///< of one click
};

} // namespace quorvel
