#pragma once

#include <QObject>
#include <QPointer>

#include <functional>
#include <vector>

namespace quorvel::link {

/// The one gate of the program: while a handler that talks to the bus runs, no other may start.
///
/// Waiting for a reply lets interface events run, so a second click could begin a second transaction in the
/// middle of the first. Every handler that talks goes through run() (or guard()), and every way to close a window
/// through whenIdle(); the filter of main/ keeps mouse and keyboard from the windows meanwhile, but a screen
/// reader's press arrives as a plain click, and this gate stops that one too.
class Gate final : public QObject {
    Q_OBJECT
public:
    explicit Gate(QObject* parent = nullptr);

    /// Runs `handler` to its end, then what whenIdle() and runWhenFree() kept.
    /// An exception ends the handler, not the program: failed() is emitted then.
    /// @return false when another handler runs: nothing was done, and refused() was emitted.
    bool run(const std::function<void()>& handler);

    /// run() for a short handler that a timer starts and nobody by hand: a click elsewhere is not to get lost for it.
    bool runUnasked(const std::function<void()>& handler);

    /// Connects a signal to a handler of `receiver` through run().
    template<class Sender, class Signal, class Receiver>
    void guard(Sender* sender, Signal signal, Receiver* receiver, void (Receiver::*handler)())
    {
        connect(sender, signal, receiver,
                [this, receiver, handler] { run([receiver, handler] { (receiver->*handler)(); }); });
    }

    /// True while a handler runs.
    bool busy() const { return busy_; }
    /// True while it is one of runUnasked().
    bool unasked() const { return unasked_; }

    /// Runs `action` at once when no handler runs, otherwise after the one that does; not at all when `context` is
    /// gone by then. While a handler runs this also asks it to come to an end, see stopRequested().
    void whenIdle(QObject* context, std::function<void()> action);

    /// Runs `handler` through run() as soon as no other runs, and lets the running one take its time; not at all when
    /// `context` is gone by then.
    void runWhenFree(QObject* context, std::function<void()> handler);

    /// True from the moment that a window was asked to close during the running handler until that handler
    /// ended. Handlers that run long look at it between their transactions and end early.
    bool stopRequested() const { return stopRequested_; }

    /// A message box or file dialog is open: its user must be able to answer it although a handler runs.
    bool boxOpen() const { return boxes_ > 0; }

    /// Holds boxOpen() for its lifetime.
    class Box {
    public:
        explicit Box(Gate& gate) : gate_(gate) { ++gate_.boxes_; }
        ~Box() { --gate_.boxes_; }
        Box(const Box&) = delete;
        Box& operator=(const Box&) = delete;

    private:
        Gate& gate_;
    };

Q_SIGNALS:
    /// Somebody tried to start a handler while one ran.
    void refused();
    /// A handler was broken off by an exception.
    /// @param reason  what it said.
    void failed(const QString& reason);

private:
    struct Kept {
        QPointer<QObject> context;
        std::function<void()> action;
    };
    void keep(QObject* context, std::function<void()> action);
    void runKept();

    bool busy_ = false;
    bool unasked_ = false;
    int boxes_ = 0;
    bool stopRequested_ = false;
    std::vector<Kept> kept_;
};

} // namespace quorvel::link
