#pragma once

#include "link/clock.h"
#include "site/surroundings.h"
#include "site/track.h"

#include <QAbstractTableModel>

#include <array>
#include <functional>
#include <map>
#include <optional>
#include <string>

namespace quorvel::site {

/// What was received last from a readout, however long ago.
struct Held {
    std::array<std::optional<std::string>, kSensorCount> received; ///< eight characters each
    QDateTime time;      ///< of the latest of them; invalid: none yet
    QString outcome;     ///< of the latest reading; empty before the first
    bool failed = false; ///< the latest reading did: the values are older than it
    QString clock;       ///< how far its clock is off, or why that is not known; empty: not asked
    std::optional<double> clockSeconds; ///< readout minus machine
};

/// A site as a table, a row for each readout in the order of the site: what stands in the file, which can be edited, and
/// beside it what the sweeps brought. Knows no window and no port.
///
/// The role kSortRole gives what a column is sorted by; a cell without a value gives none.
class SiteModel final : public QAbstractTableModel {
    Q_OBJECT
public:
    enum Column {
        AddressColumn,
        NameColumn,
        TypeColumn,
        XColumn, ///< and Y, Z1, Z2 behind it
        YColumn,
        Z1Column,
        Z2Column,
        AgeColumn,
        AnswerColumn,
        LimitColumn,
        SinceBeforeColumn,
        SinceZeroColumn,
        LineColumn,
        ClockColumn,
        LimitXColumn, ///< and Y, Z1, Z2 behind it
        LimitYColumn,
        LimitZ1Column,
        LimitZ2Column,
        ReferenceColumn,
        kColumns
    };
    static constexpr int kSortRole = Qt::UserRole;

    /// @param clock  tells how old values are.
    /// @param line   how a readout answers; may be empty.
    SiteModel(link::Clock& clock, std::function<LineState(int)> line, QObject* parent = nullptr);

    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;
    /// Takes an edit. What cannot be taken is refused with refused().
    bool setData(const QModelIndex& index, const QVariant& value, int role) override;

    const Site& site() const { return site_; }
    /// Shows another site. Readings, zeros and clocks are forgotten.
    void setSite(Site site);
    void setTexts(const QString& name, const QString& port, const QString& note);
    /// Adds a readout with the first free address behind the highest one. @return its row; -1 when all are taken.
    int addReadout();
    void removeReadout(int row);
    /// Whether the site has a readout with this sensor.
    bool hasSensor(protocol::Sensor sensor) const;

    const Readout& readout(int row) const { return site_.readouts[static_cast<std::size_t>(row)]; }
    int rowOf(int address) const; ///< -1 when the site has no such readout
    const Held& held(int row) const;
    const Track& track() const { return track_; }

    void take(const Reading& reading);
    void takeClock(int address, const QString& words, const std::optional<double>& seconds);
    void markZero();
    /// The time has moved on: ages and line health are others.
    void refreshAges();

    /// "X above 2, Y below -1", "within", "none set", or empty while no value is known.
    QString limitWords(int row) const;
    bool passesLimit(int row) const;
    QString lineWords(int row) const;

Q_SIGNALS:
    /// The user has changed what stands in the file.
    void edited();
    void refused(const QString& reason);

private:
    QString text(int row, int column) const;
    QVariant sortKey(int row, int column) const;
    QVariant colour(int row, int column) const;
    QVariant look(int row, int column) const;
    bool isOld(int row, int column) const;
    QString hint(int row, int column) const;
    QString spoken(int row, int column) const;
    QString changeText(int row, bool sinceZero) const;
    std::optional<double> largestChange(int row, bool sinceZero) const;
    std::optional<double> change(int row, protocol::Sensor sensor, bool sinceZero) const;
    std::optional<double> ageSeconds(int row) const;
    std::optional<double> mm(int row, protocol::Sensor sensor) const;
    bool setAddress(Readout& readout, const QVariant& value);
    bool setLimit(Readout& readout, protocol::Sensor sensor, const QString& text);
    bool setType(Readout& readout, const QString& letter);
    void rowChanged(int row);

    link::Clock& clock_;
    std::function<LineState(int)> line_;
    Site site_;
    Track track_;
    std::map<int, Held> held_;
};

} // namespace quorvel::site
