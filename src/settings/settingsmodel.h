#pragma once

#include "protocol/settings_file.h"
#include "protocol/snapshot.h"

#include <QAbstractTableModel>

#include <array>
#include <optional>
#include <vector>

namespace quorvel {

/// The settings of a readout beside those of a file and of another readout: what each holds, where they differ, which
/// are chosen to be sent, and what became of those. A row for each of protocol::settings(), in their order.
///
/// Knows no window and no port: what was read and sent is put into it.
class SettingsModel final : public QAbstractTableModel {
    Q_OBJECT
public:
    /// Where values come from. The first three columns behind the names are these, in this order.
    enum Side { Now, File, Other };
    static constexpr int kSides = 3;
    enum Column {
        NameColumn,
        NowColumn,
        FileColumn,
        OtherColumn,
        DifferenceColumn,
        BeforeColumn,
        SentColumn,
        ReadBackColumn,
        kColumns
    };

    /// The readout that values are of.
    struct Whose {
        int address = 0; ///< 1 to 249; 0 when it is not known
        std::optional<link::InstrumentType> type;
        bool operator==(const Whose&) const = default;
    };

    explicit SettingsModel(QObject* parent = nullptr);

    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;
    bool setData(const QModelIndex& index, const QVariant& value, int role) override;

    /// Empties a side, which from now on is of this readout. That of Now is the one that values are sent to.
    void begin(Side side, const Whose& whose);
    const Whose& whose(Side side) const { return sides_[side].whose; }
    /// What a readout told for a row.
    void put(Side side, int row, const protocol::Told& told);
    /// Takes the values of a file. @return the names in it that are no settings.
    QStringList setFile(const protocol::SettingsFile& file);

    /// The values that a side has, by their names.
    QJsonObject values(Side side) const;
    /// The titles of the settings that its readout has and that were not read.
    QStringList unread(Side side) const;
    /// False for a setting that none of the sides has, by its type or by its values.
    bool concerns(int row) const;

    /// Where the values that are sent come from: File or Other. Nothing is chosen then.
    void setSource(Side side);
    Side source() const { return source_; }
    /// Why the value of a row cannot be sent, without a full stop; empty when it can.
    QString whyNot(int row) const;
    void chooseWhatDiffers();
    void chooseNothing();
    std::vector<int> chosen() const;
    QJsonValue wanted(int row) const;

    /// Empties the columns of what was sent.
    void beginSending();
    void putBefore(int row, const protocol::Told& told);
    /// @param why  why it was not sent or not confirmed, in one sentence; empty when it was.
    void putSent(int row, const QString& why);
    /// The readout was asked again: Now has what it told.
    void putReadBack(int row, const protocol::Told& told);
    /// A setting that was sent, confirmed, and read back as sent.
    bool verified(int row) const;
    int verifiedCount() const;

private:
    struct Values {
        Whose whose;
        std::vector<protocol::Told> rows;
    };
    struct Sending {
        QString before, sent, readBack;
        bool confirmed = false;
        bool ended = false;
        QJsonValue value, held;
    };

    QString text(int row, int column) const;
    QString sideText(Side side, int row) const;
    QString headerOf(Side side) const;
    QString difference(int row) const;
    bool differs(Side side, int row) const;
    QVariant color(int row, int column, int role) const;
    void changed(int row);
    void allChanged();

    std::array<Values, kSides> sides_;
    std::vector<Sending> sendings_;
    std::vector<bool> chosen_;
    Side source_ = File;
};

} // namespace quorvel
