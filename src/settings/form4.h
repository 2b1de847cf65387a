#pragma once

#include "main/buswindow.h"
#include "protocol/switches.h"

class QComboBox;
class QVBoxLayout;

namespace quorvel {

/// "Invert and Swap": four switches of a readout. All are shown for every instrument type. Opening it asks the
/// readout nothing: the lists show "False" until they are queried, and Enter in them queries until they are changed.
class Form4 final : public BusWindow {
    Q_OBJECT
public:
    explicit Form4(const Workplace& workplace, QWidget* parent = nullptr);

private:
    struct Row;
    void addRow(const Row& row, QVBoxLayout& rows);
    void query(const protocol::SwitchRow& row, QComboBox& list);
    void set(const protocol::SwitchRow& row, const QComboBox& list);
};

} // namespace quorvel
