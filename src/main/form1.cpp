#include "main/form1.h"

#include "link/bytes.h"
#include "main/addresshint.h"
#include "main/form3.h"
#include "main/inputfilter.h"
#include "main/whylink.h"
#include "text/number.h"
#include "ui_form1.h"

#include <QApplication>
#include <QCloseEvent>
#include <QFontDatabase>
#include <QMenu>

#include <algorithm>

namespace quorvel {

using link::bytes;

namespace {

constexpr auto kOpenComm = "OpenComm";
constexpr auto kCloseComm = "CloseComm";
constexpr auto kPortError = "The Commport is error,please change!";
constexpr auto kLineSettings = "9600,n,8,1";

constexpr int kPortNamePrefix = 3; // "COM"

/// What choosing an instrument type shows and hides, besides its number and the caption of `fz`.
struct TypeRow {
    const char* option;
    link::InstrumentType type;
    const char* fzCaption;
    bool yGrayscale, z1Grayscale, z2Grayscale, yDirection, zDirection, stitching;
};
constexpr TypeRow kTypes[] = {
    {"Option1", link::TypeA, "Invert and Swap", true, false, false, true, false, false},
    {"Option2", link::TypeB, "Invert and Swap", true, false, false, true, false, true},
    {"Option3", link::TypeC, "Invert and Swap", true, true, true, true, true, false},
    {"Option4", link::TypeD, "Invert", false, false, false, false, false, false},
};

/// Menu items that lead to other windows, and whether they ask first that the port is open.
struct MenuRow {
    const char* action;
    bool guarded;
};
constexpr MenuRow kWindows[] = {
    {"ChangeAddress", true},
    {"WireSetting", true},
    {"offset", true},
    {"OS", true},
    {"fz", true},
    {"ClockSetting", true},
    {"ResetSetting", false},
    {"AutomaticReading", true},
    {"X_GrayScale_Data", false},
    {"Y_GrayScale_Data", false},
    {"Z1_GrayScale_Data", false},
    {"Z2_GrayScale_Data", false},
    {"XD", false},
    {"YD", false},
    {"ZD", false},
    {"SL", true},
};

} // namespace

Form1::Form1(const Workplace& workplace, link::PortList& ports, QWidget* parent)
    : QMainWindow(parent), ui_(std::make_unique<Ui::Form1>()), bench_(workplace.bench), ports_(ports),
      module1_(workplace.module1), gate_(workplace.gate), messages_(workplace.messages)
{
    ui_->setupUi(this);
    // Designer tells its members apart; the window has two labels of this name, one in the search frame.
    ui_->valueLabel->setObjectName(QStringLiteral("Label1"));
    ui_->List1->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    ui_->foundScroll->viewport()->setAutoFillBackground(false);
    ui_->NoList->setAutoFillBackground(false);
    status_.setObjectName(QStringLiteral("Status"));
    status_.setWordWrap(true);
    status_.setTextFormat(Qt::PlainText);
    status_.setMinimumWidth(1);
    ui_->statusbar->addWidget(&status_, 1);
    addToolsButton();
    InputFilter::letThrough(ui_->menubar);
    connectControls();
    connectMenus();

    ui_->Option1->setChecked(true);
    ui_->NoList->clear();
    ComboList();
    ui_->cal->menuAction()->setVisible(!bench_.isUserEdition());
    showPortState();
    timer1_.start(std::chrono::seconds(1));
}

Form1::~Form1() = default;

void Form1::connectControls()
{
    gate_.guard(ui_->Command1, &QPushButton::clicked, this, &Form1::Command1_Click);
    connect(ui_->Command2, &QPushButton::clicked, this, &Form1::Command2_Click);
    gate_.guard(ui_->Command4, &QPushButton::clicked, this, &Form1::Command4_Click);
    connect(ui_->TestNo, &QLineEdit::textChanged, this, &Form1::addressTyped);
    for (const auto& row : kTypes) {
        connect(findChild<QRadioButton*>(row.option), &QRadioButton::toggled, this,
                [this, type = row.type](bool on) {
                    if (on) selectType(type);
                });
    }
    ui_->RefreshPorts->setShortcut(Qt::Key_F5);
    whenChosen(ui_->AddPort, [this] { addPort(); });
    connect(ui_->CopyAll, &QAction::triggered, this, &Form1::copyReadings);
    // A menu that only pops up: one that runs until it is closed would halt a running reading.
    auto* readingsMenu = new QMenu(ui_->List1);
    readingsMenu->addAction(ui_->CopyAll);
    connect(ui_->List1, &QWidget::customContextMenuRequested, readingsMenu,
            [this, readingsMenu](QPoint place) {
                readingsMenu->popup(ui_->List1->viewport()->mapToGlobal(place));
            });
    connect(ui_->RefreshPorts, &QAction::triggered, this, &Form1::refreshPorts);
    connect(&timer1_, &QTimer::timeout, this, &Form1::Timer1_Timer);
    connect(&module1_.port(), &link::MSComm::lost, this, &Form1::portLost);
    connect(&gate_, &link::Gate::failed, this, [this](const QString& reason) {
        messages_.say(this,
                      tr("The command was broken off: %1 Check the readout before you go on.").arg(reason));
    });
    connect(&gate_, &link::Gate::refused, this, [this] {
        showStatus(isReading() ? tr("Immediate Reading is running. Press Stop first.")
                               : tr("Please wait until the running command has ended."));
    });
}

void Form1::connectMenus()
{
    for (const auto& row : kWindows) {
        auto* action = findChild<QAction*>(row.action);
        action->setEnabled(false);
        whenChosen(action, [this, action, guarded = row.guarded] { openWindow(*action, guarded); });
    }
    whenChosen(ui_->Help, [this] { Help_Click(); });
    whenChosen(ui_->ImmediateReading, [this] { Command2_Click(); });
    connect(ui_->Quit, &QAction::triggered, this, &Form1::Quit_Click, Qt::QueuedConnection);
}

// The menu pops up: one that runs until it is closed would halt a running reading.
void Form1::addToolsButton()
{
    readOnlyMark_.setObjectName(QStringLiteral("ReadOnlyMark"));
    readOnlyMark_.setText(QStringLiteral("\U0001F512 ") + tr("Read Only"));
    readOnlyMark_.setToolTip(tr("Nothing is sent that would change a readout. Switch it off under Tools."));
    readOnlyMark_.hide();
    ui_->statusbar->addPermanentWidget(&readOnlyMark_);
    tools_.setObjectName(QStringLiteral("Tools"));
    tools_.setText(tr("Tools"));
    tools_.setToolTip(tr("Traffic and more (Ctrl+T)"));
    tools_.setShortcut(QKeySequence(Qt::CTRL | Qt::Key_T));
    ui_->statusbar->addPermanentWidget(&tools_);
    connect(&tools_, &QPushButton::clicked, this, [this] {
        const auto size = toolsMenu_.sizeHint();
        toolsMenu_.popup(tools_.mapToGlobal(QPoint(tools_.width() - size.width(), -size.height())));
    });
    InputFilter::letThrough(&tools_);
    InputFilter::letThrough(&toolsMenu_);
}

void Form1::offerTest(const std::function<void()>& test) { why_ = new WhyLink(status_, module1_, test); }

void Form1::runCommand(const std::function<void()>& command)
{
    const WhyLink::Command running(why_);
    command();
}

QAction* Form1::addTool(const QString& caption, const std::function<void()>& tool)
{
    auto* action = toolsMenu_.addAction(caption);
    whenChosen(action, tool);
    return action;
}

// What an item leads to may stay open for long; a screen reader that chose the item waits for the choice to return. It
// reaches the menu also while another window is open.
void Form1::whenChosen(QAction* action, const std::function<void()>& handler)
{
    connect(
        action, &QAction::triggered, this,
        [handler] {
            if (!QApplication::activeModalWidget()) handler();
        },
        Qt::QueuedConnection);
}

void Form1::setOpener(const QString& action, std::function<void()> opener)
{
    findChild<QAction*>(action)->setEnabled(true);
    openers_[action] = std::move(opener);
}

bool Form1::isOffered(const QAction& action) const
{
    const bool inHiddenMenu = !ui_->cal->menuAction()->isVisible() && ui_->cal->actions().contains(&action);
    return action.isVisible() && !inHiddenMenu;
}

// The opened window has handlers of its own that go through the gate, so the gate is only asked here. A screen
// reader reaches also the items that are hidden.
void Form1::openWindow(const QAction& action, bool guarded)
{
    if (gate_.busy()) {
        Q_EMIT gate_.refused();
    } else if (!isOffered(action)) {
        showStatus(tr("\"%1\" is not offered here.").arg(action.text()));
    } else if (guarded && !module1_.port().PortOpen()) {
        messages_.say(this, kPortNotOpened);
    } else {
        openers_.at(action.objectName())();
    }
}

void Form1::showStatus(const QString& text)
{
    status_.setText(text);
    status_.setToolTip(text);
}

void Form1::selectType(link::InstrumentType type)
{
    const auto& row = kTypes[type - link::TypeA];
    bench_.instrumentType = row.type;
    ui_->fz->setText(row.fzCaption);
    ui_->Y_GrayScale_Data->setVisible(row.yGrayscale);
    ui_->Z1_GrayScale_Data->setVisible(row.z1Grayscale);
    ui_->Z2_GrayScale_Data->setVisible(row.z2Grayscale);
    ui_->YD->setVisible(row.yDirection);
    ui_->ZD->setVisible(row.zDirection);
    ui_->SL->setVisible(row.stitching);
}

void Form1::Timer1_Timer() { elapsedSeconds_ += static_cast<float>(timer1_.interval()) / 1000; }

void Form1::ComboList()
{
    ui_->Combo1->clear();
    for (const auto& entry : ports_.entries()) {
        ui_->Combo1->addItem(entry.text, entry.device);
        ui_->Combo1->setItemData(ui_->Combo1->count() - 1, entry.text, Qt::ToolTipRole);
    }
    selectPort(0);
}

void Form1::selectPort(int index)
{
    if (ui_->Combo1->count() > 0) ui_->Combo1->setCurrentIndex(std::max(index, 0));
}

void Form1::addPort()
{
    const auto device = messages_.askText(this, tr("Add port"), tr("Device path or tcp:host:port"));
    if (device.isEmpty()) return;
    const int index = ports_.add(device);
    ComboList();
    selectPort(index);
}

void Form1::refreshPorts()
{
    const auto selected = ui_->Combo1->currentData().toString();
    ports_.refresh();
    ComboList();
    selectPort(ports_.indexOf(selected));
    showStatus(tr("Ports found: %1").arg(ui_->Combo1->count()));
}

void Form1::Command1_Click()
{
    auto& port = module1_.port();
    if (port.PortOpen()) {
        port.setPortOpen(false);
        showStatus(tr("Port closed."));
    } else {
        const auto reason = openChosenPort();
        showStatus(reason.isEmpty() ? tr("%1 is open.").arg(port.deviceName()) : reason);
        if (!reason.isEmpty()) messages_.say(this, kPortError);
    }
    showPortState();
}

/// @return empty on success, otherwise the reason in words.
QString Form1::openChosenPort()
{
    auto& port = module1_.port();
    const auto name = ui_->Combo1->currentText();
    const int number = text::integerOf(bytes(name.mid(kPortNamePrefix)));
    // A name without a number, or with that of another port, would open a port that was not chosen.
    if (!name.isEmpty() && ports_.deviceOf(number) != ui_->Combo1->currentData().toString()) {
        return tr("%1 cannot be opened: its name does not end in a port number of its own. "
                  "Choose another port.")
            .arg(name);
    }
    port.setSettings(kLineSettings);
    port.setCommPort(number);
    return port.setPortOpen(true);
}

QString Form1::OpenComm(const QString& portNumber)
{
    auto& port = module1_.port();
    const int number = text::integerOf(bytes(portNumber));
    // Devices always hand over every character as it came: there is no receive event, text mode or replacement of bad
    // characters to be set.
    port.setPortOpen(false);
    port.setRTSEnable(true);
    port.setDTREnable(true);
    port.setCommPort(number <= 0 || number >= 6 ? 1 : number);
    port.setSettings("9600,M,8,1");
    return port.setPortOpen(true);
}

void Form1::showPortState()
{
    const bool open = module1_.port().PortOpen();
    ui_->Command1->setText(open ? kCloseComm : kOpenComm);
    ui_->AddPort->setEnabled(!open);
    ui_->RefreshPorts->setEnabled(!open);
}

// An empty box is told of where its address is used: here it is what a search begins with.
void Form1::addressTyped(const QString& text)
{
    const auto before = addressHint(bench_.currentAddress);
    bench_.currentAddress = text;
    const auto hint = text.isEmpty() ? QString() : addressHint(text);
    if (!hint.isEmpty() || status_.text() == before) showStatus(hint);
}

void Form1::portLost(const QString& reason)
{
    stopFlag_ = true;
    showPortState();
    showStatus(reason);
}

// It needs no bus: a running reading goes on meanwhile, so nothing here waits until the window is closed.
void Form1::Help_Click()
{
    if (const auto reason = Form3::whyUnreadable(bench_.helpText); !reason.isEmpty()) {
        messages_.say(this, reason);
        return;
    }
    auto* help = new Form3(bench_.helpText, this);
    help->setAttribute(Qt::WA_DeleteOnClose);
    help->setModal(true);
    InputFilter::letThrough(help);
    help->show();
}

// Ends the program whatever runs: waits end at once, boxes are no longer shown.
void Form1::Quit_Click()
{
    stopFlag_ = true;
    module1_.abandon();
    hide();
    QCoreApplication::exit(0);
}

void Form1::closeEvent(QCloseEvent* event)
{
    if (module1_.port().PortOpen()) module1_.port().setPortOpen(false);
    event->accept();
}

} // namespace quorvel
