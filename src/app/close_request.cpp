#include "app/close_request.h"

#include "link/interrupt.h"
#include "main/msgboxnew.h"

#include <QAbstractButton>
#include <QApplication>
#include <QMessageBox>
#include <QPointer>

namespace quorvel {

namespace {

constexpr int kInterval = 200; // ms, in which a request is seen

/// Closes a box that only says something, as nobody may be there to read it.
void closeMessage(QWidget* box)
{
    if (auto* result = qobject_cast<msgboxnew*>(box)) return result->accept();
    const auto* message = qobject_cast<QMessageBox*>(box);
    if (message && message->buttons().size() == 1) message->buttons().constFirst()->click();
}

} // namespace

CloseRequest::CloseRequest(const link::Gate& gate, QWidget& main) : gate_(gate), main_(main)
{
    link::noteInterrupts();
    connect(&timer_, &QTimer::timeout, this, &CloseRequest::look);
    timer_.start(kInterval);
}

void CloseRequest::look()
{
    if (link::interruptSignal() == 0) return;
    if (gate_.boxOpen()) return closeMessage(QApplication::activeModalWidget());
    QPointer<QWidget> window = QApplication::activeModalWidget();
    if (!window) window = &main_;
    window->close();
    // A running command only keeps the closing for later; without one, the user has said that the window stays.
    if (window && window->isVisible() && !gate_.busy()) timer_.stop();
}

} // namespace quorvel
