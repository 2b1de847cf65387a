#include "autoread/book.h"
#include "autoread/setauto.h"
#include "calibration/calibration_files.h"
#include "calibration/celebration1.h"
#include "calibration/form6.h"
#include "line/journal.h"
#include "protocol/command.h"
#include "protocol/meaning.h"
#include "settings/form2.h"
#include "settings/form4.h"
#include "settings/form51.h"
#include "settings/form52.h"
#include "settings/settime.h"
#include "settings/setwire.h"
#include "support/bench_on_the_bus.h"

#include <QFile>
#include <QJsonDocument>
#include <QLineEdit>
#include <QPushButton>

#include <gtest/gtest.h>

#include <set>

namespace quorvel::line {
namespace {

using test::child;

/// All windows that set or delete something, before a readout of type C.
class EveryWindow : public test::BenchOnTheBus {
protected:
    EveryWindow() : BenchOnTheBus({"--fast", "--seed", "1", "--readout", "33:C"})
    {
        bench.edition = QStringLiteral("FACTORY");
        bench.instrumentType = link::TypeC;
        bench.currentAddress = QStringLiteral("33");
        module1.addObserver(journal);
    }
    ~EveryWindow() override { module1.removeObserver(journal); }

    void press(QWidget& window, const char* name)
    {
        messages.answers = {true, true};
        child<QPushButton>(window, name)->click();
    }
    template<class Window>
    void pressAllSets()
    {
        Window window(workplace);
        window.show();
        for (auto* button : window.template findChildren<QPushButton*>()) {
            messages.answers = {true, true};
            if (button->text() == "Set") button->click();
        }
    }
    void pressAll()
    {
        pressAllSets<Form51>();
        pressAllSets<Form52>();
        pressAllSets<Form4>();
        pressAllSets<SetTime>();
        SetWire wire(workplace);
        child<QLineEdit>(wire, "Dia")->setText("1.5");
        child<QLineEdit>(wire, "Dia_error")->setText("0.3");
        press(wire, "Command1");
        autoread::Book book;
        SetAuto automatic(workplace, book);
        press(automatic, "Command1");
        press(automatic, "Command3");
        calibration::Form6 stitching(workplace);
        child<QLineEdit>(stitching, "Text1")->setText("1234");
        press(stitching, "Command2");
        for (const auto* direction : {"X", "Y", "Z"}) {
            bench.CalibrationDirection = direction;
            calibration::makeFilledFile(bench.programFolder,
                                        *calibration::directionOf(QLatin1String(direction)));
            calibration::Celebration1 table(workplace);
            press(table, "Command1");
        }
        Form2 address(workplace);
        child<QLineEdit>(address, "Text2")->setText("34");
        press(address, "Command1");
    }
    static bool changes(const protocol::Command& command)
    {
        return command.kind == link::Kind::Set || command.kind == link::Kind::Delete;
    }
    std::set<std::string> booked() const
    {
        std::set<std::string> all;
        QFile file(folder.filePath("journal.jsonl"));
        if (!file.open(QIODevice::ReadOnly)) return all;
        while (!file.atEnd()) {
            all.insert(QJsonDocument::fromJson(file.readLine())["command"].toString().toStdString());
        }
        return all;
    }

    Journal journal{folder.filePath("journal.jsonl").toStdString(),
                    {"quorvel", "anna", [] { return QStringLiteral("COM3"); }}};
};

// A new command cannot be forgotten: the windows above have to reach all of the table.
TEST_F(EveryWindow, BooksWhatItSetsAndDeletes)
{
    pressAll();
    std::set<std::string> all;
    for (const auto& command : protocol::commands()) {
        if (changes(command)) all.emplace(command.digits);
    }
    EXPECT_EQ(booked(), all);
}

TEST_F(EveryWindow, SetsAndDeletesNothingWhileReadOnlyIsOn)
{
    module1.setReadOnly(true);
    pressAll();
    EXPECT_TRUE(booked().empty());
    for (const auto& frame : bus.frames()) {
        const auto* command = protocol::commandOf(frame.toStdString() + "\r\n");
        ASSERT_TRUE(command) << qPrintable(frame);
        EXPECT_FALSE(changes(*command)) << qPrintable(frame);
    }
}

} // namespace
} // namespace quorvel::line
