#include "app/openers.h"
#include "app/program.h"
#include "autoread/storedreadings.h"
#include "grayscale/pixels.h"
#include "line/diagnosiswindow.h"
#include "line/finderwindow.h"
#include "line/healthwindow.h"
#include "line/journalwindow.h"
#include "line/trafficpanel.h"
#include "settings/settingscompare.h"

namespace quorvel {

namespace {

constexpr QSize kTrafficSize(1110, 300); // all columns

/// Nothing watches the traffic before its panel is opened for the first time; from then on it is kept.
void showTraffic(Program& program)
{
    static constexpr auto kName = "Traffic";
    if (auto* open = program.form1.findChild<line::TrafficPanel*>(kName)) {
        open->show();
        return open->raise();
    }
    program.module1.addObserver(program.traffic);
    auto* panel = new line::TrafficPanel(program.traffic, program.trace, program.workplace, &program.form1);
    program.form1.addDockWidget(Qt::BottomDockWidgetArea, panel);
    // Beside the main window, whose own layout stays as it is.
    panel->setFloating(true);
    panel->resize(kTrafficSize);
    panel->move(program.form1.frameGeometry().bottomLeft());
    panel->show();
}

void showHealth(Program& program)
{
    static constexpr auto kName = "LineHealth";
    auto* window = program.form1.findChild<line::HealthWindow*>(kName);
    if (!window) window = new line::HealthWindow(program.health, &program.form1);
    window->show();
    window->raise();
}

void showJournal(Program& program)
{
    auto* window = program.form1.findChild<line::JournalWindow*>("Journal");
    if (!window) window = new line::JournalWindow(line::journalFile(), &program.form1);
    window->show();
    window->raise();
}

/// A new one each time, so that it begins with the address of the main window.
void showStoredReadings(Program& program)
{
    auto* window = program.form1.findChild<StoredReadings*>();
    if (!window && program.gate.busy()) {
        return program.form1.showStatus(
            QStringLiteral("A command runs; open \"Stored Readings\" when it has ended."));
    }
    if (!window) window = new StoredReadings(program.workplace, program.book, &program.form1);
    window->setAttribute(Qt::WA_DeleteOnClose);
    window->show();
    window->raise();
    window->activateWindow();
}

/// A new one each time, too.
void showSettings(Program& program)
{
    auto* window = program.form1.findChild<SettingsCompare*>("Settings");
    if (!window) window = new SettingsCompare(program.workplace, &program.form1);
    window->setAttribute(Qt::WA_DeleteOnClose);
    window->show();
    window->raise();
}

/// It stays as it is when it is closed, with its reference.
void showPixels(Program& program)
{
    auto* window = program.form1.findChild<Pixels*>("Pixels");
    if (!window) window = new Pixels(program.workplace, &program.form1);
    window->show();
    window->raise();
    window->activateWindow();
}

/// Tests at once: in the window that `parent` has, or in a new one. Beside a modal window only what belongs to it can
/// be used.
void showDiagnosis(Program& program, QWidget* parent, const QString& address)
{
    auto* window = parent->findChild<line::DiagnosisWindow*>(QLatin1String(line::DiagnosisWindow::kName),
                                                             Qt::FindDirectChildrenOnly);
    if (!window) window = new line::DiagnosisWindow(program.workplace, program.ports, parent);
    if (!program.gate.busy()) window->setAddress(address);
    window->show();
    window->raise();
    window->activateWindow();
    window->start();
}

void showFinder(Program& program)
{
    auto* window = program.form1.findChild<line::FinderWindow*>(QLatin1String(line::FinderWindow::kName));
    if (!window) {
        window = new line::FinderWindow(
            program.workplace,
            [&program](const std::vector<std::string>& addresses) { program.form1.showFound(addresses); },
            &program.form1);
    }
    window->show();
    window->raise();
    window->activateWindow();
}

} // namespace

void addTools(Program& program)
{
    const auto test = [&program] { showDiagnosis(program, &program.form1, program.bench.currentAddress); };
    program.workplace.whyNoAnswer = [&program](QWidget* parent, const QString& address) {
        showDiagnosis(program, parent, address);
    };
    program.form1.offerTest(test);
    program.form1.addTool(QStringLiteral("&Traffic"), [&program] { showTraffic(program); });
    program.form1.addTool(QStringLiteral("Line &Health"), [&program] { showHealth(program); });
    program.form1.addTool(QStringLiteral("&Why no answer?"), test);
    program.form1.addTool(QStringLiteral("&Find Readouts One by One"), [&program] { showFinder(program); });
    program.form1.addTool(QStringLiteral("&Journal"), [&program] { showJournal(program); });
    program.form1.addTool(QStringLiteral("Stored R&eadings"), [&program] { showStoredReadings(program); });
    program.form1.addTool(QStringLiteral("S&ite"), [&program] { showSite(program); });
    program.form1.addTool(QStringLiteral("Pi&xels"), [&program] { showPixels(program); });
    program.form1.addTool(QStringLiteral("&Settings ..."), [&program] { showSettings(program); });
    addCalibrationTool(program);
    auto* readOnly = program.form1.addTool(QStringLiteral("&Read Only"), [] {});
    readOnly->setCheckable(true);
    readOnly->setObjectName(QStringLiteral("ReadOnly"));
    QObject::connect(readOnly, &QAction::toggled, &program.form1, [&program](bool on) {
        program.module1.setReadOnly(on);
        program.form1.showReadOnly(on);
        program.form1.showStatus(
            on ? QStringLiteral("Read Only is on: nothing is sent that would change a readout.")
               : QStringLiteral("Read Only is off."));
    });
    readOnly->setChecked(program.module1.readOnly());
    QObject::connect(&program.trace, &line::Trace::failed, &program.form1, &Form1::showStatus);
}

} // namespace quorvel
