#include "site/sortedrows.h"

namespace quorvel::site {

bool SortedRows::lessThan(const QModelIndex& left, const QModelIndex& right) const
{
    const bool isKnown = left.data(sortRole()).isValid();
    if (isKnown == right.data(sortRole()).isValid()) return QSortFilterProxyModel::lessThan(left, right);
    return isKnown == (sortOrder() == Qt::AscendingOrder);
}

} // namespace quorvel::site
