#include "protocol/reset.h"

#include "support/bench_by_hand.h"

namespace quorvel::protocol {
namespace {

using Frames = std::vector<std::string>;

const Frames kAllSteps{":01671503010000FF", ":017500FF",           ":0171+0.00000FF",   ":0173+0.00000FF",
                       ":017805+0.00000FF", ":01770300FF",         ":01770100FF",       ":01770500FF",
                       ":01770700FF",       ":0103240517090530FF", ":01050101000000FF", ":0125FF"};

Frames without(std::initializer_list<std::size_t> steps)
{
    Frames left;
    for (std::size_t i = 0; i < kAllSteps.size(); ++i)
        if (std::find(steps.begin(), steps.end(), i + 1) == steps.end()) left.push_back(kAllSteps[i]);
    return left;
}

class Reset : public test::BenchByHand {
protected:
    /// The readout of this type repeats every frame; `change` may spoil the answer.
    ResetRun run(link::InstrumentType type, const std::function<void(std::string&)>& change = {})
    {
        bench.instrumentType = type;
        onFrame = [this, change] {
            auto answer = frames.back() + "\r\n";
            if (change) change(answer);
            answers = {answer};
        };
        return runReset(module1, bench, [this](const std::string& step) { steps.push_back(step); });
    }

    std::vector<std::string> steps;
};

/// The clock is read when its step is built, so its frame is compared apart.
Frames withoutClock(Frames frames)
{
    for (auto& frame : frames)
        if (frame.substr(3, 2) == "03") frame.erase(5, 12);
    return frames;
}

TEST_F(Reset, TypeCSendsAllTwelveSteps)
{
    EXPECT_TRUE(run(link::TypeC).ok);
    EXPECT_EQ(withoutClock(frames), withoutClock(kAllSteps));
}

TEST_F(Reset, TypesAAndBSendNothingOfZ)
{
    EXPECT_TRUE(run(link::TypeA).ok);
    EXPECT_EQ(withoutClock(frames), withoutClock(without({5, 9})));
    frames.clear();
    EXPECT_TRUE(run(link::TypeB).ok);
    EXPECT_EQ(withoutClock(frames), withoutClock(without({5, 9})));
}

TEST_F(Reset, TypeDSendsOnlyWhatConcernsX)
{
    EXPECT_TRUE(run(link::TypeD).ok);
    EXPECT_EQ(withoutClock(frames), withoutClock(without({4, 5, 7, 8, 9})));
}

TEST_F(Reset, ClockIsTakenWhenItsStepIsBuilt)
{
    const auto minuteLater = [this](const std::string&) {
        if (frames.size() == 9) clock.move(60);
    };
    EXPECT_TRUE(run(link::TypeC, minuteLater).ok);
    EXPECT_TRUE(frames[9].starts_with(":010324051709063")) << frames[9];
}

TEST_F(Reset, AnotherFlagEndsItBeforeAnyOffset)
{
    const auto done = run(link::TypeA, [](std::string& answer) {
        if (answer.starts_with(":0175")) answer = ":017501FF\r\n";
    });
    EXPECT_FALSE(done.ok);
    EXPECT_EQ(frames.size(), 2U);
    EXPECT_EQ(done.where, "step 2 of 10 (reference feature off)");
    EXPECT_EQ(done.why, "The readout answered \":017501FF\" to \":017500FF\".");
}

TEST_F(Reset, StepsWithoutEchoTakeAnyCompleteReply)
{
    const auto done = run(link::TypeC, [](std::string& answer) {
        for (const auto* code : {"67", "03", "05", "25"})
            if (answer.substr(3, 2) == code) answer.assign(answer.size(), '~');
    });
    EXPECT_TRUE(done.ok) << done.where;
}

TEST_F(Reset, EveryStepThatStaysShortEndsIt)
{
    for (std::size_t step = 1; step <= kAllSteps.size(); ++step) {
        frames.clear();
        const auto done = run(link::TypeC, [&](std::string& answer) {
            if (frames.size() == step) answer.pop_back();
        });
        EXPECT_FALSE(done.ok) << step;
        EXPECT_EQ(frames.size(), step);
        EXPECT_TRUE(done.where.starts_with("step " + std::to_string(step) + " of 12 ")) << done.where;
        EXPECT_TRUE(done.why.startsWith("Only ")) << qPrintable(done.why);
    }
}

TEST_F(Reset, EveryEchoThatDiffersEndsIt)
{
    for (std::size_t step = 2; step <= 9; ++step) {
        frames.clear();
        const auto done = run(link::TypeC, [&](std::string& answer) {
            if (frames.size() == step) answer[answer.size() - 5] = '~';
        });
        EXPECT_FALSE(done.ok) << step;
        EXPECT_EQ(frames.size(), step);
    }
}

TEST_F(Reset, PortThatVanishesIsTheReason)
{
    const auto done = run(link::TypeC, [this](std::string&) {
        if (frames.size() == 3) device->vanish();
    });
    EXPECT_FALSE(done.ok);
    EXPECT_EQ(done.where, "step 3 of 12 (X offset to zero)");
    EXPECT_TRUE(done.why.startsWith("by hand is gone (pulled).")) << qPrintable(done.why);
}

TEST_F(Reset, LateCharactersAreDrainedBeforeEachStep)
{
    const auto done = run(link::TypeA, [](std::string& answer) { answer += "late"; });
    EXPECT_TRUE(done.ok) << done.where;
}

TEST_F(Reset, ProgressNamesEachStep)
{
    run(link::TypeD);
    ASSERT_EQ(steps.size(), 7U);
    EXPECT_EQ(steps.front(), "step 1 of 7 (wire parameters)");
    EXPECT_EQ(steps.back(), "step 7 of 7 (stored readings deleted)");
}

TEST_F(Reset, EmptyAddressIsNotRefused)
{
    bench.currentAddress.clear();
    run(link::TypeD);
    EXPECT_EQ(frames.front(), ":00671503010000FF");
}

} // namespace
} // namespace quorvel::protocol
