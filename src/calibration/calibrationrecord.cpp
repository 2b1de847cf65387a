#include "calibration/calibrationrecord.h"

#include "calibration/errorchart.h"
#include "calibration/fitchart.h"
#include "calibration/recordpage.h"
#include "files/name.h"
#include "link/bytes.h"
#include "main/inputfilter.h"
#include "protocol/direction.h"
#include "text/number.h"

#include <QEvent>
#include <QFileInfo>
#include <QKeyEvent>
#include <QScopeGuard>

#include <algorithm>

namespace quorvel::calibration {

namespace {

constexpr std::chrono::milliseconds kLivePause(600);
constexpr std::size_t kSteadyReadings = 5;

QString asText(const std::string& words) { return QString::fromStdString(words); }

std::optional<double> numberIn(const QLineEdit& field)
{
    const auto typed = link::bytes(field.text());
    if (!text::isNumber(typed)) return std::nullopt;
    const double number = text::Val(typed);
    if (!std::isfinite(static_cast<float>(number))) return std::nullopt;
    return number;
}

} // namespace

CalibrationRecord::CalibrationRecord(const Workplace& workplace, QWidget* parent)
    : BusWindow(workplace, parent)
{
    setObjectName(QStringLiteral("CalibrationRecord"));
    setWindowTitle(tr("Calibration Record"));
    setWindowFlag(Qt::WindowMaximizeButtonHint);
    layOut();
    useAddressBox(address_);
    for (const auto direction : protocol::kDirections) {
        if (protocol::hasDirection(bench_.instrumentType, direction))
            direction_.addItem(link::shown(protocol::nameOf(direction)));
    }
    // Typing goes on while the readout answers; commands wait for their turn.
    InputFilter::letThrough(this);
    dial_.installEventFilter(this);
    connect(&dial_, &QLineEdit::returnPressed, this, &CalibrationRecord::Dial_Return);
    // what is being measured belongs to the direction before
    connect(&direction_, &QComboBox::currentIndexChanged, this, [this] {
        if (!gate_.busy()) return openDirection();
        gate_.runWhenFree(this, [this] { openDirection(); });
    });
    connect(&address_, &QLineEdit::textChanged, this, [this] {
        latest_.clear();
        live_.clear();
        refreshControls();
    });
    for (auto* field : detailFields())
        connect(field, &QLineEdit::editingFinished, this, &CalibrationRecord::keepDetails);
    connect(&zeroIsFree_, &QCheckBox::toggled, this, &CalibrationRecord::keepDetails);
    connect(&runs_, &QButtonGroup::idToggled, this, [this](int /*run*/, bool chosen) {
        if (!chosen) return;
        table_.setCurrentCell(down_.isChecked() ? kPoints - 1 : 0, 0);
        clearStatus();
        showAll();
    });
    connect(&down_, &QCheckBox::toggled, this,
            [this](bool down) { table_.setCurrentCell(down ? kPoints - 1 : 0, 0); });
    connect(&table_, &QTableWidget::currentCellChanged, this, [this] {
        showPoint();
        refreshStatus();
    });
    connect(&liveOn_, &QCheckBox::toggled, this, [this](bool on) {
        latest_.clear();
        live_.clear();
        on ? liveTimer_.start(kLivePause) : liveTimer_.stop();
    });
    connect(&liveTimer_, &QTimer::timeout, this, &CalibrationRecord::live);
    connect(&module1_.port(), &link::MSComm::lost, this, &CalibrationRecord::refreshControls);
    openDirection();
    table_.setCurrentCell(0, 0);
    dial_.setFocus();
}

CalibrationRecord::~CalibrationRecord() = default;

/// The files, the port and "Read Only" change in other windows.
bool CalibrationRecord::event(QEvent* event)
{
    const bool done = BusWindow::event(event);
    if (event->type() == QEvent::WindowActivate && !busy_ && job_) reload();
    return done;
}

/// The arrows choose the point while the dial reading has the keyboard.
bool CalibrationRecord::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == &dial_ && event->type() == QEvent::KeyPress) {
        const int key = static_cast<const QKeyEvent*>(event)->key();
        const int step = key == Qt::Key_Up ? -1 : key == Qt::Key_Down ? 1 : 0;
        if (step != 0) {
            table_.setCurrentCell(std::clamp(point() + step, 0, kPoints - 1), 0);
            return true;
        }
    }
    return BusWindow::eventFilter(watched, event);
}

bool CalibrationRecord::mayClose()
{
    const auto lost = keepDetails();
    return lost.isEmpty() ||
           messages_.askToLose(this, lost + QStringLiteral("\n\n") + tr("Close the window all the same?"));
}

void CalibrationRecord::whenFree(const std::function<void()>& handler)
{
    if (!gate_.busy()) return runHandler(handler);
    gate_.runWhenFree(this, [this, handler] {
        handler();
        module1_.dropRest();
    });
}

void CalibrationRecord::onCommand(QPushButton* button, void (CalibrationRecord::*command)())
{
    connect(button, &QPushButton::clicked, this, [this, command] {
        whenFree([this, command] {
            const auto ended = qScopeGuard([this, focused = focusWidget()] {
                busy_ = false;
                progress_.hide();
                showAll();
                if (focused && focused->isEnabled()) focused->setFocus();
            });
            busy_ = true;
            refreshControls();
            clearStatus();
            (this->*command)();
        });
    });
}

/// Takes what was typed about the record; nothing is written while nothing has changed.
/// @return empty, or why not all was taken, which the status line says, too: the file could not be written, or a number was
///         refused; the one before it stays then, and all else is kept.
QString CalibrationRecord::keepDetails()
{
    const auto& old = job_->record();
    const auto tolerance = numberIn(tolerance_);
    const auto steady = numberIn(steady_);
    const bool noTolerance = tolerance_.text().trimmed().isEmpty();
    const bool goodTolerance = noTolerance || (tolerance && *tolerance > 0);
    const bool goodSteady = steady && *steady > 0;
    const auto change = [&](RecordData& record) {
        record.serial = serial_.text();
        record.gauge = gauge_.text();
        record.person = person_.text();
        record.remark = remark_.text();
        if (goodTolerance) record.tolerance = noTolerance ? std::nullopt : tolerance;
        if (goodSteady) record.steadyWithin = *steady;
        record.zeroIsFree = zeroIsFree_.isChecked();
    };
    QString lost;
    if (!goodTolerance || !goodSteady) {
        lost = tr(
            "Permitted error and \"Steady within\" are numbers above 0, with a decimal point. What was there "
            "stays.");
    }
    auto wanted = old;
    change(wanted);
    if (!hasSameDetails(wanted, old) || !job_->isRecordWritten()) {
        const auto kept = job_->change(change);
        if (!kept) lost = asText(kept.error());
        if (kept) shownDetails_ = detailsOf(job_->record());
        showAll();
    }
    if (!lost.isEmpty()) tell(lost);
    return lost;
}

void CalibrationRecord::Dial_Return()
{
    const auto typed = numberIn(dial_);
    if (!typed) {
        return tell(
            tr("\"%1\" is not a dial reading: type a number with a decimal point.").arg(dial_.text()));
    }
    if (address() == 0) return tell(tr("Nothing was measured: type the address of one readout, 1 to 249."));
    if (!module1_.port().PortOpen())
        return tell(tr("Nothing was measured: the port is closed. Open it in the main window."));
    queue_.push_back({runKind(), point(), *typed, down_.isChecked(), repeats_.value(), address()});
    dial_.clear();
    advance();
    refreshControls();
    if (queue_.size() > 1) return; // the handler that runs takes it as well
    whenFree([this] { takeQueued(); });
}

void CalibrationRecord::advance()
{
    const int next = point() + (down_.isChecked() ? -1 : 1);
    if (next >= 0 && next < kPoints) table_.setCurrentCell(next, 0);
}

void CalibrationRecord::takeQueued()
{
    while (!queue_.empty()) {
        const auto order = queue_.front();
        tell(tr("Measuring point %1 ...").arg(order.point));
        const auto taken = job_->take(order, [this] { return gate_.stopRequested(); });
        queue_.pop_front();
        clearStatus();
        if (!taken) {
            // what was typed on in good faith belongs to points that would now be the wrong ones
            queue_.clear();
            runs_.button(static_cast<int>(order.kind))->setChecked(true);
            down_.setChecked(order.down);
            table_.setCurrentCell(order.point, 0);
            dial_.setText(link::shown(text::general(order.dial)));
            dial_.selectAll();
            tell(tr("Point %1: %2").arg(order.point).arg(asText(taken.error())));
        }
        showAll();
    }
}

std::function<void(int)> CalibrationRecord::progress()
{
    progress_.setRange(0, protocol::echoLength(job_->direction().readings.back().sensor));
    progress_.setValue(0);
    progress_.show();
    return [this](int sent) { progress_.setValue(sent); };
}

void CalibrationRecord::showSent(const Sent& sent) { tell(sent.words.join(u' ')); }

/// @param question  asked when the points are of this readout, or nothing is known.
bool CalibrationRecord::maySend(const QString& question)
{
    const auto others = job_->whyNotTheirs(address());
    if (others.isEmpty()) return messages_.ask(this, question);
    return messages_.askToLose(this,
                               others + u'\n' + tr("Send them to readout %1 all the same?").arg(address()));
}

void CalibrationRecord::Download_Click()
{
    keepDetails();
    if (const auto loaded = job_->load(); !loaded) return tell(asText(loaded.error()));
    if (!maySend(tr("Send the measured points to readout %1? They replace the table that it has, which "
                    "nothing reads "
                    "back.")
                     .arg(address())))
        return;
    tell(tr("Sending ..."));
    const auto sent = job_->download(address(), progress());
    if (!sent) return tell(asText(sent.error()));
    showSent(*sent);
    if (sent->agreed) addStatus(tr("Next: \"As left\", the same points once more."));
}

void CalibrationRecord::SwitchOff_Click()
{
    const auto question = tr(
        "A readout that has a table corrects what it reads. Points for a new table must come uncorrected, or "
        "the new "
        "table corrects what was corrected already.\n\nSend tables of zeros to readout %1, which switch the "
        "correction off? The table that it has is lost, and until the next download it shows uncorrected "
        "values.");
    if (!messages_.askToLose(this, question.arg(address()))) return;
    tell(tr("Sending ..."));
    showSent(job_->switchOff(address(), progress()));
}

void CalibrationRecord::NewTable_Click()
{
    if (!messages_.ask(
            this, tr("Begin a new table? All points and runs are emptied; the files are kept under the day's "
                     "date.")))
        return;
    const auto kept = job_->newTable();
    if (!kept) return tell(asText(kept.error()));
    showDetails();
    table_.setCurrentCell(down_.isChecked() ? kPoints - 1 : 0, 0);
    tell(
        kept->empty()
            ? tr("A new table was begun.")
            : tr("A new table was begun. The earlier one is kept as %1.").arg(asText(files::inWords(*kept))));
}

void CalibrationRecord::ClearRun_Click()
{
    const auto& run = kRuns[static_cast<std::size_t>(runKind())];
    const bool measured = run.kind == RunKind::Measured;
    if (measured) {
        return tell(
            tr("The measured run is the table itself: take its points anew, or press \"New Table ...\"."));
    }
    if (!messages_.askToLose(this,
                             tr("Forget all that was taken of the run \"%1\"?").arg(QLatin1String(run.name))))
        return;
    const auto cleared = job_->clear(run.kind);
    if (!cleared) tell(asText(cleared.error()));
}

void CalibrationRecord::SaveRecord_Click()
{
    const auto unkept = keepDetails();
    if (!unkept.isEmpty() && job_->isRecordWritten()) return;
    const auto name = QStringLiteral("calibration-%1-%2-%3.pdf")
                          .arg(job_->record().address > 0 ? QString::number(job_->record().address)
                                                          : QStringLiteral("readout"),
                               direction_.currentText(), module1_.clock().now().date().toString(Qt::ISODate));
    const auto proposed = asText(files::inWords(bench_.programFolder / name.toStdString()));
    const auto chosen =
        messages_.chooseFile(this, {tr("Save Record"), QLatin1String(kRecordFilter), true, proposed});
    if (chosen.isEmpty() || !mayWrite(messages_, this, chosen)) return;
    // what was typed and could not be kept beside the points is in what is saved
    if (job_->isRecordWritten()) {
        if (const auto loaded = job_->load(); !loaded) return tell(asText(loaded.error()));
    }
    const auto saved = saveRecord(*job_, QFileInfo(chosen).filesystemFilePath(), module1_.clock().now());
    tell(saved ? tr("Saved as %1.").arg(chosen) : asText(saved.error()));
    addStatus(unkept);
}

/// Only while nobody else talks, and only for a window in use: the line is shared.
void CalibrationRecord::live()
{
    if (!isActiveWindow() || gate_.busy() || address() == 0 || !module1_.port().PortOpen()) return;
    gate_.runUnasked([this] {
        const auto readings = job_->ask(address());
        if (!liveOn_.isChecked()) return;
        if (readings) {
            showLive(readings->front());
        } else {
            latest_.clear();
            live_.setText(tr("no answer"));
        }
        module1_.dropRest();
    });
}

void CalibrationRecord::showLive(double first)
{
    latest_.push_back(first);
    if (latest_.size() > kSteadyReadings) latest_.erase(latest_.begin());
    const auto [low, high] = std::ranges::minmax(latest_);
    const bool enough = latest_.size() == kSteadyReadings;
    const bool steady = enough && high - low < job_->record().steadyWithin;
    live_.setText(link::shown(text::format(first, "0.000")) + QStringLiteral(" mm  ") +
                  (steady   ? tr("steady")
                   : enough ? tr("moves by %1 mm").arg(plainMm(high - low))
                            : QStringLiteral("...")));
}

} // namespace quorvel::calibration
