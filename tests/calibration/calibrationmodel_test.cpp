#include "calibration/calibrationmodel.h"

#include <gtest/gtest.h>

namespace quorvel::calibration {
namespace {

using jet::FieldType;

/// Rows in memory, on a disk that can be full.
class RowsInMemory final : public Records {
public:
    RowsInMemory() { setColumns(columns); }

    /// Three empty rows of these columns.
    void setColumns(const std::vector<jet::FieldDef>& names)
    {
        columns = names;
        rows.assign(3, std::vector<jet::Value>(columns.size()));
    }

    const std::vector<jet::FieldDef>& fields() const override { return columns; }
    int rowCount() const override { return static_cast<int>(rows.size()); }
    const jet::Value& value(int row, int column) const override { return cell(row, column); }
    const std::string& readOnlyBecause() const override { return readOnly; }
    jet::Status write(int row, const Changes& changes) override
    {
        ++writes;
        if (full) return jet::Failure{"disk full"};
        if (dropsTexts) drop();
        for (const auto& [name, number] : changes) {
            const_cast<jet::Value&>(cell(row, columnOf(columns, name))) =
                number ? jet::Value(static_cast<float>(*number)) : jet::kNull;
        }
        return {};
    }
    /// Columns of texts leave the table, as they do when a file is written anew.
    void drop()
    {
        for (auto column = columns.size(); column-- > 0;) {
            if (columns[column].type != FieldType::Text) continue;
            const auto at = static_cast<std::ptrdiff_t>(column);
            columns.erase(columns.begin() + at);
            for (auto& row : rows) {
                row.erase(row.begin() + at);
            }
        }
    }
    const jet::Value& cell(int row, int column) const
    {
        return rows[static_cast<std::size_t>(row)][static_cast<std::size_t>(column)];
    }

    std::vector<jet::FieldDef> columns{
        {"SN", FieldType::Integer}, {"Rule_Data", FieldType::Single}, {"X_Data", FieldType::Single}};
    std::vector<std::vector<jet::Value>> rows;
    std::string readOnly;
    bool full = false;
    bool dropsTexts = false;
    int writes = 0;
};

class Model : public ::testing::Test {
protected:
    Model()
    {
        QObject::connect(&model, &CalibrationModel::told, &model,
                         [this](const QString& words) { told = words; });
    }
    QString text(int row, int column)
    {
        return model.data(model.index(row, column), Qt::DisplayRole).toString();
    }
    bool enter(int row, int column, const char* text)
    {
        return model.setData(model.index(row, column), QString(text));
    }

    RowsInMemory records;
    CalibrationModel model{records};
    QString told;
};

TEST_F(Model, ShowsTheFieldsAsColumnsAndNullAsAnEmptyCell)
{
    records.rows[1] = {jet::Value(std::int16_t{1}), jet::Value(0.1F), jet::Value()};
    EXPECT_EQ(model.columnCount(), 3);
    EXPECT_EQ(model.rowCount(), 3);
    EXPECT_EQ(model.headerData(1, Qt::Horizontal, Qt::DisplayRole).toString(), "Rule_Data");
    EXPECT_EQ(text(1, 0), "1");
    EXPECT_EQ(text(1, 1), "0.1");
    EXPECT_EQ(text(1, 2), "");
}

TEST_F(Model, WritesWhatIsEnteredAtOnce)
{
    EXPECT_TRUE(enter(0, 1, " -1.25 "));
    EXPECT_EQ(records.cell(0, 1), jet::Value(-1.25F));
    EXPECT_EQ(text(0, 1), "-1.25");
    EXPECT_FALSE(model.hasUnwritten());
}

TEST_F(Model, TakesTheFormsThatReadoutsSend)
{
    for (const auto* measured : {"+01.2345", " 01.2345", "  1.2345"}) {
        records.rows[0][2] = jet::kNull;
        EXPECT_TRUE(enter(0, 2, measured)) << measured;
        EXPECT_EQ(text(0, 2), "1.2345") << measured;
    }
}

TEST_F(Model, RefusesATextThatIsNoNumberAndSaysSo)
{
    enter(0, 1, "1.5");
    for (const auto* typed : {"abc", "1,5", "1.5mm", "-", "1e39", "nan", "inf", "0x10", "千"}) {
        EXPECT_FALSE(enter(0, 1, typed)) << typed;
        EXPECT_EQ(text(0, 1), "1.5") << typed;
        EXPECT_TRUE(told.contains(typed) && told.contains("1.5 stays")) << qPrintable(told);
    }
    EXPECT_EQ(records.writes, 1);
}

TEST_F(Model, EmptiesACell)
{
    enter(0, 1, "1.5");
    EXPECT_TRUE(enter(0, 1, ""));
    EXPECT_TRUE(records.cell(0, 1).isNull());
}

TEST_F(Model, DoesNotWriteWhatIsThereAlready)
{
    records.rows[0][1] = jet::Value(0.123456789F);
    EXPECT_TRUE(enter(0, 1, text(0, 1).toUtf8().constData()));
    EXPECT_EQ(records.writes, 0);
}

TEST_F(Model, LetsThePointNumbersBe)
{
    EXPECT_FALSE(model.flags(model.index(0, 0)).testFlag(Qt::ItemIsEditable));
    EXPECT_TRUE(model.flags(model.index(0, 1)).testFlag(Qt::ItemIsEditable));
    EXPECT_FALSE(enter(0, 0, "5"));
    EXPECT_EQ(records.writes, 0);
}

TEST_F(Model, KeepsWhatCannotBeWrittenAndTriesAgain)
{
    records.full = true;
    EXPECT_TRUE(enter(0, 1, "1.5"));
    EXPECT_TRUE(enter(2, 1, "2.5"));
    EXPECT_TRUE(model.hasUnwritten());
    EXPECT_EQ(text(0, 1), "1.5");
    EXPECT_EQ(text(2, 1), "2.5");
    EXPECT_TRUE(told.contains("disk full")) << qPrintable(told);
    EXPECT_FALSE(model.submit());

    records.full = false;
    EXPECT_TRUE(model.submit());
    EXPECT_FALSE(model.hasUnwritten());
    EXPECT_EQ(records.cell(0, 1), jet::Value(1.5F));
    EXPECT_EQ(records.cell(2, 1), jet::Value(2.5F));
    EXPECT_EQ(told, "");
}

TEST_F(Model, WritesToTheRightColumnsWhenOthersAreDroppedMeanwhile)
{
    records.setColumns({{"SN", FieldType::Integer},
                        {"Rule_Data", FieldType::Single},
                        {"Z1_Data", FieldType::Single},
                        {"Note", FieldType::Text},
                        {"Z2_Data", FieldType::Single}});
    records.full = true;
    enter(0, 4, "1.5");
    enter(1, 2, "2.5");
    enter(1, 4, "3.5");
    records.full = false;
    records.dropsTexts = true;
    EXPECT_TRUE(model.submit());
    ASSERT_EQ(model.columnCount(), 4);
    EXPECT_EQ(model.headerData(3, Qt::Horizontal, Qt::DisplayRole).toString(), "Z2_Data");
    EXPECT_EQ(text(0, 3), "1.5");
    EXPECT_EQ(text(1, 2), "2.5");
    EXPECT_EQ(text(1, 3), "3.5");
}

TEST_F(Model, TakesNothingForAFileThatCanOnlyBeRead)
{
    records.readOnly = "may only be read";
    EXPECT_FALSE(model.flags(model.index(0, 1)).testFlag(Qt::ItemIsEditable));
    EXPECT_FALSE(enter(0, 1, "1.5"));
    EXPECT_EQ(told, "may only be read");
    EXPECT_FALSE(model.hasUnwritten());
}

TEST_F(Model, HasNoCellsOutsideTheTable)
{
    EXPECT_FALSE(model.data(model.index(3, 0), Qt::DisplayRole).isValid());
    EXPECT_FALSE(model.setData({}, "1"));
    EXPECT_EQ(model.rowCount(model.index(0, 0)), 0);
}

} // namespace
} // namespace quorvel::calibration
