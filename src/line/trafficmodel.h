#pragma once

#include "link/transaction.h"
#include "protocol/meaning.h"

#include <QAbstractTableModel>
#include <QTimer>

#include <deque>

namespace quorvel::line {

/// One line of the traffic.
struct TrafficLine {
    link::Exchange exchange;
    bool pending = true; ///< the frame is out, the reply is awaited
};

/// What was said on the bus, one row per exchange, the newest last; the oldest give way from kMostLines or kMostCharacters of
/// replies on. A row appears when its frame is sent and is completed when the exchange has ended.
///
/// Exchanges only queue up here; the rows move when the event loop is next idle, so that nothing delays a character.
class TrafficModel final : public QAbstractTableModel, public link::ExchangeObserver {
    Q_OBJECT
public:
    enum Column { Time, Readout, Meaning, Frame, Reply, Outcome, First, Last, kColumns };
    static constexpr int kMostLines = 100'000;
    static constexpr std::size_t kMostCharacters = 64'000'000;

    explicit TrafficModel(QObject* parent = nullptr);

    void sending(const link::Exchange& exchange) override;
    void ended(const link::Exchange& exchange) override;

    /// While paused, nothing is added and nothing is kept for later.
    void setPaused(bool paused) { paused_ = paused; }
    void clear();
    /// Moves what has queued up into the rows now.
    void flush();

    const TrafficLine& line(int row) const { return lines_[static_cast<std::size_t>(row)]; }

    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

private:
    void queue(const link::Exchange& exchange, bool pending);
    void append(const std::deque<TrafficLine>::iterator& from);
    bool complete(const TrafficLine& line);
    void dropOldest();
    QString text(const TrafficLine& line, int column) const;

    std::deque<TrafficLine> lines_;
    std::deque<TrafficLine> queued_;
    std::size_t characters_ = 0; ///< of the replies in lines_
    QTimer idle_;
    bool paused_ = false;
};

} // namespace quorvel::line
