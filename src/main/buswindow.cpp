#include "main/buswindow.h"

#include "link/address.h"
#include "link/bytes.h"
#include "main/addresshint.h"
#include "main/whylink.h"

#include <QComboBox>
#include <QEvent>
#include <QLineEdit>
#include <QVBoxLayout>

namespace quorvel {

namespace {

constexpr int kStatusLines = 3; // without a jump of the window

} // namespace

BusWindow::BusWindow(const Workplace& workplace, QWidget* parent)
    : QDialog(parent), bench_(workplace.bench), module1_(workplace.module1), gate_(workplace.gate),
      messages_(workplace.messages), whyNoAnswer_(workplace.whyNoAnswer)
{
    connect(&module1_.port(), &link::MSComm::lost, this, &BusWindow::addStatus);
}

void BusWindow::useStatusLine(QLabel& line)
{
    line_ = &line;
    line.setObjectName(QStringLiteral("Status"));
    line.setWordWrap(true);
    line.setTextFormat(Qt::PlainText);
    line.setTextInteractionFlags(Qt::TextSelectableByMouse);
    if (whyNoAnswer_) why_ = new WhyLink(line, module1_, [this] { whyNoAnswer_(this, addressText()); });
    refreshStatus();
}

void BusWindow::addStatusLine()
{
    ownLine_.setAlignment(Qt::AlignTop | Qt::AlignLeft);
    ownLine_.setMinimumHeight(kStatusLines * ownLine_.fontMetrics().lineSpacing());
    layout()->addWidget(&ownLine_);
    useStatusLine(ownLine_);
}

void BusWindow::useAddressBox(QLineEdit& box)
{
    addressBox_ = &box;
    box.setText(bench_.currentAddress);
    connect(&box, &QLineEdit::textChanged, this, &BusWindow::refreshStatus);
    refreshStatus();
}

QString BusWindow::addressText() const { return addressBox_ ? addressBox_->text() : bench_.currentAddress; }

std::string BusWindow::addressDigits() const { return link::AddressToHex(link::bytes(addressText())); }

void BusWindow::onClick(QAbstractButton* button, const std::function<void()>& handler)
{
    onSignal(button, &QAbstractButton::clicked, handler);
}

void BusWindow::runHandler(const std::function<void()>& handler)
{
    gate_.run([this, &handler] {
        const WhyLink::Command command(why_);
        beginHandler();
        handler();
        module1_.dropRest();
    });
}

void BusWindow::enterPresses(QWidget* field, QPushButton* set, QPushButton* query)
{
    enterRows_[field] = {set, query};
    field->installEventFilter(this);
    if (query) watchEdits(field);
}

// Only what a person enters counts. Qt marks a text as modified until the program sets it; a list is activated by a
// person only, after its index has changed.
void BusWindow::watchEdits(QWidget* field)
{
    if (auto* box = qobject_cast<QLineEdit*>(field)) {
        connect(box, &QLineEdit::textChanged, this, [this, box] { setEdited(box, box->isModified()); });
    } else if (auto* list = qobject_cast<QComboBox*>(field)) {
        connect(list, &QComboBox::currentIndexChanged, this, [this, field] { setEdited(field, false); });
        connect(list, &QComboBox::activated, this, [this, field] { setEdited(field, true); });
    }
}

void BusWindow::setEdited(QWidget* field, bool edited)
{
    auto& row = enterRows_.at(field);
    row.edited = edited;
    if (field->hasFocus()) makeDefault(row);
}

void BusWindow::makeDefault(const EnterRow& row)
{
    (row.query && !row.edited ? row.query : row.set)->setDefault(true);
}

bool BusWindow::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() == QEvent::FocusIn) {
        const auto found = enterRows_.find(watched);
        if (found != enterRows_.end()) makeDefault(found->second);
    }
    return QDialog::eventFilter(watched, event);
}

link::Exchange BusWindow::perform(const link::Transaction& transaction, const std::function<void(int)>& sent)
{
    return module1_.transact(transaction, sent);
}

bool BusWindow::answered(const link::Exchange& exchange, const char* failedText)
{
    if (exchange.complete()) return true;
    explain(exchange);
    say(failedText);
    return false;
}

void BusWindow::report(const link::Exchange& exchange, const char* failedText)
{
    if (link::isConfirmed(exchange)) return say(protocol::kSetOk);
    explain(exchange);
    if (failedText) say(failedText);
}

void BusWindow::warnIfUnreliable(const link::Exchange& exchange, bool plain)
{
    if (!plain || !link::isAnswered(exchange)) explain(exchange);
}

void BusWindow::addStatus(const QString& sentence)
{
    if (!sentence.isEmpty() && !sentences_.contains(sentence)) sentences_ << sentence;
    refreshStatus();
}

void BusWindow::tell(const QString& sentence)
{
    sentences_.clear();
    addStatus(sentence);
}

void BusWindow::explain(const link::Exchange& exchange) { addStatus(protocol::whyFailed(exchange)); }

void BusWindow::refreshStatus()
{
    if (!line_) return;
    QStringList texts{warning(), sentences_.isEmpty() ? standing() : sentences_.join(u' ')};
    texts.removeAll(QString());
    const auto text = texts.join(u' ');
    if (text == line_->text()) return;
    line_->setText(text);
    statusChanged();
}

QString BusWindow::warning() const { return addressHint(addressText()); }

void BusWindow::reject()
{
    gate_.whenIdle(this, [this] {
        if (mayClose()) QDialog::reject();
    });
}

} // namespace quorvel
