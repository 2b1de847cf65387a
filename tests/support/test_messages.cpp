#include "support/test_messages.h"

#include <QPrinter>

namespace quorvel::test {

namespace {

template<class Value>
Value takeFirst(std::deque<Value>& values)
{
    if (values.empty()) return Value();
    auto value = values.front();
    values.pop_front();
    return value;
}

} // namespace

void TestMessages::say(QWidget*, const QString& text)
{
    shown << text;
    if (onShow) onShow(text);
}

bool TestMessages::ask(QWidget* parent, const QString& text)
{
    say(parent, text);
    return takeFirst(answers);
}

void TestMessages::showResult(QWidget* parent, const QString& firstLine, const QString& secondLine)
{
    say(parent, firstLine + u'\n' + secondLine);
}

QString TestMessages::chooseFile(QWidget*, const FileChoice& choice)
{
    lastChoice = choice;
    if (onChoose) onChoose();
    return takeFirst(files);
}

QString TestMessages::askText(QWidget*, const QString&, const QString&) { return takeFirst(texts); }

bool TestMessages::choosePrinter(QWidget*, QPrinter& printer)
{
    printer.setOutputFileName(takeFirst(files));
    return !printer.outputFileName().isEmpty();
}

} // namespace quorvel::test
