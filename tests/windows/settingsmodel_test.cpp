#include "settings/settingsmodel.h"

#include <QJsonDocument>
#include <QSignalSpy>

#include <gtest/gtest.h>

namespace quorvel {
namespace {

using Model = SettingsModel;

class SettingsTable : public testing::Test {
protected:
    SettingsTable() { model.begin(Model::Now, {5, link::TypeA}); }

    static int rowOf(const std::string& name)
    {
        const auto all = protocol::settings();
        const auto found = std::find_if(all.begin(), all.end(),
                                        [&name](const auto& setting) { return setting.name == name; });
        EXPECT_NE(found, all.end()) << name;
        return static_cast<int>(found - all.begin());
    }
    QString cell(const std::string& name, int column)
    {
        return model.data(model.index(rowOf(name), column), Qt::DisplayRole).toString();
    }
    bool marked(const std::string& name, int column)
    {
        return model.data(model.index(rowOf(name), column), Qt::BackgroundRole).isValid();
    }
    void now(const std::string& name, const QJsonValue& value)
    {
        model.put(Model::Now, rowOf(name), {value, {}});
    }
    QStringList file(const char* settings, int address = 5, link::InstrumentType type = link::TypeA)
    {
        return model.setFile({.address = address,
                              .type = type,
                              .saved = {},
                              .settings = QJsonDocument::fromJson(settings).object()});
    }
    bool choose(const std::string& name)
    {
        return model.setData(model.index(rowOf(name), Model::NameColumn), Qt::Checked, Qt::CheckStateRole);
    }

    Model model;
};

TEST_F(SettingsTable, SaysWhatDiffersInWordsAndColour)
{
    now("offsetX", "+1.50000");
    now("swap", false);
    now("invertX", true);
    now("invertY", true);
    file(R"({"offsetX":"+2.00000","swap":false,"invertY":false})");
    model.begin(Model::Other, {12, link::TypeA});
    model.put(Model::Other, rowOf("offsetX"), {"+3.00000", {}});
    model.put(Model::Other, rowOf("invertX"), {false, {}});
    EXPECT_EQ(cell("offsetX", Model::NowColumn), "+1.50000");
    EXPECT_EQ(cell("offsetX", Model::FileColumn), "+2.00000");
    EXPECT_EQ(cell("offsetX", Model::DifferenceColumn), "File and other readout differ.");
    EXPECT_EQ(cell("invertX", Model::DifferenceColumn), "Other readout differs.");
    EXPECT_EQ(cell("invertY", Model::DifferenceColumn), "File differs.");
    EXPECT_EQ(cell("swap", Model::DifferenceColumn), "Same.");
    EXPECT_EQ(cell("offsetY", Model::DifferenceColumn), "");
    EXPECT_TRUE(marked("offsetX", Model::FileColumn));
    EXPECT_TRUE(marked("offsetX", Model::DifferenceColumn));
    EXPECT_FALSE(marked("swap", Model::DifferenceColumn));
    EXPECT_FALSE(marked("invertX", Model::FileColumn));
    EXPECT_TRUE(marked("invertX", Model::OtherColumn));
}

TEST_F(SettingsTable, HeadersSayWhoseTheValuesAre)
{
    EXPECT_EQ(model.headerData(Model::NowColumn, Qt::Horizontal, Qt::DisplayRole), "Now\nreadout 5, type A");
    EXPECT_EQ(model.headerData(Model::FileColumn, Qt::Horizontal, Qt::DisplayRole), "File");
    const QSignalSpy changed(&model, &Model::headerDataChanged);
    file(R"({"swap":true})", 12, link::TypeB);
    EXPECT_GT(changed.count(), 0);
    EXPECT_EQ(model.headerData(Model::FileColumn, Qt::Horizontal, Qt::DisplayRole),
              "File\nreadout 12, type B");
}

TEST_F(SettingsTable, ValuesAreShownAsPeopleSayThem)
{
    now("wire", QJsonObject{{"diameterMm", 1.5}, {"permittedErrorMm", 0.3}, {"selfCalibration", true}});
    now("autoReading", QJsonObject{{"mode", "interval"}, {"hours", 1}, {"minutes", 5}, {"seconds", 0}});
    EXPECT_EQ(cell("wire", Model::NowColumn), "1.5 mm, error 0.3 mm, self-calibration on");
    EXPECT_EQ(cell("autoReading", Model::NowColumn), "every 1 h 5 min 0 s");
    now("autoReading", QJsonObject{{"mode", "fixed"}, {"hoursOfDay", QJsonArray{8, 12}}});
    EXPECT_EQ(cell("autoReading", Model::NowColumn), "at 8 12 o'clock");
    file(R"({"wire":{"diameterMm":"\n","more":[1]},"autoReading":7})");
    EXPECT_EQ(cell("wire", Model::FileColumn), "diameterMm ?, more 1");
    EXPECT_EQ(cell("autoReading", Model::FileColumn), "7");
}

TEST_F(SettingsTable, WhatCannotBeSetSaysWhyAndCannotBeChosen)
{
    file(R"({"offsetX":"1.5","offsetZ":"+1.00000","clock":"2024-05-17T09:05:30","swap":true,
             "autoReading":{"mode":"fixed","hoursOfDay":[8,12,16,20]}})");
    EXPECT_EQ(cell("offsetX", Model::DifferenceColumn), "Cannot be set: 1.5 is not a valid value.");
    EXPECT_EQ(cell("offsetZ", Model::DifferenceColumn),
              "Cannot be set: a readout of type A has no such setting.");
    EXPECT_EQ(cell("clock", Model::DifferenceColumn), "Cannot be set: the time it shows is past.");
    EXPECT_EQ(cell("autoReading", Model::DifferenceColumn),
              "Cannot be set: there is no command for fixed hours of the day.");
    for (const auto* name : {"offsetX", "offsetZ", "clock", "autoReading", "offsetY"}) {
        EXPECT_FALSE(choose(name)) << name;
    }
    EXPECT_TRUE(choose("swap"));
    EXPECT_EQ(model.chosen(), std::vector{rowOf("swap")});
}

TEST_F(SettingsTable, WhatDiffersIsChosenAtOnceTheClockNeverIs)
{
    now("offsetX", "+1.50000");
    now("swap", false);
    now("clock", "2024-05-17T09:05:30");
    file(R"({"offsetX":"+2.00000","swap":false,"clock":"2024-05-17T09:00:00"})");
    model.chooseWhatDiffers();
    EXPECT_EQ(model.chosen(), std::vector{rowOf("offsetX")});
    EXPECT_FALSE(marked("clock", Model::DifferenceColumn));
    model.setSource(Model::Other);
    EXPECT_TRUE(model.chosen().empty());
}

TEST_F(SettingsTable, AnotherReadoutEmptiesItsSideAndTheChoice)
{
    now("swap", false);
    file(R"({"swap":true})");
    ASSERT_TRUE(choose("swap"));
    model.begin(Model::Now, {6, link::TypeA});
    EXPECT_TRUE(model.chosen().empty());
    EXPECT_EQ(cell("swap", Model::NowColumn), "");
    EXPECT_EQ(cell("swap", Model::FileColumn), "on");
}

TEST_F(SettingsTable, RowsThatNoTypeHasAreOfNoConcern)
{
    EXPECT_FALSE(model.concerns(rowOf("offsetZ")));
    EXPECT_TRUE(model.concerns(rowOf("offsetY")));
    file(R"({"offsetZ":"+1.00000"})");
    EXPECT_TRUE(model.concerns(rowOf("offsetZ")));
    EXPECT_EQ(cell("offsetZ", Model::NowColumn), "none");
}

TEST_F(SettingsTable, NamesThatAreNoSettingsAreGivenBack)
{
    EXPECT_EQ(file(R"({"swap":true,"nonsense":1})"), QStringList("nonsense"));
    EXPECT_EQ(model.values(Model::File), QJsonObject({{"swap", true}}));
}

TEST_F(SettingsTable, WhatWasSentIsVerifiedOnlyWhenItCameBack)
{
    file(R"({"swap":true,"invertX":true,"invertY":true})");
    model.beginSending();
    for (const auto* name : {"swap", "invertX"}) {
        model.putBefore(rowOf(name), {false, {}});
        model.putSent(rowOf(name), {});
    }
    EXPECT_FALSE(model.verified(rowOf("swap"))) << "not asked again yet";
    model.putReadBack(rowOf("swap"), {true, {}});
    model.putReadBack(rowOf("invertX"), {false, {}});
    model.putSent(rowOf("invertY"), "Not sent.");
    EXPECT_TRUE(model.verified(rowOf("swap")));
    EXPECT_FALSE(model.verified(rowOf("invertX")));
    EXPECT_EQ(model.verifiedCount(), 1);
    EXPECT_EQ(cell("swap", Model::BeforeColumn), "off");
    EXPECT_EQ(cell("swap", Model::SentColumn), "on");
    EXPECT_EQ(cell("swap", Model::ReadBackColumn), "on");
    EXPECT_EQ(cell("invertX", Model::ReadBackColumn), "off - not what was sent");
    EXPECT_EQ(cell("invertY", Model::SentColumn), "Not sent.");
    EXPECT_EQ(cell("swap", Model::NowColumn), "on");
}

TEST_F(SettingsTable, UnreadSettingsAreNamed)
{
    EXPECT_EQ(model.unread(Model::Now).size(), 9);
    now("swap", true);
    model.put(Model::Now, rowOf("wire"), {QJsonValue::Null, "The readout did not answer."});
    EXPECT_EQ(model.unread(Model::Now).size(), 8);
    EXPECT_EQ(model.unread(Model::Now).first(), "Wire");
    EXPECT_EQ(cell("wire", Model::NowColumn), "The readout did not answer.");
}

} // namespace
} // namespace quorvel
