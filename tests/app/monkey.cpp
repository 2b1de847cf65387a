#include "app/monkey.h"

#include "app/edition.h"
#include "app/monkey_choices.h"
#include "app/openers.h"

#include <QAbstractButton>
#include <QAction>
#include <QApplication>
#include <QContextMenuEvent>
#include <QDialog>
#include <QFileDialog>
#include <QInputDialog>
#include <QLineEdit>
#include <QMenu>
#include <QMessageBox>
#include <QPushButton>
#include <QRadioButton>
#include <QTest>
#include <QTimer>

#include <gtest/gtest.h>

namespace quorvel::test {

namespace {

constexpr auto kPause = std::chrono::milliseconds(1); // from step to step
constexpr int kDeepest = 12;    // steps within steps, while handlers and windows are open
constexpr int kLookEvery = 100; // steps

template<class Kind>
QList<Kind*> usable(QWidget& window)
{
    QList<Kind*> found;
    for (auto* widget : window.findChildren<Kind*>())
        if (widget->isVisible() && widget->isEnabled()) found << widget;
    return found;
}

QString nameOf(const QObject& object)
{
    return QString::fromLatin1(object.metaObject()->className()) + u'/' + object.objectName();
}

} // namespace

Monkey::Monkey(unsigned seed, int steps, std::FILE* log)
    : random_(seed), left_(steps), log_(log),
      bus_({QStringLiteral("--fast"), QStringLiteral("--tcp"), QStringLiteral("127.0.0.1:0"),
            QStringLiteral("--seed"), QString::number(seed), QStringLiteral("--readout"),
            QStringLiteral("5:A"), QStringLiteral("--readout"), QStringLiteral("12:C"),
            QStringLiteral("--readout"), QStringLiteral("33:B")})
{
    QFile help(folder_.filePath("readme.txt"));
    EXPECT_TRUE(help.open(QIODevice::WriteOnly));
    help.write("Help.\n");
}

void Monkey::run()
{
    while (left_ > 0 && !::testing::Test::HasFailure())
        runProgram();
}

void Monkey::runProgram()
{
    ++programs_;
    const auto folder = std::filesystem::path(folder_.path().toStdString());
    program_ = std::make_unique<Program>(QStringList{bus_.device()}, folder, folder / "readme.txt",
                                         QString::fromLatin1(kEdition), StandIns{&clock_, this});
    program_->module1.addObserver(watch_);
    openAutoread(*program_);
    openSettings(*program_);
    openCalibration(*program_);
    openGrayscale(*program_);
    addTools(*program_);
    program_->keepJournal(QStringLiteral("monkey"));
    program_->form1.show();
    stepSoon();
    QApplication::exec();
    EXPECT_EQ(boxesOpen_, 0) << "a box is left";
    EXPECT_FALSE(program_->gate.busy()) << "a handler is left";
    EXPECT_FALSE(program_->gate.boxOpen()) << "the gate believes in a box";
    watch_.compare(bus_);
    program_->module1.removeObserver(watch_);
    program_.reset();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    for (const auto* window : QApplication::topLevelWidgets())
        EXPECT_FALSE(window->isVisible()) << "left over: " << qPrintable(nameOf(*window));
}

// A timer does not run within its own slot, where handlers wait; so each step has one of its own.
void Monkey::stepSoon()
{
    QTimer::singleShot(kPause, &program_->form1, [this] {
        if (left_ <= 0 || ::testing::Test::HasFailure()) return windUp();
        stepSoon();
        if (depth_ < kDeepest) step();
    });
}

void Monkey::step()
{
    --left_;
    ++steps_;
    look();
    ++depth_;
    (this->*chooseStep())();
    --depth_;
}

/// Closes one window after the other, the main window last.
void Monkey::windUp()
{
    if (auto* popup = QApplication::activePopupWidget()) {
        popup->close();
    } else if (auto* modal = QApplication::activeModalWidget()) {
        modal->close();
    } else {
        program_->form1.close(); // asks a reading to end
        if (!program_->gate.busy()) return QApplication::exit(0);
    }
    QTimer::singleShot(kPause, &program_->form1, [this] { windUp(); });
}

/// No box of Qt's own is ever open, and the line agrees with what was sent.
void Monkey::look()
{
    auto* modal = QApplication::activeModalWidget();
    for (const auto* window : QApplication::topLevelWidgets())
        if (window->isVisible() && window->windowType() != Qt::Popup)
            ++windows_[window->metaObject()->className()];
    const bool foreign = qobject_cast<QMessageBox*>(modal) || qobject_cast<QFileDialog*>(modal) ||
                         qobject_cast<QInputDialog*>(modal);
    EXPECT_FALSE(foreign) << "a box that the seam does not know: " << qPrintable(nameOf(*modal));
    if (steps_ % kLookEvery == 0) watch_.compare(bus_);
}

Monkey::Step Monkey::chooseStep()
{
    struct Row {
        Step step;
        std::size_t weight;
    };
    static constexpr Row kRows[] = {{&Monkey::clickSomething, 36}, {&Monkey::pressSomething, 12},
                                    {&Monkey::typeKey, 16},        {&Monkey::typeText, 12},
                                    {&Monkey::openPort, 12},       {&Monkey::chooseAction, 10},
                                    {&Monkey::contextMenu, 2},     {&Monkey::troubleBus, 4},
                                    {&Monkey::closeWindow, 5},     {&Monkey::waitABit, 5}};
    std::size_t all = 0;
    for (const auto& row : kRows)
        all += row.weight;
    auto chosen = below(all);
    for (const auto& row : kRows) {
        if (chosen < row.weight) return row.step;
        chosen -= row.weight;
    }
    return &Monkey::waitABit;
}

/// Where mouse and keyboard reach.
QWidget* Monkey::target() const
{
    if (auto* popup = QApplication::activePopupWidget()) return popup;
    if (auto* modal = QApplication::activeModalWidget()) return modal;
    return &program_->form1;
}

QWidget* Monkey::widgetIn(QWidget* window)
{
    const auto buttons = usable<QPushButton>(*window);
    if (!buttons.isEmpty() && below(2) == 0)
        return buttons[static_cast<qsizetype>(below(static_cast<std::size_t>(buttons.size())))];
    const auto widgets = usable<QWidget>(*window);
    return widgets.isEmpty()
               ? window
               : widgets[static_cast<qsizetype>(below(static_cast<std::size_t>(widgets.size())))];
}

void Monkey::clickSomething()
{
    auto* window = target();
    // the windows under "Tools" stand beside the main window
    if (window == &program_->form1 && below(4) == 0) {
        const auto all = QApplication::topLevelWidgets();
        auto* other = all[static_cast<qsizetype>(below(static_cast<std::size_t>(all.size())))];
        if (other->isVisible() && other->isEnabled()) window = other;
    }
    auto* widget = widgetIn(window);
    note("click " + nameOf(*widget));
    const QPoint place(static_cast<int>(below(static_cast<std::size_t>(std::max(widget->width(), 1)))),
                       static_cast<int>(below(static_cast<std::size_t>(std::max(widget->height(), 1)))));
    const auto button = below(12) == 0 ? Qt::RightButton : Qt::LeftButton;
    QTest::mouseClick(widget, button, Qt::NoModifier, below(3) == 0 ? widget->rect().center() : place);
}

/// As a screen reader does: wherever the button is, whatever is in front of it.
void Monkey::pressSomething()
{
    QList<QAbstractButton*> buttons;
    for (auto* window : QApplication::topLevelWidgets())
        if (window->isVisible()) buttons << usable<QAbstractButton>(*window);
    if (buttons.isEmpty()) return;
    auto* button = buttons[static_cast<qsizetype>(below(static_cast<std::size_t>(buttons.size())))];
    note("press " + nameOf(*button) + ' ' + button->text());
    button->click();
}

void Monkey::typeKey()
{
    auto* widget = target();
    if (widget->focusWidget()) widget = widget->focusWidget();
    const auto key = oneOf(kKeys);
    const auto modifiers = oneOf(kModifiers);
    note(QStringLiteral("key %1 to ").arg(key, 0, 16) + nameOf(*widget));
    QTest::keyClick(widget, key, modifiers);
}

void Monkey::typeText()
{
    const auto fields = usable<QLineEdit>(*target());
    if (fields.isEmpty()) return typeKey();
    QPointer<QWidget> field = fields[static_cast<qsizetype>(below(static_cast<std::size_t>(fields.size())))];
    const auto text = QString::fromUtf8(oneOf(kTexts));
    note("type " + text + " into " + nameOf(*field));
    QTest::keyClick(field, Qt::Key_A, Qt::ControlModifier);
    for (const auto character : text)
        if (field) QTest::sendKeyEvent(QTest::Click, field, Qt::Key_unknown, character, Qt::NoModifier);
}

/// With a closed port hardly anything can be tried; it is opened in the main window.
void Monkey::openPort()
{
    if (program_->mscomm1.PortOpen() || program_->gate.busy()) return;
    if (target() != &program_->form1) {
        note("leave " + nameOf(*target()));
        target()->close();
        return;
    }
    note("open the port");
    bus_.command(QStringLiteral("plug"));
    program_->form1.findChild<QLineEdit*>("TestNo")->setText(oneOf(kAddresses));
    program_->form1.findChild<QAbstractButton*>("Command1")->click();
}

/// The items of all menus in turn; before it, another instrument type at times.
void Monkey::chooseAction()
{
    if (below(3) == 0) {
        const auto types = usable<QRadioButton>(program_->form1);
        if (!types.isEmpty() && target() == &program_->form1)
            types[static_cast<qsizetype>(below(static_cast<std::size_t>(types.size())))]->click();
    }
    QList<QAction*> actions;
    for (const auto* menu : program_->form1.findChildren<QMenu*>())
        for (auto* action : menu->actions())
            if (!action->menu() && action->isEnabled() && !action->isSeparator()) actions << action;
    auto* action = actions[static_cast<qsizetype>(nextAction_ % static_cast<std::size_t>(actions.size()))];
    // quitting ends everything, so it is seldom
    if (action->objectName() == u"Quit" && below(10) != 0) return ++nextAction_, void();
    if (!QApplication::activeModalWidget() && !program_->gate.busy()) ++nextAction_;
    note("choose " + nameOf(*action) + ' ' + action->text());
    action->trigger();
}

void Monkey::contextMenu()
{
    auto* widget = widgetIn(target());
    note("context menu of " + nameOf(*widget));
    QContextMenuEvent event(QContextMenuEvent::Keyboard, widget->rect().center(),
                            widget->mapToGlobal(widget->rect().center()));
    QApplication::sendEvent(widget, &event);
}

void Monkey::troubleBus()
{
    auto line = QString::fromLatin1(oneOf(kTrouble));
    if (line.contains("%1")) {
        // they change
        const auto readouts = bus_.command(QStringLiteral("readouts")).value("readouts").toArray();
        line = line.arg(readouts.first().toObject().value("address").toInt());
    }
    note("bus: " + line);
    bus_.command(line);
    // without a port nothing else can go wrong
    if (below(2) == 0) bus_.command(QStringLiteral("plug"));
}

void Monkey::closeWindow()
{
    auto* window = target();
    if (window == &program_->form1 && below(20) != 0) return;
    note("close " + nameOf(*window));
    window->close();
}

void Monkey::waitABit() { note("wait"); }

/// Like a box: what is behind it cannot be clicked. Its user answers soon, or closes it.
void Monkey::box(QWidget* parent, const QString& text)
{
    EXPECT_FALSE(text.isEmpty()) << "a box without words";
    ++boxes_;
    ++boxesOpen_;
    note("box: " + text);
    const link::Gate::Box open(program_->gate);
    QDialog dialog(parent);
    dialog.setObjectName(QStringLiteral("Box"));
    dialog.setModal(true);
    dialog.show();
    for (auto turns = below(4); turns > 0 && dialog.isVisible(); --turns)
        QTest::qWait(static_cast<int>(below(3)));
    --boxesOpen_;
}

void Monkey::say(QWidget* parent, const QString& text) { box(parent, text); }

bool Monkey::ask(QWidget* parent, const QString& text)
{
    box(parent, text);
    return below(3) != 0;
}

void Monkey::showResult(QWidget* parent, const QString& firstLine, const QString& secondLine)
{
    box(parent, firstLine + u'\n' + secondLine);
}

QString Monkey::chooseFile(QWidget* parent, const FileChoice& choice)
{
    box(parent, "file: " + choice.caption);
    const QString name = oneOf(kFiles);
    return name.isEmpty() ? name : folder_.filePath(name);
}

QString Monkey::askText(QWidget* parent, const QString& caption, const QString& /*label*/)
{
    box(parent, "text: " + caption);
    return QString::fromUtf8(oneOf(kTexts));
}

void Monkey::note(const QString& what)
{
    if (!log_) return;
    std::fprintf(log_, "%d %*s%s\n", steps_, depth_, "", qPrintable(what));
    std::fflush(log_);
}

std::string Monkey::report() const
{
    QStringList windows;
    for (auto window = windows_.begin(); window != windows_.end(); ++window)
        windows << QStringLiteral("%1 (%2)").arg(window.key()).arg(window.value());
    return QStringLiteral(
               "%1 steps, %2 programs, %3 exchanges of which %4 complete, %5 boxes; steps in windows: %6")
        .arg(steps_)
        .arg(programs_)
        .arg(watch_.exchanges())
        .arg(watch_.complete())
        .arg(boxes_)
        .arg(windows.join(", "))
        .toStdString();
}

} // namespace quorvel::test
