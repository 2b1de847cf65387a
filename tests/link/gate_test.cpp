#include "link/gate.h"

#include <gtest/gtest.h>

#include <new>
#include <stdexcept>

#include <memory>
#include <string>

namespace quorvel::link {
namespace {

TEST(Gate, RunsOneHandlerAtATime)
{
    Gate gate;
    int refusals = 0;
    QObject::connect(&gate, &Gate::refused, &gate, [&refusals] { ++refusals; });
    int runs = 0;
    EXPECT_TRUE(gate.run([&] {
        ++runs;
        EXPECT_TRUE(gate.busy());
        EXPECT_FALSE(gate.run([&runs] { ++runs; }));
    }));
    EXPECT_EQ(runs, 1);
    EXPECT_EQ(refusals, 1);
    EXPECT_FALSE(gate.busy());
    EXPECT_TRUE(gate.run([&runs] { ++runs; }));
    EXPECT_EQ(runs, 2);
}

TEST(Gate, ClosingWaitsForTheRunningHandlerAndAsksItToEnd)
{
    Gate gate;
    QObject window;
    bool closed = false;
    gate.run([&] {
        EXPECT_FALSE(gate.stopRequested());
        gate.whenIdle(&window, [&closed] { closed = true; });
        EXPECT_FALSE(closed);
        EXPECT_TRUE(gate.stopRequested());
    });
    EXPECT_TRUE(closed);
    EXPECT_FALSE(gate.stopRequested());
}

TEST(Gate, ClosingAnIdleWindowDoesNotWait)
{
    Gate gate;
    QObject window;
    bool closed = false;
    gate.whenIdle(&window, [&closed] { closed = true; });
    EXPECT_TRUE(closed);
}

TEST(Gate, WhatIsKeptForAWindowThatIsGoneIsDropped)
{
    Gate gate;
    auto window = std::make_unique<QObject>();
    bool closed = false;
    bool ran = false;
    gate.run([&] {
        gate.whenIdle(window.get(), [&closed] { closed = true; });
        gate.runWhenFree(window.get(), [&ran] { ran = true; });
        window.reset();
    });
    EXPECT_FALSE(closed);
    EXPECT_FALSE(ran);
}

TEST(Gate, AHandlerThatWaitsItsTurnRunsAfterTheRunningOneAndDoesNotHurryIt)
{
    Gate gate;
    QObject window;
    int refusals = 0;
    QObject::connect(&gate, &Gate::refused, &gate, [&refusals] { ++refusals; });
    std::string order;
    const auto second = [&] {
        EXPECT_TRUE(gate.busy());
        order += "second";
    };
    gate.run([&] {
        gate.runWhenFree(&window, second);
        EXPECT_FALSE(gate.stopRequested());
        order += "first ";
    });
    EXPECT_EQ(order, "first second");
    gate.runWhenFree(&window, second);
    EXPECT_EQ(order, "first secondsecond");
    EXPECT_EQ(refusals, 0);
    EXPECT_FALSE(gate.busy());
}

TEST(Gate, KnowsThatABoxIsOpen)
{
    Gate gate;
    {
        const Gate::Box box(gate);
        EXPECT_TRUE(gate.boxOpen());
    }
    EXPECT_FALSE(gate.boxOpen());
}

TEST(Gate, AHandlerThatThrowsIsToldAndLeavesTheGateOpen)
{
    Gate gate;
    QStringList told;
    QObject::connect(&gate, &Gate::failed, &gate, [&told](const QString& reason) { told << reason; });
    EXPECT_TRUE(gate.run([] { throw std::runtime_error("the roof fell in"); }));
    EXPECT_TRUE(gate.run([] { throw std::bad_alloc(); }));
    EXPECT_EQ(told, QStringList({"the roof fell in", "There was not enough memory."}));
    EXPECT_FALSE(gate.busy());
    bool ran = false;
    EXPECT_TRUE(gate.run([&ran] { ran = true; }));
    EXPECT_TRUE(ran);
}

TEST(Gate, WhatWaitedIsDoneAlsoAfterAHandlerThatThrew)
{
    Gate gate;
    QObject context;
    bool closed = false;
    gate.run([&] {
        gate.whenIdle(&context, [&closed] { closed = true; });
        throw std::runtime_error("the roof fell in");
    });
    EXPECT_TRUE(closed);
    EXPECT_FALSE(gate.stopRequested());
}

} // namespace
} // namespace quorvel::link
