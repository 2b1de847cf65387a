#include "protocol/snapshot.h"

#include <QDateTime>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <gtest/gtest.h>

#include <algorithm>

namespace quorvel::protocol {
namespace {

using link::Transaction;

QJsonValue json(const char* text)
{
    return QJsonDocument::fromJson(QByteArray("[") + text + "]").array().first();
}

Setting settingOf(link::InstrumentType type, const std::string& name)
{
    for (const auto& setting : settingsOf(type))
        if (setting.name == name) return setting;
    ADD_FAILURE() << "no setting " << name;
    std::abort();
}

/// What a readout at address 1 is asked and answers, the value in it, and the command that sets it again.
struct SettingCase {
    const char* name;
    link::InstrumentType type;
    const char* query;
    const char* reply;
    int first, last; ///< characters of the value in the reply, counted from 1
    const char* value;
    const char* set; ///< null: the value is kept for the record
};

const SettingCase kCases[] = {
    {"wire", link::TypeD, ":0168FF", ":01682504000000FF", 6, 11,
     R"({"diameterMm":2.5,"permittedErrorMm":0.4,"selfCalibration":false})", ":01672504000000FF"},
    {"offsetX", link::TypeD, ":0172FF", ":0172-1.50000FF", 6, 13, R"("-1.50000")", ":0171-1.50000FF"},
    {"offsetY", link::TypeA, ":0174FF", ":0174+12.5000FF", 6, 13, R"("+12.5000")", ":0173+12.5000FF"},
    {"offsetZ", link::TypeC, ":017806FF", ":017806+100.000FF", 8, 15, R"("+100.000")", ":017805+100.000FF"},
    {"referenceFeature", link::TypeD, ":0176FF", ":017601FF", 6, 7, "true", ":017501FF"},
    {"invertX", link::TypeD, ":017704FF", ":01770401FF", 8, 9, "true", ":01770301FF"},
    {"invertY", link::TypeA, ":017706FF", ":01770600FF", 8, 9, "false", ":01770500FF"},
    {"invertZ", link::TypeC, ":017708FF", ":01770801FF", 8, 9, "true", ":01770701FF"},
    {"swap", link::TypeA, ":017702FF", ":01770200FF", 8, 9, "false", ":01770100FF"},
    {"clock", link::TypeD, ":0104FF", ":0104240517090530FF", 6, 17, R"("2024-05-17T09:05:30")", nullptr},
    {"autoReading", link::TypeD, ":0106FF", ":01060101023000FF", 6, 15,
     R"({"mode":"interval","hours":1,"minutes":2,"seconds":30})", ":01050101023000FF"},
    {"stitching", link::TypeB, ":017822FF", ":0178220512FF", 8, 11, R"("0512")", ":0178210512FF"},
};

class SettingOfAReadout : public ::testing::TestWithParam<SettingCase> {
protected:
    Setting setting() const { return settingOf(GetParam().type, GetParam().name); }
    QJsonValue read(const std::string& reply) const { return setting().read(reply + "\r\n"); }
};

TEST_P(SettingOfAReadout, IsAskedForReadAndSetAgain)
{
    const auto query = setting().query("01");
    EXPECT_EQ(query.frame, std::string(GetParam().query) + "\r\n");
    EXPECT_EQ(query.reply.count, static_cast<int>(std::string(GetParam().reply).size()) + 2);
    const auto value = read(GetParam().reply);
    EXPECT_EQ(value, json(GetParam().value));

    const auto command = setting().write("01", value);
    const auto* exchange = std::get_if<Transaction>(&command);
    ASSERT_EQ(exchange != nullptr, GetParam().set != nullptr);
    if (exchange) {
        EXPECT_EQ(exchange->frame, std::string(GetParam().set) + "\r\n");
        EXPECT_TRUE(link::confirms(*exchange, exchange->frame));
    } else {
        EXPECT_EQ(std::get<NotSent>(command), NotSent::ForTheRecord);
    }
}

TEST_P(SettingOfAReadout, IsNotReadFromNoise)
{
    const std::string reply = GetParam().reply;
    // what is only kept for the record is kept as it came
    const bool kept = GetParam().set == nullptr;
    for (int position = GetParam().first; position <= GetParam().last; ++position) {
        auto spoiled = reply;
        spoiled[static_cast<std::size_t>(position - 1)] = '\x1b';
        const auto value = read(spoiled);
        EXPECT_EQ(value.isNull(), !kept) << position;
        EXPECT_EQ(value.toString().contains(u'\x1b'), kept) << position;
    }
    for (const auto& piece : {std::string(), reply.substr(0, 5)}) {
        EXPECT_EQ(read(piece).isNull(), !kept) << piece;
        EXPECT_FALSE(QDateTime::fromString(read(piece).toString(), Qt::ISODate).isValid()) << piece;
    }
}

TEST_P(SettingOfAReadout, IsNotSetToAValueOfAnotherForm)
{
    const auto expected = GetParam().set ? NotSent::Malformed : NotSent::ForTheRecord;
    for (const auto* wrong : {"null", "7", "\"on\"", "[]", "{}", "\"+1.5000\\n\"", "\"12345\"",
                              "\"+12 3456\"", "\"1.500000\"", "\"+1.50.00\"", R"({"mode":"interval"})",
                              R"({"mode":"interval","hours":100,"minutes":0,"seconds":0})",
                              R"({"mode":"interval","hours":1.5,"minutes":0,"seconds":0})",
                              R"({"diameterMm":12.3,"permittedErrorMm":0.3,"selfCalibration":true})",
                              R"({"diameterMm":1.5,"permittedErrorMm":0.3,"selfCalibration":1})"}) {
        const auto command = setting().write("01", json(wrong));
        ASSERT_TRUE(std::holds_alternative<NotSent>(command)) << wrong;
        EXPECT_EQ(std::get<NotSent>(command), expected) << wrong;
    }
}

INSTANTIATE_TEST_SUITE_P(All, SettingOfAReadout, ::testing::ValuesIn(kCases),
                         [](const auto& instance) { return instance.param.name; });

TEST(Snapshot, EachTypeHasItsSettings)
{
    for (const auto type : {link::TypeA, link::TypeB, link::TypeC, link::TypeD}) {
        std::vector<std::string> names;
        for (const auto& setting : settingsOf(type))
            names.emplace_back(setting.name);
        const auto has = [&names](const char* name) {
            return std::find(names.begin(), names.end(), name) != names.end();
        };
        EXPECT_TRUE(has("wire") && has("offsetX") && has("clock") && has("autoReading")) << type;
        EXPECT_EQ(has("offsetY"), type != link::TypeD) << type;
        EXPECT_EQ(has("invertY"), type != link::TypeD) << type;
        EXPECT_EQ(has("swap"), type != link::TypeD) << type;
        EXPECT_EQ(has("offsetZ"), type == link::TypeC) << type;
        EXPECT_EQ(has("invertZ"), type == link::TypeC) << type;
        EXPECT_EQ(has("stitching"), type == link::TypeB) << type;
    }
}

TEST(Snapshot, ClockThatShowsNoDateIsKeptAsReceived)
{
    const auto clock = settingOf(link::TypeA, "clock");
    const auto value = clock.read(":0104XYZABC~~--::FF\r\n");
    EXPECT_EQ(value, QJsonValue("20XY-ZA-BC  ~~:--:::"));
    EXPECT_EQ(std::get<NotSent>(clock.write("01", value)), NotSent::ForTheRecord);
}

TEST(Snapshot, FixedHoursAreKeptForTheRecord)
{
    const auto autoReading = settingOf(link::TypeA, "autoReading");
    const auto value = autoReading.read(":01060008121620FF\r\n");
    EXPECT_EQ(value, json(R"({"mode":"fixed","hoursOfDay":[8,12,16,20]})"));
    EXPECT_EQ(std::get<NotSent>(autoReading.write("01", value)), NotSent::ForTheRecord);
}

TEST(Snapshot, StitchingLocationMayHoldBlanks)
{
    const auto stitching = settingOf(link::TypeB, "stitching");
    const auto value = stitching.read(":0178223 65FF\r\n");
    EXPECT_EQ(value, QJsonValue("3 65"));
    EXPECT_EQ(std::get<Transaction>(stitching.write("01", value)).frame, ":0178213 65FF\r\n");
}

TEST(Snapshot, ValuesInWordsStandInOneLine)
{
    EXPECT_EQ(inWords(true), "on");
    EXPECT_EQ(inWords(QJsonValue::Null), "nothing");
    EXPECT_EQ(inWords(json(R"({"b":[1,0.5],"a":"x"})")), "a x, b 1 0.5");
    EXPECT_EQ(inWords(json(R"("\u001b[2J\n\u009b")")), "?[2J??");
    EXPECT_EQ(inWords(json(R"({"\u001b":[false]})")), "? off");
}

} // namespace
} // namespace quorvel::protocol
