#include "main/whylink.h"

#include "protocol/meaning.h"

#include <QEvent>
#include <QKeyEvent>

#include <algorithm>

namespace quorvel {

namespace {

constexpr int kDistance = 8; // pixels between the text of the line and the words

bool isFailure(const link::Exchange& exchange)
{
    using protocol::Verdict;
    const auto verdict = protocol::verdictOf(exchange);
    return verdict == Verdict::Silent || verdict == Verdict::Short || verdict == Verdict::NotTheAnswer ||
           verdict == Verdict::PortLost;
}

} // namespace

WhyLink::WhyLink(QLabel& line, link::Module1& module1, const std::function<void()>& press)
    : QPushButton(tr("Why no answer?"), &line), line_(line), module1_(module1)
{
    setObjectName(QStringLiteral("WhyLink"));
    setToolTip(tr("Tests step by step why a readout does not answer; changes nothing"));
    setFlat(true);
    setAutoDefault(false);
    setCursor(Qt::PointingHandCursor);
    setStyleSheet(QStringLiteral("QPushButton { border: none; padding: 0px 2px; color: palette(link); "
                                 "text-decoration: underline; } QPushButton:focus { border: 1px dotted; }"));
    hide();
    connect(this, &QPushButton::clicked, this, press);
    line_.installEventFilter(this);
    module1_.addObserver(*this);
}

WhyLink::~WhyLink() { module1_.removeObserver(*this); }

WhyLink::Command::Command(WhyLink* link) : link_(link)
{
    if (!link_) return;
    link_->running_ = true;
    link_->failed_ = false;
    link_->offer(false);
}

WhyLink::Command::~Command()
{
    if (!link_) return;
    link_->running_ = false;
    link_->offer(link_->failed_);
}

void WhyLink::ended(const link::Exchange& exchange)
{
    if (running_) failed_ = isFailure(exchange);
}

void WhyLink::offer(bool on)
{
    setVisible(on);
    line_.setContentsMargins(0, 0, on ? sizeHint().width() + kDistance : 0, 0);
    if (on) place();
}

// Beside a text of one line, or at the top of a longer one.
void WhyLink::place()
{
    const auto size = sizeHint();
    const int height = std::min(size.height(), line_.height());
    const bool oneLine = line_.height() < 2 * line_.fontMetrics().lineSpacing();
    const int top = oneLine ? (line_.height() - height) / 2 : 0;
    setGeometry(line_.width() - size.width(), top, size.width(), height);
}

bool WhyLink::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() == QEvent::Resize) place();
    return QPushButton::eventFilter(watched, event);
}

// Return would press the default button of the window.
void WhyLink::keyPressEvent(QKeyEvent* event)
{
    if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) {
        click();
    } else {
        QPushButton::keyPressEvent(event);
    }
}

} // namespace quorvel
