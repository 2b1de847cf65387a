#pragma once

#include "autoread/exported.h"
#include "autoread/ring_readout.h"
#include "autoread/visit.h"

#include <QDir>
#include <QTemporaryDir>

#include <gmock/gmock.h>

namespace quorvel::test {

/// Visits to a readout with a ring of 20 slots, with files in a folder of their own.
class VisitTo : public ::testing::Test {
protected:
    using Visit = autoread::Visit;

    std::filesystem::path file(const char* name) const { return folder.filePath(name).toStdString(); }
    Visit visit(const autoread::Asking& asking = {})
    {
        return {readout.line.module1, 1, link::TypeA, book, asking};
    }
    /// A watcher that stops a download when so many records are there.
    static autoread::Watcher stopAfter(int records)
    {
        const auto received = std::make_shared<int>(0);
        return {.stop = [=] { return *received >= records; },
                .progress = [=](const autoread::Progress& progress) { *received = progress.received; },
                .remark = {}};
    }
    autoread::Report download(const char* name, const autoread::Watcher& watcher = {},
                              const autoread::Asking& asking = {})
    {
        return visit(asking).download(file(name), autoread::Existing::Keep, watcher);
    }
    /// Continues a file as planned, whatever the plan says.
    autoread::Report goOn(const char* name)
    {
        auto again = visit();
        const auto plan = again.plan(file(name));
        EXPECT_TRUE(plan) << (plan ? std::string() : plan.error());
        if (!plan) return {};
        lastPlan = *plan;
        return again.continueFile(*plan, {});
    }
    std::string content(const char* name) const
    {
        return std::string(name).ends_with(".csv") ? contents(file(name)) : exported(file(name));
    }

    QTemporaryDir folder;
    RingReadout readout{20};
    autoread::Book book;
    autoread::ContinuePlan lastPlan;
};

} // namespace quorvel::test
