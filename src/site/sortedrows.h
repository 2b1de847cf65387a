#pragma once

#include <QSortFilterProxyModel>

namespace quorvel::site {

/// The rows of a SiteModel in the order that the operator has chosen. What is not known comes last in both directions.
class SortedRows final : public QSortFilterProxyModel {
    Q_OBJECT
public:
    using QSortFilterProxyModel::QSortFilterProxyModel;

protected:
    bool lessThan(const QModelIndex& left, const QModelIndex& right) const override;
};

} // namespace quorvel::site
