#pragma once

#include "link/clock.h"
#include "link/gate.h"
#include "link/module1.h"
#include "main/inputfilter.h"
#include "main/workplace.h"
#include "support/simulated_bus.h"
#include "support/test_messages.h"

#include <QObject>
#include <QTemporaryDir>
#include <QWidget>

#include <gtest/gtest.h>

#include <memory>

namespace quorvel::test {

/// What windows need to run against a simulated bus whose answers come at once: a bench with an open port, in
/// real time. Windows that are made on it talk to real readouts of a real `quorvel-sim` process.
class BenchOnTheBus : public ::testing::Test {
protected:
    /// @param bus  arguments of the simulator.
    explicit BenchOnTheBus(const QStringList& bus = {QStringLiteral("--fast"), QStringLiteral("--seed"),
                                                     QStringLiteral("1"), QStringLiteral("--readout"),
                                                     QStringLiteral("5:A"), QStringLiteral("--readout"),
                                                     QStringLiteral("12:C")});

    QString lastMessage() const { return messages.last(); }
    QTemporaryDir folder;
    SimulatedBus bus;
    link::Bench bench;
    link::PortList ports;
    link::SystemClock clock;
    link::MSComm mscomm1;
    link::Module1 module1;
    link::Gate gate;
    InputFilter filter;
    TestMessages messages;
    Workplace workplace{bench, module1, gate, messages};
};

/// The descendant called `name`; a test that asks for one that is not there fails with the names that are, and
/// ends.
template<class Kind>
Kind* child(const QObject& parent, const QString& name)
{
    if (auto* found = parent.findChild<Kind*>(name)) return found;
    QStringList names;
    for (const auto* object : parent.findChildren<Kind*>()) {
        names << object->objectName();
    }
    ADD_FAILURE() << qPrintable(name) << " is none of: " << qPrintable(names.join(QStringLiteral(", ")));
    std::abort();
}

} // namespace quorvel::test
