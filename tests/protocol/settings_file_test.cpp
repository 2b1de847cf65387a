#include "protocol/settings_file.h"

#include <QJsonDocument>

#include <gtest/gtest.h>

namespace quorvel::protocol {
namespace {

const SettingsFile kFile{.address = 12,
                         .type = link::TypeB,
                         .saved = QStringLiteral("2024-05-17T09:05:30"),
                         .settings = {{"swap", true}, {"offsetX", "+1.50000"}}};

QString faultOf(const QByteArray& text)
{
    const auto read = settingsIn(text);
    return std::holds_alternative<QString>(read) ? std::get<QString>(read) : QStringLiteral("none");
}

QString faultWith(const QByteArray& head)
{
    return faultOf(R"({"format":"quorvel-settings",)" + head + R"("settings":{"swap":true}})");
}

TEST(SettingsFile, HoldsWhatWasPutIn)
{
    const auto object = QJsonDocument::fromJson(textOf(kFile)).object();
    EXPECT_EQ(object.value("format"), QJsonValue("quorvel-settings"));
    EXPECT_EQ(object.value("version"), QJsonValue(1));
    const auto read = settingsIn(textOf(kFile));
    ASSERT_TRUE(std::holds_alternative<SettingsFile>(read));
    const auto& back = std::get<SettingsFile>(read);
    EXPECT_EQ(back.address, 12);
    EXPECT_EQ(back.type, link::TypeB);
    EXPECT_EQ(back.saved, kFile.saved);
    EXPECT_EQ(back.settings, kFile.settings);
}

TEST(SettingsFile, WithoutVersionAddressAndTypeIsForAnyReadout)
{
    const auto read = settingsIn(R"({"format":"quorvel-settings","settings":{"swap":true}})");
    ASSERT_TRUE(std::holds_alternative<SettingsFile>(read));
    const auto& file = std::get<SettingsFile>(read);
    EXPECT_EQ(file.address, 0);
    EXPECT_FALSE(file.type);
    EXPECT_EQ(ofAnother(file, 5, link::TypeA), "");
}

TEST(SettingsFile, OtherVersionsAreRefused)
{
    EXPECT_EQ(faultWith(R"("version":1,)"), "none");
    EXPECT_EQ(faultWith(R"("version":2,)"),
              "its version is 2, this program reads version 1; use the program that wrote it");
    for (const auto* version : {"0", "-1", "1.5", "1e300", "\"1\"", "null", "[]"})
        EXPECT_EQ(faultWith(QByteArray(R"("version":)") + version + ","), "its \"version\" is not 1")
            << version;
}

TEST(SettingsFile, AddressAndTypeAreOfAReadout)
{
    for (const auto* address : {"0", "250", "-1", "1.5", "\"12\"", "null", "{}"}) {
        EXPECT_EQ(faultWith(QByteArray(R"("address":)") + address + ","),
                  "its \"address\" is not one of 1 to 249")
            << address;
    }
    for (const auto* type : {"\"E\"", "\"\"", "\"AB\"", "\"a\"", "1", "null"}) {
        EXPECT_EQ(faultWith(QByteArray(R"("type":)") + type + ","),
                  "its \"type\" is not one of A, B, C and D")
            << type;
    }
}

TEST(SettingsFile, OtherTextsAreRefused)
{
    for (const auto* text :
         {"", "{", "[1]", "null", "{}", R"({"format":"other","settings":{"swap":true}})",
          R"({"format":"quorvel-settings"})", R"({"format":"quorvel-settings","settings":[1]})"})
        EXPECT_NE(faultOf(text), "none") << text;
    EXPECT_NE(faultOf(QByteArray(kLongestSettings, '[')), "none");
}

TEST(SettingsFile, OfAnotherNamesWhatDiffers)
{
    EXPECT_EQ(ofAnother(kFile, 12, link::TypeB), "");
    EXPECT_EQ(ofAnother(kFile, 5, link::TypeB), "readout 12");
    EXPECT_EQ(ofAnother(kFile, 12, link::TypeA), "type B");
    EXPECT_EQ(ofAnother(kFile, 5, link::TypeA), "readout 12, type B");
}

} // namespace
} // namespace quorvel::protocol
