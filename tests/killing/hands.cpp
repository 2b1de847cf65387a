// A user inside a real window program: loaded before it (LD_PRELOAD), it does what comes on standard input, one thing a
// line, each as soon as it can be done. It prints "did" and the line then, and every text that a label shows when the
// label is painted, with the label's name.
//
//     trigger ACTION      chooses a menu item
//     click BUTTON        presses a button or chooses an option of the window that is in front
//     insist BUTTON       presses it again and again until another window is in front: a press may come too early
//     type FIELD TEXT     types into a field of that window
//     choose PATH         answers a file dialog
//     accept              answers a box with Yes or OK
#include <QAction>
#include <QApplication>
#include <QElapsedTimer>
#include <QFileDialog>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QSocketNotifier>
#include <QTimer>

#include <cstdio>
#include <deque>
#include <map>
#include <unistd.h>

namespace quorvel::test {

namespace {

constexpr int kLook = 5;             // ms
constexpr int kBetweenPresses = 200; // ms

/// The window that takes the input.
QWidget* front()
{
    if (auto* modal = QApplication::activeModalWidget()) return modal;
    for (auto* window : QApplication::topLevelWidgets()) {
        if (window->isVisible() && window->findChild<QAction*>(QStringLiteral("Quit"))) return window;
    }
    return nullptr;
}

template<class Kind>
Kind* inFront(const QString& name)
{
    auto* window = front();
    auto* found = window ? window->findChild<Kind*>(name) : nullptr;
    return found && found->isEnabled() ? found : nullptr;
}

/// Does it when the loop comes round: it may open a box that runs a loop of its own.
template<class Work>
bool soon(QObject* where, Work work)
{
    if (where) QTimer::singleShot(0, where, work);
    return where != nullptr;
}

bool acceptBox()
{
    if (auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget())) {
        auto* yes = box->button(QMessageBox::Yes);
        auto* button = yes ? yes : box->button(QMessageBox::Ok);
        return soon(button, [button] { button->click(); });
    }
    auto* dialog = qobject_cast<QDialog*>(QApplication::activeModalWidget());
    const bool isBox = dialog && dialog->windowTitle() == "Set Result";
    return isBox && soon(dialog, [dialog] { dialog->accept(); });
}

bool choosePath(const QString& path)
{
    auto* dialog = qobject_cast<QFileDialog*>(QApplication::activeModalWidget());
    auto* name = dialog ? dialog->findChild<QLineEdit*>(QStringLiteral("fileNameEdit")) : nullptr;
    if (!name) return false;
    name->setText(path);
    return soon(dialog, [dialog] { static_cast<QDialog*>(dialog)->accept(); });
}

/// Waits for the window in front to be another one, and presses meanwhile.
bool insist(const QString& name)
{
    static QWidget* from = nullptr;
    static QElapsedTimer pressed;
    if (from && front() != from) {
        from = nullptr;
        return true;
    }
    auto* button = inFront<QAbstractButton>(name);
    if (!button || (from && pressed.elapsed() < kBetweenPresses)) return false;
    from = front();
    pressed.start();
    soon(button, [button] { button->click(); });
    return false;
}

/// @return false when it cannot be done yet.
bool perform(const QString& line)
{
    const auto verb = line.section(' ', 0, 0);
    const auto name = line.section(' ', 1, 1);
    const auto rest = line.section(' ', 2);
    if (verb == "trigger") {
        auto* action = inFront<QAction>(name);
        return soon(action, [action] { action->trigger(); });
    }
    if (verb == "click") {
        auto* button = inFront<QAbstractButton>(name);
        return soon(button, [button] { button->click(); });
    }
    if (verb == "insist") return insist(name);
    if (verb == "type") {
        auto* field = inFront<QLineEdit>(name);
        if (field) field->setText(rest);
        return field != nullptr;
    }
    if (verb == "choose") return choosePath(line.section(' ', 1));
    return acceptBox();
}

class Hands final : public QObject {
public:
    Hands() : input_(STDIN_FILENO, QSocketNotifier::Read)
    {
        connect(&input_, &QSocketNotifier::activated, this, [this] { readInput(); });
        connect(&timer_, &QTimer::timeout, this, [this] {
            if (waiting_.empty() || !perform(waiting_.front())) return;
            print("did " + waiting_.front());
            waiting_.pop_front();
        });
        timer_.start(kLook);
        qApp->installEventFilter(this);
    }

    bool eventFilter(QObject* watched, QEvent* event) override
    {
        if (event->type() == QEvent::Paint) {
            if (const auto* label = qobject_cast<QLabel*>(watched)) printChange(*label);
        }
        return false;
    }

private:
    void readInput()
    {
        char piece[4096] = "";
        const auto got = ::read(STDIN_FILENO, piece, sizeof piece);
        if (got <= 0) return input_.setEnabled(false);
        unfinished_ += QByteArray(piece, static_cast<qsizetype>(got));
        for (auto end = unfinished_.indexOf('\n'); end >= 0; end = unfinished_.indexOf('\n')) {
            waiting_.push_back(QString::fromUtf8(unfinished_.left(end)));
            unfinished_.remove(0, end + 1);
        }
    }

    void printChange(const QLabel& label)
    {
        auto& last = shown_[&label];
        if (last == label.text()) return;
        last = label.text();
        print(label.objectName() + ": " + last.simplified());
    }
    static void print(const QString& line)
    {
        std::fputs((line + '\n').toUtf8().constData(), stdout);
        std::fflush(stdout);
    }

    QSocketNotifier input_;
    QTimer timer_;
    QByteArray unfinished_;
    std::deque<QString> waiting_;
    std::map<const QLabel*, QString> shown_;
};

void lendHands() { new Hands; } // goes with the process

} // namespace

Q_COREAPP_STARTUP_FUNCTION(lendHands)

} // namespace quorvel::test
