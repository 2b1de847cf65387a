#include "settings/form52.h"
#include "support/bench_by_hand.h"
#include "windows/settings_on_the_bus.h"

namespace quorvel::test {
namespace {

using Frames = std::vector<std::string>;

constexpr auto kXYReading = ":012101+2.50000+1.0000000FF\r\n";
constexpr auto kZReading = ":012102+3.00000+9.0000000FF\r\n";

/// The reference window step by step, where only time passes.
class Form52Steps : public SettingsWindow<Form52, BenchByHand> {
protected:
    Form52Steps() { open(link::TypeC); }
};

/// A direction of the window: its buttons, and what goes out and comes back.
struct StepsCase {
    const char* name;
    const char* box;
    const char* query;
    const char* set;
    const char* zero;   ///< the first frame of a set
    const char* offset; ///< the first frame of a query
    const char* reading;
    std::string readingReply;
    const char* written;                     ///< the last frame of a set to 10
    link::InstrumentType type = link::TypeA; ///< type C is asked for Z besides X and Y
};

const StepsCase kSteps[] = {
    {"X", "Text2", "Command3", "Command4", ":0171+0.00000FF", ":0172FF", ":012101FF", kXYReading,
     ":0171+7.50000FF"},
    {"Y", "Text3", "Command5", "Command6", ":0173+0.00000FF", ":0174FF", ":012101FF", kXYReading,
     ":0173+9.00000FF"},
    {"Z", "Text4", "Command7", "Command8", ":017805+0.00000FF", ":017806FF", ":012102FF", kZReading,
     ":017805+7.00000FF", link::TypeC},
};

class Form52Direction : public Form52Steps, public ::testing::WithParamInterface<StepsCase> {
protected:
    Form52Direction() { open(GetParam().type); }
};

TEST_P(Form52Direction, ReadoutSettlesForTwoSecondsBeforeItIsRead)
{
    const auto& row = GetParam();
    double zeroedAt = 0;
    double askedAt = 0;
    onFrame = [&] {
        if (frames.back() == row.zero) zeroedAt = clock.passed();
        if (frames.back() == row.reading) askedAt = clock.passed();
    };
    answerWith({std::string(row.zero) + "\r\n", row.readingReply, std::string(row.written) + "\r\n"});
    box(row.box).setText("10");
    EXPECT_TRUE(press(row.set).first().startsWith("Set OK!"));
    EXPECT_EQ(frames, (Frames{row.zero, row.reading, row.written}));
    EXPECT_NEAR(askedAt - zeroedAt, 0.005 + 2 + 0.03 + 10 * 0.005, 0.02);
}

TEST_P(Form52Direction, ShortReplyToTheZeroEndsTheSet)
{
    const auto& row = GetParam();
    button("Command1").setEnabled(false);
    answerWith({row.zero});
    EXPECT_EQ(press(row.set), QStringList("Comm Error"));
    EXPECT_EQ(frames, Frames{row.zero});
    EXPECT_TRUE(button("Command1").isEnabled());
    EXPECT_TRUE(status().startsWith("Only ")) << qPrintable(status());
}

TEST_P(Form52Direction, IncompleteReplyToAQueryEnablesTheQueryOfTheFeature)
{
    const auto& row = GetParam();
    for (const std::string reply : {"", row.offset}) {
        frames.clear();
        button("Command1").setEnabled(false);
        box(row.box).setText("7");
        answerWith({reply});
        EXPECT_EQ(press(row.query), QStringList("Comm Error"));
        EXPECT_EQ(frames, Frames{row.offset});
        EXPECT_TRUE(button("Command1").isEnabled());
        EXPECT_EQ(box(row.box).text(), "7");
    }
}

INSTANTIATE_TEST_SUITE_P(All, Form52Direction, ::testing::ValuesIn(kSteps),
                         [](const auto& instance) { return instance.param.name; });

// What comes while the readout settles, or behind the answer to the query, is read as the beginning of the reading.
TEST_F(Form52Steps, TheReadingOfZIsNotDrainedBefore)
{
    onFrame = [this] {
        if (frames.back() == ":017805+0.00000FF") clock.plan(1, [this] { device->receive("~~"); });
    };
    answerWith({":017805+0.00000FF\r\n", kZReading, ":017805+8.00000FF\r\n"});
    box("Text4").setText("10");
    EXPECT_EQ(press("Command8"),
              QStringList("Set OK!The current value is 02+3.000, the Internal Offset Value is +8.00000."));

    frames.clear();
    answerWith({":017806+0.50000FF\r\n~~", kZReading});
    EXPECT_EQ(press("Command7"), QStringList("The offset of Z-Direction is +0.50000!\n"
                                             "The real value without corrention is 1.5!"));
    EXPECT_EQ(frames, (Frames{":017806FF", ":012102FF"}));
}

TEST_F(Form52Steps, TypesBAndDAskForNoZ)
{
    struct {
        link::InstrumentType type;
        const char* set;
        const char* written;
        const char* query;
        const char* asked;
    } const rows[] = {{link::TypeB, "Command4", ":0171-2.50000FF", "Command3", ":0172FF"},
                      {link::TypeB, "Command6", ":0173-1.00000FF", "Command5", ":0174FF"},
                      {link::TypeD, "Command4", ":0171-2.50000FF", "Command3", ":0172FF"}};
    for (const auto& row : rows) {
        open(row.type);
        const auto code = std::string(row.written).substr(0, 5);
        frames.clear();
        answerWith({code + "+0.00000FF\r\n", kXYReading, std::string(row.written) + "\r\n"});
        EXPECT_TRUE(press(row.set).first().startsWith("Set OK!")) << row.type << row.set;
        EXPECT_EQ(frames, (Frames{code + "+0.00000FF", ":012101FF", row.written}));

        frames.clear();
        answerWith({std::string(row.asked, 5) + "+0.50000FF\r\n", kXYReading});
        EXPECT_EQ(press(row.query).size(), 1) << row.type << row.query;
        EXPECT_EQ(frames, (Frames{row.asked, ":012101FF"}));
    }
}

} // namespace
} // namespace quorvel::test
