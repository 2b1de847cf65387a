#pragma once

#include "line/finder.h"
#include "line/runwindow.h"

#include <QSpinBox>
#include <QTableWidget>

#include <functional>
#include <string>
#include <vector>

namespace quorvel::line {

/// The window "Find Readouts One by One": asks each address of a range by itself, and tells answer times, types where
/// they can be told, and addresses that two readouts seem to have.
class FinderWindow final : public RunWindow {
    Q_OBJECT
public:
    /// Takes addresses as decimal text of at least two digits, in ascending order.
    using Taker = std::function<void(const std::vector<std::string>&)>;

    /// @param take  puts the addresses found into the main window's list.
    FinderWindow(const Workplace& workplace, Taker take, QWidget* parent = nullptr);

    static constexpr auto kName = "Finder";

protected:
    QString warning() const override { return {}; } // it has a range, no address

private:
    void layOut();
    void addRange(QHBoxLayout& row);
    void makeTable();
    void find();
    void showReadout(const FoundReadout& readout);
    void report(const FinderResult& result, double seconds);
    void takeAddresses() const;

    Taker take_;
    QSpinBox from_;
    QSpinBox to_;
    QTableWidget table_;
    QPushButton takeButton_;
};

} // namespace quorvel::line
