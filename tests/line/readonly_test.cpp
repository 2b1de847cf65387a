#include "autoread/setauto.h"
#include "calibration/form6.h"
#include "protocol/command.h"
#include "protocol/reset.h"
#include "settings/form2.h"
#include "settings/form51.h"
#include "support/bench_by_hand.h"
#include "support/bench_on_the_bus.h"

#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

#include <gtest/gtest.h>

namespace quorvel::line {
namespace {

using test::child;

const QString kRefused = QStringLiteral("Read Only is on: nothing was sent.");

class ReadOnly : public test::BenchByHand {
protected:
    ReadOnly() { module1.setReadOnly(true); }
};

// A new command cannot be forgotten: whatever the table calls a set or a deletion is refused, all else is sent.
TEST_F(ReadOnly, RefusesEveryCommandThatChangesAReadoutBeforeACharacterIsSent)
{
    for (const auto& row : protocol::commands()) {
        frames.clear();
        const auto exchange = module1.transact(protocol::transaction(row.id, "05"));
        const bool changes = row.kind == link::Kind::Set || row.kind == link::Kind::Delete;
        EXPECT_EQ(frames.empty(), changes) << row.name;
        EXPECT_EQ(exchange.outcome == link::Outcome::Refused, changes) << row.name;
        EXPECT_FALSE(changes && exchange.frameWentOut()) << row.name;
    }
    EXPECT_TRUE(device->written.find("71") == std::string::npos);
}

TEST_F(ReadOnly, SwitchedOffEverythingIsSent)
{
    module1.setReadOnly(false);
    module1.transact(protocol::transaction(protocol::CommandId::DeleteRecords, "05"));
    EXPECT_EQ(frames.size(), 1U);
}

TEST_F(ReadOnly, AWindowSaysWhatItSaysWithoutAnAnswerAndWhy)
{
    Form51 offsets(workplace);
    child<QPushButton>(offsets, "Command4")->click();
    EXPECT_EQ(messages.shown, QStringList("Comm Error"));
    EXPECT_EQ(child<QLabel>(offsets, "Status")->text(), kRefused);
    EXPECT_TRUE(frames.empty());
}

TEST_F(ReadOnly, AddressIntervalDeletionAndStitchingAreRefusedInTheirWindows)
{
    Form2 address(workplace);
    child<QLineEdit>(address, "Text2")->setText("7");
    child<QPushButton>(address, "Command1")->click();
    EXPECT_EQ(messages.last(), "New Address Setting Failed");
    EXPECT_EQ(child<QLabel>(address, "Status")->text(), kRefused);

    autoread::Book book;
    SetAuto automatic(workplace, book);
    messages.answers = {true};
    child<QPushButton>(automatic, "Command3")->click();
    EXPECT_EQ(messages.last(), "Comm Error");
    EXPECT_TRUE(child<QLabel>(automatic, "Status")->text().contains(kRefused));

    calibration::Form6 stitching(workplace);
    child<QLineEdit>(stitching, "Text1")->setText("0512");
    child<QPushButton>(stitching, "Command2")->click();
    EXPECT_EQ(messages.last(), "Comm Error");
    EXPECT_EQ(child<QLabel>(stitching, "Status")->text(), kRefused);
    EXPECT_TRUE(frames.empty());
}

TEST_F(ReadOnly, AResetEndsAtItsFirstStep)
{
    const auto run = protocol::runReset(module1, bench, [](const std::string&) {});
    EXPECT_FALSE(run.ok);
    EXPECT_EQ(run.done, 0);
    EXPECT_EQ(run.why, kRefused);
    EXPECT_TRUE(frames.empty());
}

} // namespace
} // namespace quorvel::line
