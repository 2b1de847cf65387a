#include "grayscale/pixels.h"

#include "grayscale/pixelchart.h"
#include "grayscale/readingfile.h"
#include "link/address.h"
#include "link/bytes.h"
#include "main/addresshint.h"
#include "main/inputfilter.h"
#include "main/progress.h"
#include "ui_pixels.h"

#include <QScopeGuard>
#include <QShowEvent>
#include <QTimer>

#include <algorithm>

namespace quorvel {

using namespace grayscale;
using namespace protocol;

namespace {

constexpr int kFiguresWidth = 390;  // room for the figures of the reference
constexpr int kProgressEvery = 200; // ms
constexpr std::size_t kShownOfReply = 40;

QString nameOfRow(const GrayscaleRow& row) { return QString::fromStdString(std::string(nameOf(row.sensor))); }

bool hasSensor(link::InstrumentType type, Sensor sensor)
{
    switch (sensor) {
    case Sensor::X:
        return true;
    case Sensor::Y:
        return hasY(type);
    default:
        return hasZ(type);
    }
}

/// What came instead of pixels.
QString whatCame(const GrayscaleRow& row, const std::string& reply)
{
    const auto come = grayscaleProgress(row, reply);
    const auto begins = QString::fromStdString(printable(reply.substr(0, kShownOfReply)));
    const auto announced =
        come.expected >= 0
            ? Pixels::tr(" It announces %1 pixels and has %2.").arg(come.expected).arg(come.received)
            : QString();
    return Pixels::tr(
               "The reply is malformed, nothing of it is drawn: %1 characters that begin with \"%2\".%3")
        .arg(QString::number(reply.size()), begins, announced);
}

} // namespace

Pixels::Pixels(const Workplace& workplace, QWidget* parent)
    : BusWindow(workplace, parent), ui_(std::make_unique<Ui::Pixels>())
{
    ui_->setupUi(this);
    setObjectName(QStringLiteral("Pixels"));
    setWindowFlag(Qt::WindowMinMaxButtonsHint);
    ui_->Status->setMinimumHeight(2 * ui_->Status->fontMetrics().lineSpacing());
    ui_->Readout->setMinimumHeight(ui_->Readout->fontMetrics().lineSpacing());
    ui_->parts->setStretchFactor(0, 1);
    ui_->parts->setSizes({width() - kFiguresWidth, kFiguresWidth});
    useStatusLine(*ui_->Status);
    useAddressBox(*ui_->Address);
    connectControls();
    InputFilter::letThrough(ui_->Stop);
    InputFilter::letFocusMove(this);
    fillDirections();
    setRunning(false);
    showAll();
}

Pixels::~Pixels() = default;

void Pixels::connectControls()
{
    onClick(ui_->Read, [this] { Read_Click(); });
    connect(ui_->Stop, &QPushButton::clicked, this, [this] { stopped_ = true; });
    connect(ui_->KeepReference, &QPushButton::clicked, this, &Pixels::KeepReference_Click);
    connect(ui_->OpenReference, &QPushButton::clicked, this, &Pixels::OpenReference_Click);
    connect(ui_->NoReference, &QPushButton::clicked, this, &Pixels::NoReference_Click);
    connect(ui_->SavePicture, &QPushButton::clicked, this, &Pixels::SavePicture_Click);
    connect(ui_->SavePixels, &QPushButton::clicked, this, &Pixels::SavePixels_Click);
    connect(ui_->Print, &QPushButton::clicked, this, &Pixels::Print_Click);
    connect(ui_->Address, &QLineEdit::textChanged, this, &Pixels::refreshControls);
    connect(&module1_.port(), &link::MSComm::lost, this, &Pixels::refreshControls);
    connect(ui_->Chart, &TChart::pointedAt, ui_->Readout, &QLabel::setText);
    connect(ui_->Figures, &QTreeWidget::currentItemChanged, this, [this](const QTreeWidgetItem* item) {
        const auto pixel = item ? item->data(0, Qt::UserRole) : QVariant();
        if (pixel.isValid()) ui_->Chart->pointTo(pixel.toInt());
    });
    enterPresses(ui_->Address, ui_->Read);
    enterPresses(ui_->Readings, ui_->Read);
}

int Pixels::address() const { return link::addressIn(link::bytes(ui_->Address->text())); }

QString Pixels::warning() const { return oneReadoutHint(ui_->Address->text()); }

QString Pixels::standing() const
{
    if (!module1_.port().PortOpen())
        return tr("The port is closed. Open it in the main window, then press \"Read\".");
    return now_.reading.readings > 0 ? QString() : tr("Press \"Read\".");
}

/// The directions that the type chosen in the main window has.
void Pixels::fillDirections()
{
    QStringList names;
    for (const auto& row : kGrayscales)
        if (hasSensor(bench_.instrumentType, row.sensor)) names << nameOfRow(row);
    auto& list = *ui_->Direction;
    QStringList shown;
    for (int i = 0; i < list.count(); ++i)
        shown << list.itemText(i);
    if (shown == names) return;
    const auto chosen = list.currentText();
    list.clear();
    list.addItems(names);
    list.setCurrentIndex(std::max(list.findText(chosen), 0));
}

/// The port and the type are switched in the main window.
bool Pixels::event(QEvent* event)
{
    const bool done = BusWindow::event(event);
    if (event->type() == QEvent::WindowActivate && !running_) {
        fillDirections();
        refreshControls();
    }
    return done;
}

/// The pixels and the reference stay from one showing to the next, the address is that of the main window.
void Pixels::showEvent(QShowEvent* event)
{
    BusWindow::showEvent(event);
    if (!event->spontaneous() && !running_) ui_->Address->setText(bench_.currentAddress);
}

void Pixels::setRunning(bool running)
{
    running_ = running;
    refreshControls();
    if (running) {
        ui_->Stop->setFocus();
    } else {
        emptyBar(*ui_->Progress);
    }
}

void Pixels::refreshControls()
{
    const bool there = now_.reading.readings > 0;
    ui_->Read->setEnabled(!running_ && address() > 0 && module1_.port().PortOpen());
    for (QWidget* field : {static_cast<QWidget*>(ui_->Address), static_cast<QWidget*>(ui_->Direction),
                           static_cast<QWidget*>(ui_->Readings)})
        field->setEnabled(!running_);
    ui_->Stop->setEnabled(running_);
    for (auto* button : {ui_->KeepReference, ui_->SavePicture, ui_->SavePixels, ui_->Print})
        button->setEnabled(there && !running_);
    ui_->OpenReference->setEnabled(!running_);
    ui_->NoReference->setEnabled(reference_.has_value() && !running_);
    refreshStatus();
}

void Pixels::Read_Click()
{
    const auto* row = findGrayscale(ui_->Direction->currentText().toStdString());
    if (!row) return;
    auto* focused = focusWidget();
    stopped_ = false;
    wanted_ = ui_->Readings->value();
    setRunning(true);
    const auto ended = qScopeGuard([this, focused] {
        setRunning(false);
        if (focused && focused->isEnabled()) focused->setFocus();
    });
    PixelReading reading;
    PixelAverage average;
    while (average.readings() < wanted_ && !isStopped() && readOnce(*row, average, reading.at)) {
    }
    if (average.readings() == 0) {
        if (now_.reading.readings > 0) addStatus(tr("What is drawn was read before."));
        return;
    }
    average.putInto(reading);
    reading.direction = nameOfRow(*row);
    reading.type = bench_.instrumentType;
    reading.address = address();
    now_ = lookAt(std::move(reading));
    showAll();
    addStatus(tr("%1 of %2 readings of %3 pixels.")
                  .arg(now_.reading.readings)
                  .arg(wanted_)
                  .arg(now_.reading.values.size()));
    warnOfOtherSensor();
}

bool Pixels::readOnce(const GrayscaleRow& row, PixelAverage& average, QDateTime& begun)
{
    QTimer progressTimer;
    const int before = average.readings();
    connect(&progressTimer, &QTimer::timeout, this, [this, &row, before] { showProgress(row, before); });
    progressTimer.start(kProgressEvery);
    const auto exchange = perform(grayscaleQuery(row, addressDigits()));
    progressTimer.stop();
    // What was said of the progress goes; that the port was lost was said by the port.
    if (exchange.outcome != link::Outcome::PortLost) clearStatus();
    if (!take(row, exchange, average)) return false;
    begun = exchange.begun;
    return true;
}

bool Pixels::take(const GrayscaleRow& row, const link::Exchange& exchange, PixelAverage& average)
{
    if (!exchange.complete()) {
        explain(exchange);
        const auto come = grayscaleProgress(row, exchange.reply);
        if (come.expected >= 0)
            addStatus(tr("%1 of %2 pixels came; they are not drawn.").arg(come.received).arg(come.expected));
        return false;
    }
    PixelArray array;
    const auto read = readGrayscale(row, exchange.reply, array);
    if (!read.good) {
        addStatus(whatCame(row, exchange.reply));
        return false;
    }
    if (average.add(array.pixels(), read.damaged)) return true;
    addStatus(tr("This reading has %1 pixels, unlike those before; it does not count.").arg(array.count()));
    return false;
}

void Pixels::showProgress(const GrayscaleRow& row, int before)
{
    const auto come = grayscaleProgress(row, module1_.ReplyText());
    if (come.expected <= 0) {
        ui_->Progress->setMaximum(0);
        return tell(come.begun ? tr("A reply comes in ...") : tr("Waiting for the readout ..."));
    }
    ui_->Progress->setMaximum(wanted_ * come.expected);
    ui_->Progress->setValue(before * come.expected + come.received);
    ui_->Progress->setFormat(QStringLiteral("%p %"));
    tell(tr("Reading %1 of %2: %3 of %4 pixels.")
             .arg(before + 1)
             .arg(wanted_)
             .arg(come.received)
             .arg(come.expected));
    if (gate_.stopRequested()) addStatus(tr("The window closes when the reply has ended."));
}

Pixels::Looked Pixels::lookAt(PixelReading reading)
{
    // what is damaged counts as dark where nobody looks
    std::vector<double> values = reading.values;
    for (const int pixel : reading.damaged)
        values.at(static_cast<std::size_t>(pixel - 1)) = 0;
    const auto figures =
        profileFigures(values, reading.damaged, reading.direction.toStdString(), reading.type);
    return {std::move(reading), figures};
}

void Pixels::KeepReference_Click()
{
    setReference(now_);
    tell(tr("The pixels of %1 are the reference now. Clean, and press \"Read\".")
             .arg(now_.reading.at.toString(QStringLiteral("HH:mm:ss"))));
}

void Pixels::OpenReference_Click()
{
    const auto path = messages_.chooseFile(this, {tr("Open Reference"), tr("Pixels (*.csv *.mdb)")});
    if (path.isEmpty()) return;
    auto loaded = loadReading(path, bench_.instrumentType);
    if (!loaded) return tell(QString::fromStdString(loaded.error()));
    const auto count = loaded->values.size();
    setReference(lookAt(*std::move(loaded)));
    tell(tr("%1 pixels of %2 are the reference now.").arg(count).arg(path));
    if (now_.reading.readings > 0 && now_.reading.values.size() != count)
        addStatus(tr("The reading has %1: no difference is drawn.").arg(now_.reading.values.size()));
    warnOfOtherSensor();
}

void Pixels::warnOfOtherSensor()
{
    if (!reference_ || now_.reading.readings == 0) return;
    if (!isOfAnotherSensor(reference_->reading, now_.reading)) return;
    const auto& of = reference_->reading;
    addStatus(tr("The reference is of another sensor: readout %1, %2 direction.")
                  .arg(of.address > 0 ? QString::number(of.address) : tr("unknown"), of.direction));
}

void Pixels::NoReference_Click()
{
    setReference(std::nullopt);
    clearStatus();
}

void Pixels::setReference(std::optional<Looked> reference)
{
    reference_ = std::move(reference);
    showAll();
    refreshControls();
}

} // namespace quorvel
