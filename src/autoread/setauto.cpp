#include "autoread/setauto.h"

#include "autoread/mode.h"
#include "autoread/pace.h"
#include "link/address.h"
#include "link/bytes.h"
#include "text/number.h"
#include "ui_setauto.h"

#include <QFileInfo>
#include <QKeyEvent>

namespace quorvel {

using link::bytes;
using link::shown;

namespace {

constexpr double kSecondsPerDay = 86400;

/// Reasons name files, whose names are UTF-8.
QString words(const std::string& reason) { return QString::fromStdString(reason); }

double secondsBetween(double start, double now)
{
    return now < start ? now + kSecondsPerDay - start : now - start;
}

void keepPlace(QWidget* widget)
{
    auto policy = widget->sizePolicy();
    policy.setRetainSizeWhenHidden(true);
    widget->setSizePolicy(policy);
}

} // namespace

SetAuto::SetAuto(const link::Bench& bench, link::Module1& module1, link::Gate& gate, Messages& messages,
                 QWidget* parent)
    : QDialog(parent), ui_(std::make_unique<Ui::SetAuto>()), bench_(bench), module1_(module1), gate_(gate),
      messages_(messages)
{
    ui_->setupUi(this);
    Form_Load();
    connectControls();
}

SetAuto::~SetAuto() = default;

void SetAuto::Form_Load()
{
    for (const auto& row : autoread::kIntervals) {
        ui_->Combo1->addItem(shown(row.entry));
    }
    ui_->Combo1->setCurrentIndex(autoread::kOneHour);
    for (auto* widget : std::initializer_list<QWidget*>{ui_->Label3, ui_->Progress}) {
        keepPlace(widget);
        widget->hide();
    }
    ui_->Text1->setText(bench_.currentAddress);
    showLedger();
}

void SetAuto::connectControls()
{
    gate_.guard(ui_->Command1, &QPushButton::clicked, this, &SetAuto::Command1_Click);
    gate_.guard(ui_->Command2, &QPushButton::clicked, this, &SetAuto::Command2_Click);
    gate_.guard(ui_->Command3, &QPushButton::clicked, this, &SetAuto::Command3_Click);
    connect(ui_->Text1, &QLineEdit::textChanged, this, &SetAuto::addressTyped);
    connect(&module1_.port(), &link::MSComm::lost, ui_->Status, &QLabel::setText);
}

bool SetAuto::transact(const std::string& frame, int replyLength)
{
    remark_.clear();
    showLine(tr("Waiting for readout %1 ...").arg(words(address())));
    const bool answered = module1_.transact(frame, static_cast<std::uint16_t>(replyLength));
    showLedger();
    return answered;
}

// A broken query does not end it: the question then shows what the characters received make, zeros when there
// were none, and the schedule can be set although it could not be read.
void SetAuto::Command1_Click()
{
    if (!transact(autoread::modeFrame(addressDigits()), autoread::kModeReplyLength))
        messages_.say(this, kCommError);
    const auto mode = autoread::readMode(module1_.ReplyText());
    if (!messages_.ask(this, shown(autoread::modeQuestion(mode)))) return;
    const auto frame = autoread::intervalFrame(addressDigits(), ui_->Combo1->currentIndex());
    const bool answered = transact(frame, autoread::kIntervalReplyLength);
    messages_.say(this, answered ? autoread::kSetOk : autoread::kSetError);
}

// Here, too, a broken query goes on: it mostly leads to "No Data". A window that is closing touches no file: what
// stands there would give way to an empty one.
void SetAuto::Command2_Click()
{
    if (!module1_.port().PortOpen()) return messages_.say(this, kPortNotOpened);
    const bool answered = transact(autoread::pointersFrame(addressDigits()), autoread::kPointersReplyLength);
    if (!answered) messages_.say(this, kCommError);
    const auto pointers = autoread::readPointers(module1_.ReplyText());
    noteReply(pointers, answered);
    if (pointers.isEmpty()) return messages_.say(this, autoread::kNoData);
    if (const auto why = autoread::whyNotFetchable(pointers); !why.empty())
        return messages_.say(this, words(why));
    if (gate_.stopRequested()) return;
    const auto path = ChooseDatabaseFile(messages_, this);
    if (path.isEmpty() || gate_.stopRequested()) return;
    const auto existing = QFileInfo::exists(path) ? autoread::Existing::Replace : autoread::Existing::Keep;
    if (!mayWrite(messages_, this, path) || gate_.stopRequested()) return;
    fetchInto(path, existing, autoread::spanOf(pointers));
}

void SetAuto::noteReply(const autoread::RingPointers& pointers, bool answered)
{
    const auto& reply = module1_.ReplyText();
    const bool plain = autoread::isPlainPointersReply(reply);
    if (plain && autoread::whyNotFetchable(pointers).empty()) {
        ledger_.seen(address(), pointers, module1_.clock().now().toSecsSinceEpoch());
    } else if (answered && !plain) {
        remark_ = tr("The answer to the question for stored records was not readable: %1")
                      .arg(words(autoread::printable(reply)));
    }
    showLedger();
}

void SetAuto::fetchInto(const QString& path, autoread::Existing existing, const autoread::RecordSpan& span)
{
    auto sink = autoread::createRecordFile(QFileInfo(path).filesystemFilePath(), layout(), existing);
    if (!sink) return messages_.say(this, words(sink.error()));
    const auto outcome = run(**sink, span);
    showLedger();
    if (!outcome.reason.empty()) messages_.say(this, words(outcome.reason));
}

autoread::Outcome SetAuto::run(autoread::RecordSink& sink, const autoread::RecordSpan& span)
{
    auto& clock = module1_.clock();
    const double start = clock.timeOfDay();
    const auto who = address();
    showProgress(span.count(), 0, 0);
    showLine(tr("Closing this window ends the download after the record under way."));
    return autoread::fetchRecords(
        module1_, addressDigits(), span, layout(), sink,
        {[this] { return gate_.stopRequested(); },
         [&](int received) {
             ledger_.downloaded(who, span, span.first + received - 1);
             ui_->Label3->show();
             ui_->Label3->setText(shown(autoread::receivedText(span.count(), received)));
             showProgress(span.count(), received, secondsBetween(start, clock.timeOfDay()));
         }});
}

void SetAuto::showProgress(int total, int received, double passed)
{
    const double left = autoread::secondsLeft(layout(), total, received, passed);
    ui_->Progress->setMaximum(total);
    ui_->Progress->setValue(received);
    ui_->Progress->setFormat(received < total ? tr("%p %, %1").arg(shown(autoread::timeLeftText(left)))
                                              : tr("%p %"));
    ui_->Progress->show();
}

void SetAuto::Command3_Click()
{
    showLedger();
    if (!messages_.ask(this, autoread::kDeleteQuestion)) return;
    const auto who = address();
    // A readout that does not answer may have deleted all the same.
    ledger_.forget(who);
    const bool answered = transact(autoread::deleteFrame(addressDigits()), autoread::kDeleteReplyLength);
    if (answered) ledger_.deleted(who);
    showLedger();
    messages_.say(this, answered ? autoread::kDataDeleted : kCommError);
}

void SetAuto::addressTyped()
{
    remark_.clear();
    showLedger();
}

void SetAuto::showLedger()
{
    const bool valid = link::isAddress(text::integerOf(bytes(ui_->Text1->text())));
    showLine(valid ? words(ledger_.text(address()))
                   : tr("No readout has this address: it is a number from 1 to 249."));
}

// When the adapter was pulled, the reason for that stays.
void SetAuto::showLine(const QString& line)
{
    if (!module1_.port().PortOpen()) return;
    ui_->Status->setText(remark_.isEmpty() ? line : line + u'\n' + remark_);
}

std::string SetAuto::addressDigits() const { return link::AddressToHex(bytes(ui_->Text1->text())); }

std::string SetAuto::address() const { return text::general(text::integerOf(bytes(ui_->Text1->text()))); }

const autoread::RecordLayout& SetAuto::layout() const
{
    return autoread::layoutOf(bench_.isThreeDirection());
}

// Return presses the button that has the focus and no other: what is typed into the address box must not set off
// anything.
void SetAuto::keyPressEvent(QKeyEvent* event)
{
    auto* button = qobject_cast<QPushButton*>(focusWidget());
    const bool isReturn = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
    if (button && isReturn) {
        button->click();
    } else {
        QDialog::keyPressEvent(event);
    }
}

void SetAuto::reject()
{
    gate_.whenIdle(this, [this] { QDialog::reject(); });
}

} // namespace quorvel
