#include "grayscale/grayscalechart.h"

#include "chart/export.h"
#include "grayscale/drawthart.h"
#include "grayscale/pixelfile.h"
#include "link/bytes.h"
#include "ui_grayscalechart.h"

#include <QTimer>

namespace quorvel {

using namespace grayscale;
using namespace protocol;

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

GrayScaleChart::GrayScaleChart(const Workplace& workplace, QWidget* parent)
    : BusWindow(workplace, parent), ui_(std::make_unique<Ui::GrayScaleChart>())
{
    ui_->setupUi(this);
    setWindowFlag(Qt::WindowMinMaxButtonsHint);
    ui_->Status->setMinimumHeight(ui_->Status->fontMetrics().height());
    useStatusLine(*ui_->Status);
    onClick(ui_->Command1, [this] { Command1_Click(); });
    onClick(ui_->Command2, [this] { Command2_Click(); });
    connect(ui_->TChart1, &TChart::pointedAt, ui_->Readout, &QLabel::setText);
}

GrayScaleChart::~GrayScaleChart() = default;

// Read once per show(), not when the window comes back from a box, from another program or from the task bar.
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

void GrayScaleChart::Form_Activate()
{
    ui_->Label1->setText(kHint);
    clearStatus();
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

void GrayScaleChart::Read_X_Grayscale_Data() { read(kGrayscales[0]); }
void GrayScaleChart::Read_Y_Grayscale_Data() { read(kGrayscales[1]); }
void GrayScaleChart::Read_Z1_Grayscale_Data() { read(kGrayscales[2]); }
void GrayScaleChart::Read_Z2_Grayscale_Data() { read(kGrayscales[3]); }

void GrayScaleChart::read(const GrayscaleRow& row)
{
    if (!mayRead(row)) return;
    enableButtons(false);
    QTimer progressTimer;
    connect(&progressTimer, &QTimer::timeout, this, [this, &row] { showProgress(row); });
    progressTimer.start(kProgressInterval);
    const auto exchange = perform(grayscaleQuery(row, addressDigits()));
    progressTimer.stop();
    finishReading(row, exchange);
}

bool GrayScaleChart::mayRead(const GrayscaleRow& row)
{
    if (!module1_.port().PortOpen()) {
        say(kPortNotOpened);
        if (row.closesWithoutPort) reject();
        return false;
    }
    if (row.needsAddress && bench_.currentAddress.isEmpty()) {
        say(fromText(kNoAddress));
        reject();
        return false;
    }
    return true;
}

void GrayScaleChart::finishReading(const GrayscaleRow& row, const link::Exchange& exchange)
{
    if (!exchange.complete()) {
        // A vanished port has left its reason there.
        if (module1_.port().PortOpen()) tell(arrived(row, exchange.reply));
        say(kCommError);
        return enableButtons(true);
    }
    const auto read = readGrayscale(row, exchange.reply, array_);
    clearStatus();
    if (!read.good && !row.malformed.empty()) return say(fromText(row.malformed));
    dataReady_ = true;
    enableButtons(true);
    if (!read.good) return tell(tr("The reply was not understood. No pixels were read."));
    tell(tr("%1 pixels read.").arg(array_.count()));
    if (!read.damaged.empty()) {
        addStatus(
            tr("%1 of them arrived damaged: they were not two hexadecimal digits.").arg(read.damaged.size()));
    }
}

void GrayScaleChart::Command1_Click()
{
    const auto path = SaveChartImage(messages_, this);
    if (path.isEmpty()) return;
    const auto reason = chart::save(*ui_->TChart1, path, QStringLiteral("jpeg"));
    tell(reason.isEmpty() ? tr("Picture saved: %1").arg(path) : reason);
}

void GrayScaleChart::Command2_Click()
{
    const auto path = ChooseDatabaseFile(messages_, this);
    if (path.isEmpty() || !mayWrite(messages_, this, path)) return;
    const auto reason = savePixels(path, array_);
    tell(reason.isEmpty() ? tr("Data saved: %1").arg(path) : reason);
    if (!reason.isEmpty()) say(reason);
}

void GrayScaleChart::enableButtons(bool on)
{
    ui_->Command1->setEnabled(on);
    ui_->Command2->setEnabled(on);
}

QString GrayScaleChart::arrived(const GrayscaleRow& row, const std::string& reply)
{
    const auto come = grayscaleProgress(row, reply);
    if (come.expected >= 0) return tr("%1 of %2 pixels arrived.").arg(come.received).arg(come.expected);
    return come.begun ? tr("%1 characters arrived.").arg(reply.size()) : QString();
}

void GrayScaleChart::showProgress(const GrayscaleRow& row)
{
    if (!module1_.port().PortOpen()) return; // the status tells why it vanished
    const auto come = arrived(row, module1_.ReplyText());
    tell(come.isEmpty() ? tr("Waiting for the readout ...") : come);
    if (gate_.stopRequested()) addStatus(tr("The window closes when the reply has ended."));
}

} // namespace quorvel
