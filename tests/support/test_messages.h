#pragma once

#include "main/messages.h"

#include <QStringList>

#include <deque>
#include <functional>

namespace quorvel::test {

/// Answers in the operator's place and keeps what was shown.
class TestMessages final : public Messages {
public:
    void say(QWidget* parent, const QString& text) override;
    bool ask(QWidget* parent, const QString& text) override;
    void showResult(QWidget* parent, const QString& firstLine, const QString& secondLine) override;
    QString chooseFile(QWidget* parent, const FileChoice& choice) override;
    QString askText(QWidget* parent, const QString& caption, const QString& label) override;
    /// Prints into the next of `files`.
    bool choosePrinter(QWidget* parent, QPrinter& printer) override;

    /// The text shown last: a message, a question, or both lines of the result box joined by a line feed.
    QString last() const { return shown.isEmpty() ? QString() : shown.last(); }

    QStringList shown;                          ///< every text, in order
    std::deque<bool> answers;                   ///< to the questions to come; No when empty
    std::deque<QString> files;                  ///< chosen in the file dialogs to come; cancelled when empty
    std::deque<QString> texts;                  ///< typed into the text boxes to come; cancelled when empty
    FileChoice lastChoice;                      ///< what the last file dialog asked for
    std::function<void(const QString&)> onShow; ///< called with each text while its box is open
    std::function<void()> onChoose;             ///< called while a file dialog is open
};

} // namespace quorvel::test
