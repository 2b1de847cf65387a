#pragma once

#include "link/transaction.h"
#include "main/workplace.h"
#include "protocol/answer.h"

#include <QDialog>
#include <QLabel>
#include <QPushButton>
#include <QStringList>

#include <functional>
#include <map>
#include <string>

class QAbstractButton;
class QLineEdit;

namespace quorvel {

class WhyLink;

/// Places in the lists of "True" and "False".
enum TrueFalseIndex { kTrue, kFalse };

/// The base of all windows that talk to readouts: handlers pass the gate, every frame goes through the one door, closing
/// waits for the running handler, and a status line says what the program adds of its own: reasons, warnings, waiting
/// notices, the loss of the port, an address that names no readout.
///
/// The status line holds the sentences added since the latest handler began, and standing() while there are none. The
/// hint on the address comes before either. After a command that was not answered it also offers to test why, where the
/// workplace has such a test.
class BusWindow : public QDialog {
    Q_OBJECT
public:
    /// Closes the window, or lets it close when the running handler has ended and mayClose() agrees.
    void reject() override;

protected:
    BusWindow(const Workplace& workplace, QWidget* parent);

    /// The form's own status line, or one below the controls that are there.
    void useStatusLine(QLabel& line);
    void addStatusLine();
    /// The box whose text is this window's address; without one it is the main window's. `TestNo` is copied into it.
    void useAddressBox(QLineEdit& box);
    /// Its text, and the two hexadecimal digits for frames.
    QString addressText() const;
    std::string addressDigits() const;

    /// Connects a signal to a handler that talks; see runHandler().
    template<class Sender, class Signal>
    void onSignal(Sender* sender, Signal signal, const std::function<void()>& handler)
    {
        connect(sender, signal, this, [this, handler] { runHandler(handler); });
    }
    void onClick(QAbstractButton* button, const std::function<void()>& handler);
    /// Runs a handler alone, with the status line emptied before; afterwards, when its boxes are closed, what a
    /// reply that was not the answer left behind is thrown away.
    void runHandler(const std::function<void()>& handler);

    /// While `field` has the focus, Enter presses `set`; or `query`, if there is one, until the field was edited. What
    /// the program itself puts into the field does not count as edited.
    void enterPresses(QWidget* field, QPushButton* set, QPushButton* query = nullptr);

    /// Runs a transaction. @param sent  called with the number of characters sent so far.
    link::Exchange perform(const link::Transaction& transaction, const std::function<void(int)>& sent = {});
    /// True for a complete exchange. Otherwise says `failedText`, with the reason in the status line.
    bool answered(const link::Exchange& exchange, const char* failedText = protocol::kCommError);
    /// Says whether a complete reply confirms the command. A null text says nothing.
    void report(const link::Exchange& exchange, const char* failedText);
    /// Shows a complete reply in the status line when it is not the answer or its values are not of their form.
    void warnIfUnreliable(const link::Exchange& exchange, bool plain);

    void say(const QString& text) { messages_.say(this, text); }
    /// Adds a sentence to the status line; one that is there already is not added.
    void addStatus(const QString& sentence);
    /// Shows this sentence alone.
    void tell(const QString& sentence);
    void clearStatus() { tell(QString()); }
    /// Adds the reason why a command was not confirmed.
    void explain(const link::Exchange& exchange);
    /// Shows the line anew, for a standing text that has changed.
    void refreshStatus();

    /// What the status line shows while there is no sentence.
    virtual QString standing() const { return {}; }
    /// What the status line says before all else, as long as it holds: an address that names no readout.
    virtual QString warning() const;
    /// What a handler begins with.
    virtual void beginHandler() { clearStatus(); }
    /// Asked before the window closes.
    virtual bool mayClose() { return true; }
    /// Called when the status line has another text.
    virtual void statusChanged() {}

    bool eventFilter(QObject* watched, QEvent* event) override;

    link::Bench& bench_;
    link::Module1& module1_;
    link::Gate& gate_;
    Messages& messages_;

private:
    /// The buttons that Enter presses in a field.
    struct EnterRow {
        QPushButton* set;
        QPushButton* query;
        bool edited = false;
    };
    void watchEdits(QWidget* field);
    void setEdited(QWidget* field, bool edited);
    void makeDefault(const EnterRow& row);

    QLabel ownLine_;
    QLabel* line_ = nullptr;
    WhyLink* why_ = nullptr;
    std::function<void(QWidget*, const QString&)> whyNoAnswer_;
    QLineEdit* addressBox_ = nullptr;
    QStringList sentences_;
    std::map<QObject*, EnterRow> enterRows_;
};

} // namespace quorvel
