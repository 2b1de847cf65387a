#pragma once

#include <QDialog>
#include <QLabel>
#include <QLineEdit>
#include <QSortFilterProxyModel>
#include <QStandardItemModel>
#include <QTableView>

#include <filesystem>

namespace quorvel::line {

/// The window "Journal": what was set and deleted, by whom, and what was there before. It reads the file anew each time
/// that it is shown, and changes nothing in it. It does not block the other windows.
class JournalWindow final : public QDialog {
    Q_OBJECT
public:
    explicit JournalWindow(std::filesystem::path file, QWidget* parent = nullptr);

protected:
    void showEvent(QShowEvent* event) override;

private:
    void layOut();
    void read();
    void copyCsv() const;

    std::filesystem::path file_;
    QStandardItemModel lines_;
    QSortFilterProxyModel shown_;
    QLineEdit search_;
    QTableView table_;
    QLabel status_;
};

} // namespace quorvel::line
