#include "settings/form4.h"

#include <QComboBox>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QPushButton>

namespace quorvel {

using namespace settings;

namespace {

constexpr int kLeastWidth = 380;

QPushButton* button(const char* name, const char* caption)
{
    auto* made = new QPushButton(caption);
    made->setObjectName(name);
    return made;
}

} // namespace

Form4::Form4(link::Bench& bench, link::Module1& module1, link::Gate& gate, Messages& messages,
             QWidget* parent)
    : SettingsDialog(bench, module1, gate, messages, parent)
{
    setObjectName(QStringLiteral("Form4"));
    setWindowTitle(QStringLiteral("Invert and Swap"));
    setMinimumWidth(kLeastWidth);
    auto* rows = new QVBoxLayout(this);
    rows->setContentsMargins(18, 16, 18, 12);
    for (const auto& row : kSwitches)
        addRow(row, *rows);
    addStatusLine();
}

// The buttons of the directions bear the same two names, those of the swap two of their own.
void Form4::addRow(const SwitchRow& row, QVBoxLayout& rows)
{
    auto* frame = new QGroupBox(row.caption);
    auto* list = new QComboBox;
    list->setObjectName(row.list);
    list->setAccessibleName(row.caption);
    list->addItems({QStringLiteral("True"), QStringLiteral("False")});
    list->setCurrentIndex(kFalse);
    auto* queryButton = button(row.queryButton, "Query");
    auto* setButton = button(row.setButton, "Set");
    auto* line = new QHBoxLayout(frame);
    line->addWidget(list, 1);
    line->addWidget(queryButton);
    line->addWidget(setButton);
    rows.addWidget(frame);

    enterPresses(list, setButton);
    onClick(queryButton, [this, &row, list] { query(row, *list); });
    onClick(setButton, [this, &row, list] { set(row, *list); });
}

void Form4::query(const SwitchRow& row, QComboBox& list)
{
    const auto exchange = switchQuery(row, bench_.addressDigits());
    if (!perform(exchange)) return;
    const auto on = switchStateOf(module1_.ReplyText());
    if (!on) {
        explain(exchange);
        return;
    }
    say(*on ? row.onText : row.offText);
    list.setCurrentIndex(*on ? kTrue : kFalse);
}

// An echo that differs brings no message, only the reason in the status line.
void Form4::set(const SwitchRow& row, const QComboBox& list)
{
    const auto exchange = switchSet(row, bench_.addressDigits(), list.currentIndex() == kTrue);
    if (perform(exchange)) report(exchange, nullptr);
}

} // namespace quorvel
