#include "settings/settings_dialog.h"

#include <QEvent>
#include <QPushButton>
#include <QVBoxLayout>

namespace quorvel {

namespace {

constexpr int kStatusLines = 3;    // without a jump of the window
constexpr float kRestTime = 0.05F; // s, for the rest of a reply that did not begin where it should

} // namespace

SettingsDialog::SettingsDialog(link::Bench& bench, link::Module1& module1, link::Gate& gate,
                               Messages& messages, QWidget* parent)
    : QDialog(parent), bench_(bench), module1_(module1), gate_(gate), messages_(messages)
{
    connect(&module1_.port(), &link::MSComm::lost, this, &SettingsDialog::addStatus);
}

void SettingsDialog::addStatusLine()
{
    status_.setObjectName(QStringLiteral("Status"));
    status_.setWordWrap(true);
    status_.setTextFormat(Qt::PlainText);
    status_.setTextInteractionFlags(Qt::TextSelectableByMouse);
    status_.setAlignment(Qt::AlignTop | Qt::AlignLeft);
    status_.setMinimumHeight(kStatusLines * status_.fontMetrics().lineSpacing());
    layout()->addWidget(&status_);
}

void SettingsDialog::onClick(QPushButton* button, const std::function<void()>& handler)
{
    connect(button, &QPushButton::clicked, this, [this, handler] {
        gate_.run([this, &handler] {
            clearStatus();
            handler();
        });
    });
}

void SettingsDialog::enterPresses(QWidget* field, QPushButton* button)
{
    buttonOf_[field] = button;
    field->installEventFilter(this);
}

bool SettingsDialog::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() == QEvent::FocusIn) {
        const auto found = buttonOf_.find(watched);
        if (found != buttonOf_.end()) found->second->setDefault(true);
    }
    return QDialog::eventFilter(watched, event);
}

void SettingsDialog::addStatus(const QString& sentence)
{
    if (status_.text().contains(sentence)) return;
    status_.setText((status_.text() + u' ' + sentence).trimmed());
}

void SettingsDialog::explain(const settings::Exchange& exchange, const std::string& received)
{
    addStatus(settings::whyFailed(exchange, received, module1_.port()));
}

bool SettingsDialog::perform(const settings::Exchange& exchange, const char* failedText)
{
    if (!settings::perform(module1_, exchange)) {
        explain(exchange);
        say(failedText);
        return false;
    }
    if (!settings::answers(exchange, module1_.ReplyText())) {
        explain(exchange);
        module1_.WaitForInput(kRestTime, 0);
        module1_.discardInput();
    }
    return true;
}

void SettingsDialog::report(const settings::Exchange& exchange, const char* failedText)
{
    if (settings::confirms(exchange, module1_.ReplyText())) {
        say(settings::kSetOk);
        return;
    }
    explain(exchange);
    if (failedText) say(failedText);
}

void SettingsDialog::reject()
{
    gate_.whenIdle(this, [this] { QDialog::reject(); });
}

} // namespace quorvel
