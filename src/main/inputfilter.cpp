#include "main/inputfilter.h"

#include <QEvent>
#include <QWidget>

namespace quorvel {

namespace {

constexpr auto kPasses = "quorvelPassesGate";

bool isInput(QEvent::Type type)
{
    switch (type) {
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonRelease:
    case QEvent::MouseButtonDblClick:
    case QEvent::KeyPress:
    case QEvent::KeyRelease:
    case QEvent::Shortcut:
    case QEvent::ShortcutOverride:
    case QEvent::InputMethod:
    case QEvent::Wheel:
    case QEvent::ContextMenu:
    case QEvent::TouchBegin:
    case QEvent::TouchUpdate:
    case QEvent::TouchEnd:
    case QEvent::DragEnter:
    case QEvent::Drop:
        return true;
    default:
        return false;
    }
}

bool passes(const QObject* target)
{
    for (; target; target = target->parent()) {
        if (target->property(kPasses).toBool()) return true;
    }
    return false;
}

} // namespace

InputFilter::InputFilter(link::Gate& gate, QObject* parent) : QObject(parent), gate_(gate) {}

void InputFilter::letThrough(QWidget* widget, bool passes) { widget->setProperty(kPasses, passes); }

bool InputFilter::eventFilter(QObject* watched, QEvent* event)
{
    if (!gate_.busy() || gate_.boxOpen()) return false;
    if (event->type() == QEvent::Close && keepClose(watched)) {
        event->ignore();
        return true;
    }
    if (!isInput(event->type())) return false;
    // Windows pass input on to their widgets; it is decided there, where the target is known.
    const bool decides = watched->isWidgetType() || event->type() == QEvent::Shortcut;
    return decides && !passes(watched);
}

bool InputFilter::keepClose(QObject* watched)
{
    auto* window = qobject_cast<QWidget*>(watched);
    // Menus and tool tips close as they like.
    if (!window || (window->windowType() != Qt::Window && window->windowType() != Qt::Dialog)) return false;
    if (!closeKept_) {
        closeKept_ = true;
        gate_.whenIdle(window, [this, window] {
            closeKept_ = false;
            window->close();
        });
    }
    return true;
}

} // namespace quorvel
