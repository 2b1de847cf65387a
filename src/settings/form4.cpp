#include "settings/form4.h"

#include <QComboBox>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QPushButton>

namespace quorvel {

using namespace protocol;

namespace {

constexpr int kLeastWidth = 380;

QPushButton* button(const char* name, const char* caption)
{
    auto* made = new QPushButton(caption);
    made->setObjectName(name);
    return made;
}

} // namespace

/// A switch and its controls; the directions share the names of their buttons.
struct Form4::Row {
    const SwitchRow& row;
    const char* caption;
    const char* list;
    const char* queryButton;
    const char* setButton;
};

Form4::Form4(const Workplace& workplace, QWidget* parent) : BusWindow(workplace, parent)
{
    setObjectName(QStringLiteral("Form4"));
    setWindowTitle(QStringLiteral("Invert and Swap"));
    setMinimumWidth(kLeastWidth);
    auto* rows = new QVBoxLayout(this);
    rows->setContentsMargins(18, 16, 18, 12);
    const Row switches[] = {
        {kSwitches[kInvertXRow], "X Direction", "Combo1", "Command1", "Command2"},
        {kSwitches[kInvertYRow], "Y Direction", "Combo2", "Command1", "Command2"},
        {kSwitches[kInvertZRow], "Z Direction", "Combo3", "Command1", "Command2"},
        {kSwitches[kSwapRow], "Swap X and Y", "Combo4", "Command3", "Command4"},
    };
    for (const auto& row : switches)
        addRow(row, *rows);
    addStatusLine();
}

void Form4::addRow(const Row& row, QVBoxLayout& rows)
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

    enterPresses(list, setButton, queryButton);
    onClick(queryButton, [this, &row = row.row, list] { query(row, *list); });
    onClick(setButton, [this, &row = row.row, list] { set(row, *list); });
}

void Form4::query(const SwitchRow& row, QComboBox& list)
{
    const auto exchange = perform(switchQuery(row, addressDigits()));
    if (!answered(exchange)) return;
    const auto on = switchStateOf(exchange.reply);
    warnIfUnreliable(exchange, on.has_value());
    if (!on) return;
    say(*on ? row.onText : row.offText);
    list.setCurrentIndex(*on ? kTrue : kFalse);
}

// An echo that differs brings no message, only the reason in the status line.
void Form4::set(const SwitchRow& row, const QComboBox& list)
{
    const auto exchange = perform(switchSet(row, addressDigits(), list.currentIndex() == kTrue));
    if (answered(exchange)) report(exchange, nullptr);
}

} // namespace quorvel
