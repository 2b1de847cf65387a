#include "autoread/setauto.h"

#include "autoread/pace.h"
#include "link/address.h"
#include "link/bytes.h"
#include "protocol/answer.h"
#include "protocol/schedule.h"
#include "text/duration.h"
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

SetAuto::SetAuto(const Workplace& workplace, QWidget* parent)
    : BusWindow(workplace, parent), ui_(std::make_unique<Ui::SetAuto>())
{
    ui_->setupUi(this);
    Form_Load();
    onClick(ui_->Command1, [this] { Command1_Click(); });
    onClick(ui_->Command2, [this] { Command2_Click(); });
    onClick(ui_->Command3, [this] { Command3_Click(); });
}

SetAuto::~SetAuto() = default;

void SetAuto::Form_Load()
{
    for (const auto& row : protocol::kIntervals) {
        ui_->Combo1->addItem(shown(row.entry));
    }
    ui_->Combo1->setCurrentIndex(protocol::kOneHour);
    for (auto* widget : std::initializer_list<QWidget*>{ui_->Label3, ui_->Progress}) {
        keepPlace(widget);
        widget->hide();
    }
    useStatusLine(*ui_->Status);
    useAddressBox(*ui_->Text1);
    connect(ui_->Text1, &QLineEdit::textChanged, this, &SetAuto::addressTyped);
}

link::Exchange SetAuto::ask(const link::Transaction& transaction)
{
    remark_.clear();
    tell(tr("Waiting for readout %1 ...").arg(words(address())));
    auto exchange = perform(transaction);
    clearStatus();
    if (exchange.outcome == link::Outcome::PortLost || exchange.outcome == link::Outcome::Refused)
        explain(exchange);
    return exchange;
}

// A broken query does not end it: the question then shows what the characters received make, zeros when there
// were none, and the schedule can be set although it could not be read.
void SetAuto::Command1_Click()
{
    const auto asked = ask(protocol::modeQuery(addressDigits()));
    if (!asked.complete()) say(protocol::kCommError);
    const auto mode = protocol::readMode(asked.reply);
    if (!messages_.ask(this, shown(protocol::modeQuestion(mode)))) return;
    const auto set = ask(protocol::intervalSet(addressDigits(), ui_->Combo1->currentIndex()));
    say(set.complete() ? protocol::kScheduleSet : protocol::kScheduleNotSet);
}

// Here, too, a broken query goes on: it mostly leads to "No Data". A window that is closing touches no file: what
// stands there would give way to an empty one.
void SetAuto::Command2_Click()
{
    if (!module1_.port().PortOpen()) return say(kPortNotOpened);
    const auto asked = ask(protocol::pointersQuery(addressDigits()));
    if (!asked.complete()) say(protocol::kCommError);
    const auto pointers = protocol::readPointers(asked.reply);
    noteReply(pointers, asked);
    if (pointers.isEmpty()) return say(protocol::kNoData);
    if (const auto why = protocol::whyNotFetchable(pointers); !why.empty()) return say(words(why));
    if (gate_.stopRequested()) return;
    const auto path = ChooseDatabaseFile(messages_, this);
    if (path.isEmpty() || gate_.stopRequested()) return;
    const auto existing = QFileInfo::exists(path) ? autoread::Existing::Replace : autoread::Existing::Keep;
    if (!mayWrite(messages_, this, path) || gate_.stopRequested()) return;
    fetchInto(path, existing, protocol::spanOf(pointers));
}

void SetAuto::noteReply(const protocol::RingPointers& pointers, const link::Exchange& exchange)
{
    const bool plain = protocol::isPlainPointersReply(exchange.reply);
    if (plain && protocol::whyNotFetchable(pointers).empty()) {
        ledger_.seen(address(), pointers, module1_.clock().now().toSecsSinceEpoch());
    } else if (exchange.complete() && !plain) {
        remark_ = tr("The answer to the query for stored records could not be read: %1")
                      .arg(words(protocol::printable(exchange.reply)));
    }
    refreshStatus();
}

void SetAuto::fetchInto(const QString& path, autoread::Existing existing, const protocol::RecordSpan& span)
{
    auto sink = autoread::createRecordFile(QFileInfo(path).filesystemFilePath(), layout(), existing);
    if (!sink) return say(words(sink.error()));
    const auto outcome = run(**sink, span);
    if (module1_.port().PortOpen()) clearStatus();
    if (!outcome.reason.empty()) say(words(outcome.reason));
}

autoread::Outcome SetAuto::run(autoread::RecordSink& sink, const protocol::RecordSpan& span)
{
    auto& clock = module1_.clock();
    const double start = clock.timeOfDay();
    const auto who = address();
    showProgress(span.count(), 0, 0);
    tell(tr("Closing this window ends the download after the current record."));
    return autoread::fetchRecords(
        module1_, addressDigits(), span, layout(), sink,
        {[this] { return gate_.stopRequested(); },
         [&](int received) {
             ledger_.downloaded(who, span, span.first + received - 1);
             ui_->Label3->show();
             ui_->Label3->setText(shown(protocol::receivedText(span.count(), received)));
             showProgress(span.count(), received, secondsBetween(start, clock.timeOfDay()));
         }});
}

void SetAuto::showProgress(int total, int received, double passed)
{
    const double left = autoread::secondsLeft(layout(), total, received, passed);
    ui_->Progress->setMaximum(total);
    ui_->Progress->setValue(received);
    ui_->Progress->setFormat(received < total ? tr("%p %, %1").arg(shown(text::timeLeft(left))) : tr("%p %"));
    ui_->Progress->show();
}

void SetAuto::Command3_Click()
{
    if (!messages_.ask(this, protocol::kDeleteQuestion)) return;
    const auto who = address();
    // A readout that does not answer may have deleted all the same.
    ledger_.forget(who);
    const auto deletion = ask(protocol::recordsDelete(addressDigits()));
    if (deletion.complete()) ledger_.deleted(who);
    refreshStatus();
    say(deletion.complete() ? protocol::kDataDeleted : protocol::kCommError);
}

void SetAuto::addressTyped()
{
    remark_.clear();
    clearStatus();
}

QString SetAuto::standing() const
{
    const bool valid = link::isAddress(text::integerOf(bytes(ui_->Text1->text())));
    QStringList lines{valid ? words(ledger_.text(address())) : QString(), remark_};
    lines.removeAll(QString());
    return lines.join(u'\n');
}

std::string SetAuto::address() const { return text::general(text::integerOf(bytes(ui_->Text1->text()))); }

const autoread::RecordLayout& SetAuto::layout() const
{
    return protocol::layoutOf(bench_.isThreeDirection());
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

} // namespace quorvel
