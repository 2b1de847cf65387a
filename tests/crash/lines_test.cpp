#include "crash/reopened.h"
#include "line/journal.h"
#include "line/trace.h"
#include "protocol/command.h"
#include "support/bench_by_hand.h"

#include <QJsonDocument>
#include <QJsonObject>

namespace quorvel::line {
namespace {

using protocol::CommandId;
using namespace quorvel::test;

constexpr int kFrames = 4;

/// Files to which lines are appended die in the middle of one.
class CrashedLines : public BenchByHand {
protected:
    /// Sets the offset of X to this value.
    void set(const std::string& value)
    {
        answerWith({":0571" + value + "FF\r\n"});
        module1.transact(protocol::transaction(CommandId::SetOffsetX, "05", value));
    }
    Recording record(link::ExchangeObserver& observer, const char* what)
    {
        module1.addObserver(observer);
        Recording recording(folder.path().toStdString(), [&] {
            for (int i = 0; i < kFrames; ++i) {
                set("+1.0000" + std::to_string(i));
                say((' ' + std::to_string(i + 1) + what).c_str());
            }
        });
        module1.removeObserver(observer);
        return recording;
    }
    static std::vector<QJsonObject> objectsIn(const std::string& text)
    {
        std::vector<QJsonObject> objects;
        for (const auto& line : linesOf(text)) {
            const auto object = QJsonDocument::fromJson(QByteArray::fromStdString(line)).object();
            if (!object.isEmpty()) objects.push_back(object);
        }
        return objects;
    }
    /// The values of the lines that can be read and say how the exchange ended.
    static std::vector<std::string> valuesIn(const std::string& text)
    {
        std::vector<std::string> values;
        for (const auto& object : objectsIn(text)) {
            if (object.contains("reply"))
                values.push_back(object["frame"].toString().mid(5, 8).toStdString());
        }
        return values;
    }
    static std::vector<std::string> values(int count)
    {
        std::vector<std::string> all;
        for (int i = 0; i < count; ++i)
            all.push_back("+1.0000" + std::to_string(i));
        return all;
    }

    QTemporaryDir folder;
};

TEST_F(CrashedLines, JournalHasEverySetThatWasAnswered)
{
    const JournalWriter writer{"quorvel", "anna", [] { return QStringLiteral("COM3"); }};
    Journal journal(folder.filePath("journal.jsonl").toStdString(), writer);
    const auto recording = record(journal, " booked");
    ASSERT_EQ(valuesIn(recording.after().at("journal.jsonl")), values(kFrames));
    recording.forEachWreck([&](const Wreck& wreck) {
        const auto path = wreck.folder / "journal.jsonl";
        const auto text = wreck.has("journal.jsonl") ? wreck.files.at("journal.jsonl") : std::string();
        const auto booked = valuesIn(text);
        const auto count = static_cast<std::size_t>(numberBefore(wreck.said, " booked"));
        EXPECT_GE(booked.size(), count);
        EXPECT_EQ(booked, values(static_cast<int>(booked.size())));
        // what is booked next has a line of its own
        std::filesystem::remove(path.string() + ".lock"); // of this program: it would wait for itself
        Journal next(path, writer);
        module1.addObserver(next);
        set("+2.00000");
        module1.removeObserver(next);
        auto expected = booked;
        expected.emplace_back("+2.00000");
        EXPECT_EQ(valuesIn(contents(path)), expected);
    });
}

TEST_F(CrashedLines, TraceOfAKilledProgramHasEveryFrame)
{
    const auto path = folder.filePath("trace.jsonl");
    QFile old(path);
    ASSERT_TRUE(old.open(QIODevice::WriteOnly) && old.write("{\"earlier\":1}\n") > 0);
    old.close();
    Trace trace;
    ASSERT_EQ(trace.open(path), "");
    const auto recording = record(trace, " traced");
    trace.close();
    recording.forEachWreck([&](const Wreck& wreck) {
        const auto& text = wreck.files.at("trace.jsonl");
        EXPECT_THAT(text, ::testing::StartsWith("{\"earlier\":1}\n"));
        const auto traced = valuesIn(text);
        if (wreck.killed) {
            EXPECT_GE(traced.size(), static_cast<std::size_t>(numberBefore(wreck.said, " traced")));
            EXPECT_EQ(traced, values(static_cast<int>(traced.size())));
        }
        Trace next;
        ASSERT_EQ(next.open(QString::fromStdString((wreck.folder / "trace.jsonl").string())), "");
        module1.addObserver(next);
        set("+2.00000");
        module1.removeObserver(next);
        next.close();
        EXPECT_EQ(objectsIn(contents(wreck.folder / "trace.jsonl")).size(), objectsIn(text).size() + 2)
            << "what is traced next has lines of its own";
    });
}

} // namespace
} // namespace quorvel::line
