#pragma once

#include "link/gate.h"
#include "main/messages.h"

namespace quorvel {

/// Qt's own boxes, in English and never the platform's. While one is open, the gate lets its answers through.
class QtMessages final : public Messages {
public:
    explicit QtMessages(link::Gate& gate) : gate_(gate) {}

    void say(QWidget* parent, const QString& text) override;
    bool ask(QWidget* parent, const QString& text) override;
    bool askToLose(QWidget* parent, const QString& text) override;
    void showResult(QWidget* parent, const QString& firstLine, const QString& secondLine) override;
    QString chooseFile(QWidget* parent, const FileChoice& choice) override;
    QString askText(QWidget* parent, const QString& caption, const QString& label) override;
    bool choosePrinter(QWidget* parent, QPrinter& printer) override;

private:
    link::Gate& gate_;
};

} // namespace quorvel
