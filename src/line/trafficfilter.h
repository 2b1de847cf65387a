#pragma once

#include "line/trafficmodel.h"

#include <QSortFilterProxyModel>

#include <optional>

namespace quorvel::line {

/// The rows of the traffic that the operator asked for.
class TrafficFilter final : public QSortFilterProxyModel {
    Q_OBJECT
public:
    using QSortFilterProxyModel::QSortFilterProxyModel;

    // Nothing means all.
    void setReadout(std::optional<int> address);
    void setVerdict(std::optional<protocol::Verdict> verdict);
    void setKind(std::optional<link::Kind> kind);

protected:
    bool filterAcceptsRow(int row, const QModelIndex& parent) const override;

private:
    std::optional<int> address_;
    std::optional<protocol::Verdict> verdict_;
    std::optional<link::Kind> kind_;
};

} // namespace quorvel::line
