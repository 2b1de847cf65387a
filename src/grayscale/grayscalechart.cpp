#include "grayscale/grayscalechart.h"

#include "grayscale/drawthart.h"
#include "grayscale/pixelfile.h"
#include "link/bytes.h"
#include "ui_grayscalechart.h"

#include <algorithm>

namespace quorvel {

using namespace grayscale;

namespace {

constexpr auto kHint = "    After pressing the left button,the chart extends if the mouse goes right "
                       "downwards and turn original if "
                       "the mouse goes left upwards!\n\r    After pressing the right button, the chart may "
                       "move where the mouse goes!";

constexpr int kProgressInterval = 200; // ms

QString fromText(std::string_view text)
{
    return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

} // namespace

GrayScaleChart::GrayScaleChart(link::Bench& bench, link::Module1& module1, link::Gate& gate,
                               Messages& messages, QWidget* parent)
    : QDialog(parent), ui_(std::make_unique<Ui::GrayScaleChart>()), bench_(bench), module1_(module1),
      gate_(gate), messages_(messages)
{
    ui_->setupUi(this);
    setWindowFlag(Qt::WindowMinMaxButtonsHint);
    ui_->Status->setMinimumHeight(ui_->Status->fontMetrics().height());
    gate_.guard(ui_->Command1, &QPushButton::clicked, this, &GrayScaleChart::Command1_Click);
    gate_.guard(ui_->Command2, &QPushButton::clicked, this, &GrayScaleChart::Command2_Click);
    connect(ui_->TChart1, &TChart::pointedAt, ui_->Readout, &QLabel::setText);
    connect(&module1_.port(), &link::MSComm::lost, this, &GrayScaleChart::setStatus);
}

GrayScaleChart::~GrayScaleChart() = default;

// Only a showing reads. Coming back from a box, from another program or from the task bar shows nothing anew.
void GrayScaleChart::showEvent(QShowEvent* event)
{
    QDialog::showEvent(event);
    if (event->spontaneous()) return;
    QTimer::singleShot(0, this, [this] { gate_.runWhenFree(this, [this] { Form_Activate(); }); });
}

void GrayScaleChart::resizeEvent(QResizeEvent* event)
{
    QDialog::resizeEvent(event);
    Form_Resize();
}

void GrayScaleChart::reject()
{
    gate_.whenIdle(this, [this] { QDialog::reject(); });
}

void GrayScaleChart::Form_Activate()
{
    ui_->Label1->setText(kHint);
    setStatus({});
    ui_->TChart1->removeAllSeries();
    drawAxes(*ui_->TChart1, bench_.GrayscaleDirection.toStdString(), bench_.instrumentType);
    ui_->TChart1->setTitle(fromText(kReadingTitle));
    module1_.clock().letEventsRun();
    dataReady_ = false;
    readSelected();
    DrawThart();
    ui_->TChart1->setTitle(fromText(chartTitle(bench_.GrayscaleDirection.toStdString())));
}

void GrayScaleChart::Form_Resize()
{
    if (isMinimized()) return;
    const int top = ui_->panel->heightForWidth(width());
    ui_->panel->setGeometry(0, 0, width(), top);
    ui_->TChart1->setGeometry(0, top, width(), height() - top);
}

void GrayScaleChart::DrawThart()
{
    drawThart(*ui_->TChart1, array_, bench_.GrayscaleDirection.toStdString(), bench_.instrumentType);
}

void GrayScaleChart::readSelected()
{
    using Routine = void (GrayScaleChart::*)();
    static constexpr std::pair<const char*, Routine> kRoutines[] = {
        {"X", &GrayScaleChart::Read_X_Grayscale_Data},
        {"Y", &GrayScaleChart::Read_Y_Grayscale_Data},
        {"Z1", &GrayScaleChart::Read_Z1_Grayscale_Data},
        {"Z2", &GrayScaleChart::Read_Z2_Grayscale_Data},
    };
    for (const auto& [name, routine] : kRoutines) {
        if (bench_.GrayscaleDirection == QLatin1String(name)) (this->*routine)();
    }
}

void GrayScaleChart::Read_X_Grayscale_Data() { read(kDirections[0]); }
void GrayScaleChart::Read_Y_Grayscale_Data() { read(kDirections[1]); }
void GrayScaleChart::Read_Z1_Grayscale_Data() { read(kDirections[2]); }
void GrayScaleChart::Read_Z2_Grayscale_Data() { read(kDirections[3]); }

void GrayScaleChart::read(const Direction& direction)
{
    if (!mayRead(direction)) return;
    enableButtons(false);
    QTimer progressTimer;
    connect(&progressTimer, &QTimer::timeout, this, [this, &direction] { showProgress(direction); });
    progressTimer.start(kProgressInterval);
    const auto outcome = fetch(module1_, direction, bench_.addressDigits(), array_);
    progressTimer.stop();
    finishReading(direction, outcome);
}

bool GrayScaleChart::mayRead(const Direction& direction)
{
    if (!module1_.port().PortOpen()) {
        say(kPortNotOpened);
        if (direction.closesWithoutPort) reject();
        return false;
    }
    if (direction.needsAddress && bench_.currentAddress.isEmpty()) {
        say(kNoAddress);
        reject();
        return false;
    }
    return true;
}

void GrayScaleChart::finishReading(const Direction& direction, Outcome outcome)
{
    // A vanished port has left its reason there.
    if (outcome == Outcome::Read || module1_.port().PortOpen()) setStatus({});
    const bool countsAsDone = outcome == Outcome::Malformed && direction.malformed.empty();
    if (outcome == Outcome::NoReply) {
        say(kCommError);
        enableButtons(true);
    } else if (outcome == Outcome::Malformed && !countsAsDone) {
        say(direction.malformed);
    } else {
        dataReady_ = true;
        enableButtons(true);
    }
    if (outcome == Outcome::Read) setStatus(tr("%1 pixels read.").arg(array_.count()));
    if (countsAsDone) setStatus(tr("The reply was not understood. No pixels were read."));
}

void GrayScaleChart::Command1_Click()
{
    const auto path = SaveChartImage(messages_, this);
    if (path.isEmpty()) return;
    const auto reason = saveChart(*ui_->TChart1, path);
    setStatus(reason.isEmpty() ? tr("Picture saved: %1").arg(path) : reason);
}

void GrayScaleChart::Command2_Click()
{
    const auto path = ChooseDatabaseFile(messages_, this);
    if (path.isEmpty() || !mayWrite(messages_, this, path)) return;
    const auto reason = savePixels(path, array_);
    setStatus(reason.isEmpty() ? tr("Data saved: %1").arg(path) : reason);
    if (!reason.isEmpty()) messages_.say(this, reason);
}

void GrayScaleChart::enableButtons(bool on)
{
    ui_->Command1->setEnabled(on);
    ui_->Command2->setEnabled(on);
}

void GrayScaleChart::say(std::string_view text) { messages_.say(this, fromText(text)); }

void GrayScaleChart::setStatus(const QString& text)
{
    ui_->Status->setText(text);
    Form_Resize();
}

void GrayScaleChart::showProgress(const Direction& direction)
{
    const auto come = progress(direction, module1_.ReplyText());
    auto text = come.expected < 0 ? tr("Waiting for the readout ...")
                                  : tr("%1 of %2 pixels received").arg(come.received).arg(come.expected);
    if (gate_.stopRequested()) text += tr(". The window closes when the reply has ended.");
    setStatus(text);
}

} // namespace quorvel
