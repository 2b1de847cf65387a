#include "app/close_request.h"

#include "link/interrupt.h"

#include <QApplication>
#include <QPointer>

namespace quorvel {

namespace {

constexpr int kInterval = 200; // ms, in which a request is seen

} // namespace

CloseRequest::CloseRequest(const link::Gate& gate, QWidget& main) : gate_(gate), main_(main)
{
    link::noteInterrupts();
    connect(&timer_, &QTimer::timeout, this, &CloseRequest::look);
    timer_.start(kInterval);
}

void CloseRequest::look()
{
    if (link::interruptSignal() == 0 || gate_.boxOpen()) return;
    QPointer<QWidget> window = QApplication::activeModalWidget();
    if (!window) window = &main_;
    window->close();
    // A running command only keeps the closing for later; without one, the user has said that the window stays.
    if (window && window->isVisible() && !gate_.busy()) timer_.stop();
}

} // namespace quorvel
