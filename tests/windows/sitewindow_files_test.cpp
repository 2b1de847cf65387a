#include "windows/site_by_hand.h"

#include <QComboBox>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTest>

namespace quorvel::test {

namespace {

using site::SiteModel;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

TEST_F(SiteByHand, WhatIsEditedIsSavedAndKeysOfOthersAreKept)
{
    openDam();
    EXPECT_TRUE(controls.type(0, SiteModel::NameColumn, "Block 8"));
    EXPECT_TRUE(controls.type(0, SiteModel::LimitXColumn, "+-1.5"));
    EXPECT_TRUE(controls.type(0, SiteModel::LimitYColumn, "to 4"));
    EXPECT_TRUE(controls.type(1, SiteModel::ReferenceColumn, "Zero of June"));
    EXPECT_TRUE(form.isWindowModified());
    controls.press("SiteSave");
    EXPECT_FALSE(form.isWindowModified());
    const auto saved =
        QJsonDocument::fromJson(QByteArray::fromStdString(read("dam.quorvel-site.json"))).object();
    EXPECT_EQ(saved["operator"], "key of another program");
    const auto first = saved["readouts"].toArray().first().toObject();
    EXPECT_EQ(first["name"], "Block 8");
    EXPECT_EQ(first["limitsMm"].toObject()["x"].toObject()["low"], -1.5);
    EXPECT_EQ(first["limitsMm"].toObject()["y"].toObject(), (QJsonObject{{"high", 4}}));
    EXPECT_EQ(saved["readouts"].toArray()[1].toObject()["reference"], "Zero of June");
}

TEST_F(SiteByHand, WrongEditsAreRefusedWithTheReason)
{
    openDam();
    EXPECT_FALSE(controls.type(0, SiteModel::AddressColumn, "12"));
    EXPECT_THAT(controls.status(), HasSubstr("The site has a readout with the address 12 already."));
    EXPECT_FALSE(controls.type(0, SiteModel::AddressColumn, "250"));
    EXPECT_THAT(controls.status(), HasSubstr("from 1 to 249"));
    EXPECT_FALSE(controls.type(0, SiteModel::LimitXColumn, "3 to 2"));
    EXPECT_THAT(controls.status(), HasSubstr("\"3 to 2\" is not a limit."));
    EXPECT_FALSE(controls.type(0, SiteModel::TypeColumn, "E"));
    EXPECT_FALSE(controls.type(0, SiteModel::LimitZ1Column, "to 2")) << "type A has no Z1";
    EXPECT_FALSE(form.isWindowModified());
}

TEST_F(SiteByHand, TypeIsChosenFromAList)
{
    openDam();
    const auto index = controls.table().model()->index(0, SiteModel::TypeColumn);
    controls.table().edit(index);
    auto* list = controls.table().findChild<QComboBox*>();
    ASSERT_TRUE(list);
    EXPECT_EQ(list->currentText(), "A");
    EXPECT_EQ(list->count(), 4);
    list->setCurrentText("B");
    QTest::keyClick(list, Qt::Key_Return);
    EXPECT_TRUE(QTest::qWaitFor([&] { return controls.cell(0, SiteModel::TypeColumn) == "B"; }));
}

TEST_F(SiteByHand, AnotherTypeDropsTheLimitsOfSensorsThatItLacks)
{
    openDam();
    EXPECT_TRUE(controls.type(1, SiteModel::TypeColumn, "A"));
    controls.press("SiteSave");
    EXPECT_THAT(read("dam.quorvel-site.json"), ::testing::Not(HasSubstr("z1")));
    EXPECT_TRUE(controls.table().isColumnHidden(SiteModel::Z1Column)) << "no readout of the site has Z now";
}

TEST_F(SiteByHand, WhatIsWrongWithAFileIsSaidWithItsLineAndTheSiteStays)
{
    openDam();
    put("wrong.quorvel-site.json",
        "{\"readouts\":[\n{\"address\":250,\"type\":\"A\"},\n{\"address\":5,\"type\":\"Q\"}]}");
    with("wrong.quorvel-site.json", "SiteOpen");
    EXPECT_THAT(messages.last().toStdString(),
                HasSubstr("wrong.quorvel-site.json, line 2: \"address\" must be"));
    EXPECT_THAT(messages.last().toStdString(), HasSubstr("line 3: \"type\" must be"));
    EXPECT_EQ(controls.table().model()->rowCount(), 3);
}

TEST_F(SiteByHand, ChangesAreAskedAboutBeforeTheyAreLost)
{
    openDam();
    controls.type(0, SiteModel::NameColumn, "Block 8");
    messages.answers = {false, false, false, true};
    controls.press("SiteNew");
    controls.press("SiteOpen");
    form.close();
    EXPECT_TRUE(form.isVisible());
    EXPECT_EQ(controls.cell(0, SiteModel::NameColumn), "Block 8");
    form.close();
    EXPECT_FALSE(form.isVisible());
    EXPECT_EQ(messages.shown.size(), 4);
}

TEST_F(SiteByHand, EndOfTheProgramAsksToo)
{
    openDam();
    controls.field("SiteNote").setText("key at the gate");
    Q_EMIT controls.field("SiteNote").textEdited("key at the gate");
    messages.answers = {false, true};
    parent.close();
    EXPECT_TRUE(parent.isVisible());
    parent.close();
    EXPECT_FALSE(parent.isVisible());
}

TEST_F(SiteByHand, SaveAsCompletesTheEndingAndAsksBeforeItOverwrites)
{
    openDam();
    with("south", "SiteSaveAs");
    EXPECT_THAT(read("south.quorvel-site.json"), HasSubstr("North dam"));
    EXPECT_EQ(form.windowTitle(), "Site: south.quorvel-site.json[*]");
    put("there.quorvel-site.json", "mine");
    with("there", "SiteSaveAs"); // No
    EXPECT_EQ(read("there.quorvel-site.json"), "mine");
}

TEST_F(SiteByHand, NewFromSearchTellsTypesByTheirZ)
{
    controls.press("SiteFromSearch");
    EXPECT_THAT(controls.status(), HasSubstr("Press \"Search CCD\" in the main window"));
    found = {5, 12};
    bench.instrumentType = link::TypeB;
    controls.press("SiteFromSearch");
    EXPECT_THAT(readout.frames, ::testing::ElementsAre(":052102FF", ":052102FF", ":0C2102FF"));
    EXPECT_EQ(controls.cell(0, SiteModel::TypeColumn), "B");
    EXPECT_EQ(controls.cell(1, SiteModel::TypeColumn), "C");
    EXPECT_EQ(controls.field("SitePort").text(), "by hand");
    EXPECT_TRUE(form.isWindowModified());
}

TEST_F(SiteByHand, ReadoutsAreAddedAndRemoved)
{
    openDam();
    controls.press("SiteAdd");
    EXPECT_EQ(controls.cell(3, SiteModel::AddressColumn), "13");
    controls.table().setCurrentIndex(controls.table().model()->index(0, 0));
    messages.answers = {true};
    controls.press("SiteRemove");
    EXPECT_EQ(controls.table().model()->rowCount(), 3);
    EXPECT_EQ(controls.cell(0, SiteModel::AddressColumn), "12");
}

TEST_F(SiteByHand, NamesAreSeenWholeUnlessTheyAreVeryLong)
{
    const auto widthWith = [this](const QString& name) {
        put("n.quorvel-site.json",
            QStringLiteral(R"({"readouts":[{"address":5,"type":"A","name":"%1"}]})").arg(name).toUtf8());
        form.open(file("n.quorvel-site.json"));
        return controls.table().columnWidth(SiteModel::NameColumn);
    };
    const int usual = widthWith("Block 7");
    const QString longer = "Block 7, upper gallery, crest";
    EXPECT_GT(widthWith(longer), controls.table().fontMetrics().horizontalAdvance(longer));
    EXPECT_EQ(widthWith(QString(500, u'M')), 3 * usual);
    EXPECT_EQ(widthWith("Block 7"), usual);
}

TEST_F(SiteByHand, SiteOfAllAddressesIsSwept)
{
    QByteArray json = "{\"readouts\":[";
    for (int address = 1; address <= 249; ++address) {
        json += QByteArray(address > 1 ? "," : "") + "{\"address\":" + QByteArray::number(address) +
                ",\"type\":\"A\"}";
    }
    put("all.quorvel-site.json", json + "]}");
    form.open(file("all.quorvel-site.json"));
    readout.answer = [](const std::string& frame) { return frame.substr(0, 7) + "+1.50000-0.2500000FF\r\n"; };
    controls.press("SiteSweep");
    EXPECT_EQ(readout.frames.size(), 249U);
    EXPECT_EQ(controls.cell(248, SiteModel::AddressColumn), "249");
    EXPECT_EQ(controls.cell(248, SiteModel::XColumn), "+1.50000");
    controls.press("SiteAdd");
    EXPECT_THAT(controls.status(), HasSubstr("all 249 addresses"));
}

TEST_F(SiteByHand, LineHealthIsShownInWords)
{
    openDam();
    lines[5] = {200, 199, 41.4};
    form.look();
    EXPECT_EQ(controls.cell(0, SiteModel::LineColumn), "99 % of 200, 41 ms");
    EXPECT_EQ(controls.cell(1, SiteModel::LineColumn), "");
}

} // namespace

} // namespace quorvel::test
