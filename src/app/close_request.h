#pragma once

#include "link/gate.h"

#include <QObject>
#include <QTimer>
#include <QWidget>

namespace quorvel {

/// Being asked from outside to end (link/interrupt.h) closes one window after the other, as their user would: a running
/// command is finished first, a message closes, and a question is the user's to answer. Who answers that a window stays open,
/// keeps it.
class CloseRequest final : public QObject {
    Q_OBJECT
public:
    /// @param main  the window that is closed last. Both must outlive this.
    CloseRequest(const link::Gate& gate, QWidget& main);

private:
    void look();

    const link::Gate& gate_;
    QWidget& main_;
    QTimer timer_;
};

} // namespace quorvel
