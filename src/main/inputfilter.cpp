#include "main/inputfilter.h"

#include <QCoreApplication>
#include <QEvent>
#include <QKeyEvent>
#include <QWidget>

#include <utility>

namespace quorvel {

namespace {

// Properties of the widgets themselves.
constexpr auto kPasses = "quorvelPassesGate";
constexpr auto kFocusMoves = "quorvelFocusMoves";
constexpr auto kCloseKept = "quorvelCloseKept";

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

bool isOfClick(QEvent::Type type)
{
    return type == QEvent::MouseButtonPress || type == QEvent::MouseButtonRelease;
}

bool passes(const QObject* target)
{
    for (; target; target = target->parent()) {
        if (target->property(kPasses).toBool()) return true;
    }
    return false;
}

/// A key that does nothing but move the focus, in a window where it may.
bool movesFocus(const QObject* target, const QEvent& event)
{
    if (event.type() != QEvent::KeyPress && event.type() != QEvent::ShortcutOverride) return false;
    const int key = static_cast<const QKeyEvent&>(event).key();
    const auto* widget = qobject_cast<const QWidget*>(target);
    return widget && (key == Qt::Key_Tab || key == Qt::Key_Backtab) &&
           widget->window()->property(kFocusMoves).toBool();
}

} // namespace

InputFilter::InputFilter(link::Gate& gate, QObject* parent) : QObject(parent), gate_(gate) {}

void InputFilter::letThrough(QWidget* widget, bool passes) { widget->setProperty(kPasses, passes); }

void InputFilter::letFocusMove(QWidget* window, bool moves) { window->setProperty(kFocusMoves, moves); }

bool InputFilter::eventFilter(QObject* watched, QEvent* event)
{
    if (gate_.boxOpen()) return false;
    // the rest of a click comes behind its beginning
    const bool inClick = !kept_.empty() && isOfClick(event->type());
    if (!gate_.busy() && !inClick) return false;
    if (event->type() == QEvent::Close && !passes(watched) && keepClose(watched)) {
        event->ignore();
        return true;
    }
    if (!isInput(event->type())) return false;
    // Windows pass input on to their widgets; it is decided there, where the target is known.
    const bool decides = watched->isWidgetType() || event->type() == QEvent::Shortcut;
    if (!decides || passes(watched) || movesFocus(watched, *event)) return false;
    if (gate_.unasked() || inClick) keepClick(watched, *event);
    return true;
}

/// A second click has no effect, as when the first one has begun something.
void InputFilter::keepClick(QObject* watched, const QEvent& event)
{
    const bool another = event.type() == QEvent::MouseButtonPress && !kept_.empty();
    if (!isOfClick(event.type()) || another) return;
    kept_.push_back({watched, std::unique_ptr<QEvent>(event.clone())});
    if (kept_.size() > 1) return;
    gate_.whenIdle(this,
                   [this] { QMetaObject::invokeMethod(this, &InputFilter::sendKept, Qt::QueuedConnection); });
}

void InputFilter::sendKept()
{
    for (const auto& kept : std::exchange(kept_, {})) {
        if (kept.target && !gate_.busy()) QCoreApplication::sendEvent(kept.target, kept.event.get());
    }
}

bool InputFilter::keepClose(QObject* watched)
{
    auto* window = qobject_cast<QWidget*>(watched);
    // Menus and tool tips close as they like.
    if (!window || (window->windowType() != Qt::Window && window->windowType() != Qt::Dialog)) return false;
    if (window->property(kCloseKept).toBool()) return true;
    window->setProperty(kCloseKept, true);
    gate_.whenIdle(window, [window] {
        window->setProperty(kCloseKept, false);
        window->close();
    });
    return true;
}

} // namespace quorvel
