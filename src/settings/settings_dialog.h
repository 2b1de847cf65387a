#pragma once

#include "link/bench.h"
#include "link/gate.h"
#include "link/module1.h"
#include "main/messages.h"
#include "settings/exchange.h"

#include <QDialog>
#include <QLabel>

#include <functional>
#include <map>

class QPushButton;

namespace quorvel {

/// Places in the lists of "True" and "False".
enum TrueFalseIndex { kTrue, kFalse };

/// What all settings windows share: the transaction with its message, a status line for what the program adds
/// of its own (reasons, warnings, waiting notices), Enter that presses the button belonging to a field, and a
/// way to close that lets a running command end first.
class SettingsDialog : public QDialog {
    Q_OBJECT
public:
    /// Closes the window, or lets it close when the running command has ended.
    void reject() override;

protected:
    /// All references must outlive the window.
    SettingsDialog(link::Bench& bench, link::Module1& module1, link::Gate& gate, Messages& messages,
                   QWidget* parent);

    /// Call it once the controls are there: puts the status line below them.
    void addStatusLine();
    /// Connects a button to a handler that talks; it runs alone, with the status line emptied before.
    void onClick(QPushButton* button, const std::function<void()>& handler);
    /// While `field` has the focus, Enter presses `button`.
    void enterPresses(QWidget* field, QPushButton* button);

    void say(const QString& text) { messages_.say(this, text); }
    /// Adds a sentence to the status line, which keeps all of them until the next handler starts. One that
    /// stands there already is not added.
    void addStatus(const QString& sentence);
    void clearStatus() { status_.clear(); }
    /// addStatus() with the reason why a command was not confirmed.
    void explain(const settings::Exchange& exchange) { explain(exchange, module1_.ReplyText()); }
    void explain(const settings::Exchange& exchange, const std::string& received);

    /// Performs a command. When its reply does not arrive whole, says so and gives the reason in the status line.
    /// A whole one that cannot be the answer to this command is given there as well, and what is left of it is thrown
    /// away: it would stand before the next answer.
    bool perform(const settings::Exchange& exchange, const char* failedText = kCommError);
    /// Says whether the reply just received confirms the command. A null text says nothing.
    void report(const settings::Exchange& exchange, const char* failedText);

    bool eventFilter(QObject* watched, QEvent* event) override;

    link::Bench& bench_;
    link::Module1& module1_;
    link::Gate& gate_;
    Messages& messages_;

private:
    QLabel status_;
    std::map<QObject*, QPushButton*> buttonOf_;
};

} // namespace quorvel
