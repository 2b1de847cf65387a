#pragma once

#include "calibration/records.h"

#include <QAbstractTableModel>

#include <map>

namespace quorvel::calibration {

/// A calibration table as Qt's grid sees it: one column per field, Null as an empty cell, numbers edited as text.
///
/// What is entered is written at once. What cannot be written is kept and shown, and tried again with every submit(),
/// so that nothing typed is lost.
class CalibrationModel final : public QAbstractTableModel {
    Q_OBJECT
public:
    /// @param records  must outlive the model.
    explicit CalibrationModel(Records& records, QObject* parent = nullptr);

    /// The records were opened anew or closed: everything is read again, what is not written is dropped.
    void reset();

    /// True while something entered is not in the file.
    bool hasUnwritten() const { return !unwritten_.empty(); }

    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;

    /// Takes a text; an empty one makes the cell Null. @return false, and the old value stays, when the text is not
    /// a number of single precision or the column takes none.
    bool setData(const QModelIndex& index, const QVariant& value, int role = Qt::EditRole) override;

    /// Writes what is not written yet. @return false when something still is not.
    bool submit() override;

Q_SIGNALS:
    /// Words for the operator: why a text was refused or could not be written; empty when the trouble is over.
    void told(const QString& words);

private:
    const jet::FieldDef& field(int column) const;
    bool takesNumbers(int column) const;
    bool refuse(const QModelIndex& index, const QString& text);
    bool writeAll();
    void tell(const QString& words);
    const std::optional<double>* unwrittenAt(const QModelIndex& index) const;
    QString textAt(const QModelIndex& index) const;

    Records& records_;
    std::map<int, Records::Changes> unwritten_; ///< by row
    bool troubleTold_ = false;
};

} // namespace quorvel::calibration
