#include "autoread/exported.h"
#include "autoread/setauto.h"
#include "support/bench_on_the_bus.h"
#include "windows/setauto_on_the_bus.h"

namespace quorvel::test {

namespace {

/// The machine's clock, but pauses are over in a fiftieth of their time. Time-outs keep theirs.
class HurriedClock final : public link::Clock {
public:
    std::optional<std::int64_t> counterFrequency() const override { return clock_.counterFrequency(); }
    std::int64_t counter() const override { return clock_.counter() * kHurry; }
    double timeOfDay() const override { return clock_.timeOfDay(); }
    QDateTime now() const override { return clock_.now(); }
    void letEventsRun() override { clock_.letEventsRun(); }
    void idle(double seconds) override { clock_.idle(seconds / kHurry); }
    void sleep(int milliseconds) override { clock_.sleep(milliseconds); }

private:
    static constexpr int kHurry = 50;
    link::SystemClock clock_;
};

/// The real window before a real simulated bus whose readout 5 has a ring of 1000 that has wrapped.
class WrappedRing : public BenchOnTheBus {
protected:
    WrappedRing()
        : BenchOnTheBus({"--fast", "--seed", "1", "--clock", "2024-05-17T09:05:30", "--readout", "5:A",
                         "--ring", "5:1000,998,2"})
    {
        form.show();
    }
    /// The row that a record should give, asked for by hand.
    Row onTheBus(const std::string& index)
    {
        const auto exchange = hurried.transact({.frame = ":0524" + index + "FF\r\n", .reply = {.count = 41}});
        EXPECT_TRUE(exchange.complete());
        return rowOnTheBus(exchange.reply, 2);
    }

    HurriedClock hurry;
    link::Module1 hurried{mscomm1, hurry};
    autoread::Book book;
    SetAuto form{Workplace{bench, hurried, gate, messages}, book};
    SetAutoControls controls{form};
};

TEST_F(WrappedRing, ComesWholeInTheOrderThatOtherProgramsRead)
{
    const auto file = folder.filePath("a.mdb");
    messages.files.push_back(file);
    controls.press("Command2");
    EXPECT_EQ(messages.shown, QStringList());
    EXPECT_EQ(controls.Label3().text(), "Total 1000 records. 1000 records have been received.");
    EXPECT_EQ(controls.progress().value(), 1000);
    const auto frames = bus.frames();
    ASSERT_EQ(frames.size(), 1001);
    EXPECT_EQ(frames.mid(0, 4), QStringList({":0522FF", ":05240998FF", ":05240999FF", ":05240000FF"}));
    EXPECT_EQ(frames.last(), ":05240997FF");
    const auto rows = rowsOfMdbtools(file.toStdString());
    ASSERT_EQ(rows.size(), 1000U);
    EXPECT_EQ(rows[0], onTheBus("0998"));
    EXPECT_EQ(rows[1], onTheBus("0999"));
    EXPECT_EQ(rows[2], onTheBus("0000"));
    EXPECT_EQ(rows[999], onTheBus("0997"));
    EXPECT_EQ(rowsOfMdbReader(file.toStdString()), rows);
}

} // namespace

} // namespace quorvel::test
