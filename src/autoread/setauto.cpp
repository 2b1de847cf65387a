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
#include <QVBoxLayout>

namespace quorvel {

using link::bytes;
using link::shown;

namespace {

/// Reasons name files, whose names are UTF-8.
QString words(const std::string& reason) { return QString::fromStdString(reason); }

void keepPlace(QWidget* widget)
{
    auto policy = widget->sizePolicy();
    policy.setRetainSizeWhenHidden(true);
    widget->setSizePolicy(policy);
}

} // namespace

SetAuto::SetAuto(const Workplace& workplace, autoread::Book& book, QWidget* parent)
    : BusWindow(workplace, parent), ui_(std::make_unique<Ui::SetAuto>()), book_(book)
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
    odd_.clear();
    tell(tr("Waiting for readout %1 ...").arg(address()));
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
        book_.asked(address(), pointers, module1_.clock().now().toSecsSinceEpoch());
    } else if (exchange.complete() && !plain) {
        remark_ = tr("The answer to the query for stored records could not be read: %1")
                      .arg(words(protocol::printable(exchange.reply)));
    }
    refreshStatus();
}

void SetAuto::fetchInto(const QString& path, autoread::Existing existing, const protocol::RecordSpan& span)
{
    auto made = autoread::createRecordFile(QFileInfo(path).filesystemFilePath(), layout(), existing);
    if (!made) return say(words(made.error()));
    const int who = address();
    auto report = run(path, *made->sink, span);
    report.keptOld = autoread::settleOld(made->keptOld, report.complete());
    book_.kept(who, report.keptOld);
    if (link::isAddress(who)) book_.keepReport(report);
    if (module1_.port().PortOpen()) clearStatus();
    if (!report.reason.empty()) say(words(report.reason));
}

autoread::Report SetAuto::run(const QString& path, autoread::RecordSink& sink,
                              const protocol::RecordSpan& span)
{
    autoread::Report report;
    report.address = address();
    report.type = std::string(1, static_cast<char>('A' + (bench_.instrumentType - link::TypeA)));
    report.file = QFileInfo(path).filesystemFilePath();
    report.expected = span.count();
    oddCount_ = 0;
    book_.began(report.file);
    tell(tr("Closing this window ends the download after the current record."));
    autoread::RecordReader reader(module1_, addressDigits(), layout(), {.asPrescribed = true});
    const auto outcome = autoread::fetchRecords(reader, span, sink, watch(path, span));
    book_.finished(report.file);
    fill(report, outcome, std::nullopt, reader.counts());
    return report;
}

autoread::Watcher SetAuto::watch(const QString& path, const protocol::RecordSpan& span)
{
    return {.stop = [this] { return gate_.stopRequested(); },
            .progress =
                [this, span, who = address(),
                 file = QFileInfo(path).filesystemFilePath()](const autoread::Progress& progress) {
                    if (progress.latest && progress.latest->isSound())
                        book_.stored(who, file, span, span.first + progress.received - 1);
                    showProgress(progress);
                },
            .remark = [this](const std::string& words) { noteOdd(words); }};
}

void SetAuto::showProgress(const autoread::Progress& progress)
{
    if (progress.received > 0) {
        ui_->Label3->show();
        ui_->Label3->setText(shown(protocol::receivedText(progress.total, progress.received)));
    }
    const auto left = shown(text::timeLeft(progress.secondsLeft));
    ui_->Progress->setMaximum(progress.total);
    ui_->Progress->setValue(progress.received);
    ui_->Progress->setFormat(progress.received < progress.total ? tr("%p %, %1").arg(left) : tr("%p %"));
    ui_->Progress->show();
}

// The first one is said with its record; a line that named hundreds would say no more.
void SetAuto::noteOdd(const std::string& words)
{
    if (++oddCount_ == 1) firstOdd_ = QString::fromStdString(words);
    odd_ = oddCount_ == 1 ? firstOdd_
                          : tr("%1 And %2 more remarks of this kind.").arg(firstOdd_).arg(oddCount_ - 1);
    tell(tr("Closing this window ends the download after the current record."));
    addStatus(odd_);
}

void SetAuto::Command3_Click()
{
    if (!messages_.ask(this, protocol::kDeleteQuestion)) return;
    const int who = address();
    const auto deletion = ask(protocol::recordsDelete(addressDigits()));
    if (deletion.frameWentOut()) book_.deleted(who, autoread::judgeDeletion(deletion, who));
    refreshStatus();
    say(deletion.complete() ? protocol::kDataDeleted : protocol::kCommError);
}

void SetAuto::addressTyped()
{
    remark_.clear();
    odd_.clear();
    clearStatus();
}

QString SetAuto::standing() const
{
    const bool valid = link::isAddress(address());
    QStringList lines{valid ? words(book_.text(address())) : QString(), remark_, odd_};
    lines.removeAll(QString());
    return lines.join(u'\n');
}

void SetAuto::statusChanged()
{
    const int needed = ui_->rows->totalHeightForWidth(width());
    if (isVisible() && needed > height()) resize(width(), needed);
}

int SetAuto::address() const { return text::integerOf(bytes(ui_->Text1->text())); }

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
