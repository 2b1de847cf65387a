#include "autoread/setauto.h"
#include "calibration/celebration1.h"
#include "calibration/dbgrid.h"
#include "calibration/form6.h"
#include "grayscale/grayscalechart.h"
#include "main/form1.h"
#include "protocol/command.h"
#include "settings/form2.h"
#include "settings/form4.h"
#include "settings/form51.h"
#include "settings/form52.h"
#include "settings/resetsetting.h"
#include "settings/settime.h"
#include "settings/setwire.h"
#include "support/bench_by_hand.h"
#include "support/bench_on_the_bus.h"

#include <QAbstractButton>
#include <QAction>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QRadioButton>
#include <QTemporaryDir>
#include <QTest>

namespace quorvel::test {
namespace {

using Frames = std::vector<std::string>;

/// A window that sends an address, and all that it sends.
struct AddressWindow {
    const char* name;
    std::unique_ptr<QDialog> (*make)(const Workplace&);
    const char* box; ///< of its own; null: it uses the main window's
    std::function<void(QDialog&)> act;
    Frames sent;                   ///< without ":" and address, and without the time of a clock
    const char* refusal = nullptr; ///< said of an empty box, nothing being sent; null: an empty box is sent
    const char* direction = "Y";   ///< of the grayscale
};

/// An address as typed, the two digits that go out, and what the status line says of it.
struct TypedAddress {
    const char* name;
    const char* typed;
    const char* digits;
    QString hint;
};

QString every(const char* typed)
{
    return QStringLiteral(
               "\"%1\" addresses every readout on the bus: what is set or deleted is set or deleted in "
               "all of them. One readout has an address from 1 to 249.")
        .arg(typed);
}

const TypedAddress kTyped[] = {
    {"A255", "255", "FF", every("255")},
    {"A250", "250", "FA", "No readout has the address \"250\". Addresses are 1 to 249."},
    {"A261", "261", "05", "\"261\" is sent as the address 5. Addresses are 1 to 249."},
    {"MinusOne", "-1", "FF", every("-1")},
    {"Empty", "", "00", "The address box is empty: no readout will answer. Addresses are 1 to 249."},
};

/// A readout that answers every frame whole: it repeats a command, and tells zeros when it is asked.
std::string wholeAnswer(const std::string& frame)
{
    const protocol::Command* asked = nullptr;
    for (const auto& command : protocol::commands()) {
        if (frame.compare(3, command.digits.size(), command.digits) == 0) asked = &command;
    }
    if (!asked) return {};
    const auto length = static_cast<std::size_t>(asked->reply.count);
    auto answer = frame.substr(0, frame.size() - 2);
    answer.resize(std::max(length, frame.size() + 2) - 4, '0');
    return answer + "FF\r\n";
}

/// A bench before a readout that answers every frame, whatever its address.
class AddressByHand : public BenchByHand {
protected:
    AddressByHand()
    {
        onFrame = [this] { answers = {wholeAnswer(frames.back())}; };
        bench.instrumentType = link::TypeC;
        bench.programFolder = folder.path().toStdString();
        bench.CalibrationDirection = "X";
        bench.GrayscaleDirection = "Y";
        messages.answers.assign(20, true);
    }

    QTemporaryDir folder;
};

template<class Window>
std::unique_ptr<QDialog> made(const Workplace& workplace)
{
    return std::make_unique<Window>(workplace);
}

std::unique_ptr<QDialog> madeSetAuto(const Workplace& workplace)
{
    static autoread::Book book;
    return std::make_unique<SetAuto>(workplace, book);
}

/// Presses all buttons of these names; `typed` stands in the boxes before.
std::function<void(QDialog&)> pressing(const QStringList& buttons,
                                       const std::vector<std::pair<const char*, const char*>>& typed = {})
{
    return [=](QDialog& window) {
        for (const auto& [box, text] : typed) {
            child<QLineEdit>(window, box)->setText(text);
        }
        for (const auto& name : buttons) {
            for (auto* button : window.findChildren<QPushButton*>(name)) {
                button->click();
            }
        }
    };
}

/// Measures the first point, then downloads a table of zeros.
void calibrate(QDialog& window)
{
    auto& grid = *child<calibration::DBGrid>(window, "DBGrid1");
    for (int row = 0; row < grid.model()->rowCount(); ++row) {
        for (const int column : {1, 2}) {
            grid.model()->setData(grid.model()->index(row, column), "0");
        }
    }
    grid.setCurrentIndex(grid.model()->index(0, 2));
    grid.cellButton()->click();
    child<QPushButton>(window, "Command1")->click();
}

/// Lets the reading that the showing begins run to its end.
void showGrayscale(QDialog& window)
{
    window.show();
    QCoreApplication::processEvents();
}

std::string repeated(const std::string& text, int times)
{
    std::string all;
    for (int i = 0; i < times; ++i) {
        all += text;
    }
    return all;
}

const QStringList kEightButtons{"Command1", "Command2", "Command3", "Command4",
                                "Command5", "Command6", "Command7", "Command8"};

const AddressWindow kAddressWindows[] = {
    {"SetWireSet",
     made<SetWire>,
     "SensorNo",
     pressing({"Command1"}, {{"Dia", "1.5"}, {"Dia_error", "0.3"}}),
     {"671503010000FF"},
     "Address Error"},
    {"SetWireQuery", made<SetWire>, "SensorNo", pressing({"Command3"}), {"68FF"}},
    {"Form51",
     made<Form51>,
     nullptr,
     pressing(kEightButtons),
     {"76FF", "7500FF", "72FF", "71+0.00000FF", "74FF", "73+0.00000FF", "7806FF", "7805+0.00000FF"}},
    {"Form52",
     made<Form52>,
     nullptr,
     pressing(kEightButtons),
     {"76FF",   "7500FF", // feature
      "72FF",   "2101FF", "2102FF",         "71+0.00000FF", "2101FF",        "2102FF", "71+0.00000FF", // X
      "74FF",   "2101FF", "2102FF",         "73+0.00000FF", "2101FF",        "2102FF", "73+0.00000FF", // Y
      "7806FF", "2102FF", "7805+0.00000FF", "2102FF",       "7805+0.00000FF"}},                        // Z
    {"Form4",
     made<Form4>,
     nullptr,
     pressing({"Command1", "Command2", "Command3", "Command4"}),
     {"7704FF", "7706FF", "7708FF", "770300FF", "770500FF", "770700FF", "7702FF", "770100FF"}},
    {"SetTime", made<SetTime>, "Text1", pressing({"Command1"}), {"04FF", "03FF"}},
    {"SetAuto",
     madeSetAuto,
     "Text1",
     pressing({"Command1", "Command2", "Command3"}),
     {"06FF", "050101000000FF", "22FF", "25FF"}},
    {"GrayScaleChartX",
     made<GrayScaleChart>,
     nullptr,
     showGrayscale,
     {"65FF"},
     "Please input the sensor No!",
     "X"},
    {"GrayScaleChartY", made<GrayScaleChart>, nullptr, showGrayscale, {"66FF"}},
    {"Celebration1",
     made<calibration::Celebration1>,
     "Text1",
     calibrate,
     {"2101FF", "6111" + repeated("+000.000", 22) + "FF"}},
    {"Form6",
     made<calibration::Form6>,
     nullptr,
     pressing({"Command2", "Command1"}, {{"Text1", "0512"}}),
     {"78210512FF", "7822FF"}},
};

/// The commands of frames: without ":" and address, and without the time of a clock.
Frames commandsOf(Frames frames)
{
    for (auto& frame : frames) {
        frame.erase(0, 3);
        if (frame.starts_with("03")) frame.erase(2, 12);
    }
    return frames;
}

class AddressIn : public AddressByHand,
                  public ::testing::WithParamInterface<std::tuple<AddressWindow, TypedAddress>> {
protected:
    void makeWindow()
    {
        bench.GrayscaleDirection = row.direction;
        bench.currentAddress = row.box ? QStringLiteral("5") : QString(typed.typed);
        window = row.make(workplace);
    }
    QString status() { return child<QLabel>(*window, "Status")->text(); }

    const AddressWindow& row = std::get<0>(GetParam());
    const TypedAddress& typed = std::get<1>(GetParam());
    std::unique_ptr<QDialog> window;
};

TEST_P(AddressIn, GoesOutAsTwoDigitsAndIsToldInTheStatusLine)
{
    makeWindow();
    if (row.box) {
        EXPECT_FALSE(status().contains("Addresses are 1 to 249")) << qPrintable(status());
        child<QLineEdit>(*window, row.box)->setText(typed.typed);
    }
    EXPECT_TRUE(status().startsWith(typed.hint)) << qPrintable(status());
    row.act(*window);
    EXPECT_TRUE(status().startsWith(typed.hint)) << qPrintable(status());

    const bool refused = row.refusal && !*typed.typed;
    EXPECT_EQ(messages.shown.contains(row.refusal), refused) << qPrintable(messages.shown.join('|'));
    EXPECT_EQ(commandsOf(frames), refused ? Frames() : row.sent);
    for (const auto& frame : frames) {
        EXPECT_EQ(frame.substr(0, 3), std::string(":") + typed.digits);
    }
    if (row.box) {
        child<QLineEdit>(*window, row.box)->setText("12");
        EXPECT_FALSE(status().contains("ddress")) << qPrintable(status());
    }
}

INSTANTIATE_TEST_SUITE_P(
    All, AddressIn, ::testing::Combine(::testing::ValuesIn(kAddressWindows), ::testing::ValuesIn(kTyped)),
    [](const auto& instance) {
        return std::string(std::get<0>(instance.param).name) + std::get<1>(instance.param).name;
    });

/// The main window before the same readout.
class WithMainWindow : public AddressByHand {
protected:
    WithMainWindow()
    {
        bench.currentAddress.clear(); // as the box is at start-up
        form1.setOpener("ResetSetting", [this] {
            ResetSetting_Click(workplace, &form1, [this](const QString& text) { form1.showStatus(text); });
        });
        form1.show();
    }

    QLineEdit& TestNo() { return *child<QLineEdit>(form1, "TestNo"); }
    QString status() { return child<QLabel>(form1, "Status")->text(); }
    void reset()
    {
        child<QAction>(form1, "ResetSetting")->trigger();
        QCoreApplication::processEvents();
    }

    link::PortList ports{{QStringLiteral("by hand")}, [] { return std::vector<link::PortInfo>(); }};
    Form1 form1{workplace, ports};
};

class AddressOfAReset : public WithMainWindow, public ::testing::WithParamInterface<TypedAddress> {};

TEST_P(AddressOfAReset, GoesOutAsTwoDigitsAndIsToldWhileItIsAskedFor)
{
    const auto& typed = GetParam();
    TestNo().setText(typed.typed);
    QStringList beside;
    messages.onShow = [&](const QString&) { beside << status(); };
    reset();
    ASSERT_EQ(beside.size(), 3) << "two questions and the result";
    const auto hint = *typed.typed ? typed.hint : QString();
    EXPECT_EQ(beside.mid(0, 2), QStringList({hint, hint}));
    EXPECT_EQ(messages.last(), "Reset OK!");
    EXPECT_EQ(frames.size(), 10U);
    for (const auto& frame : frames) {
        EXPECT_EQ(frame.substr(0, 3), std::string(":") + typed.digits);
    }
}

INSTANTIATE_TEST_SUITE_P(All, AddressOfAReset, ::testing::ValuesIn(kTyped),
                         [](const auto& instance) { return instance.param.name; });

/// All that the main window shows.
QStringList shownBy(const Form1& form)
{
    QStringList shown;
    for (const auto* box : form.findChildren<QLineEdit*>()) {
        shown << box->objectName() + '=' + box->text();
    }
    for (const auto* button : form.findChildren<QAbstractButton*>()) {
        shown << button->objectName() + '=' + button->text() + QString::number(button->isChecked()) +
                     QString::number(button->isEnabled());
    }
    for (const auto* list : form.findChildren<QComboBox*>()) {
        shown << list->objectName() + '=' + list->currentText();
    }
    const auto* readings = child<QListWidget>(form, "List1");
    for (int row = 0; row < readings->count(); ++row) {
        shown << readings->item(row)->text();
    }
    return shown << child<QLabel>(form, "NoList")->text() << child<QAction>(form, "fz")->text();
}

TEST_F(WithMainWindow, AResetChangesNothingThere)
{
    child<QRadioButton>(form1, "Option3")->click();
    TestNo().setText("5");
    child<QLabel>(form1, "NoList")->setText("05,12");
    child<QListWidget>(form1, "List1")->addItem("14:05:20    X: +12.3456  Y: -00.0078  ");
    const auto before = shownBy(form1);
    ASSERT_TRUE(before.contains("TestNo=5"));
    reset();
    EXPECT_EQ(messages.last(), "Reset OK!");
    EXPECT_EQ(shownBy(form1), before);
    messages.answers.assign(2, true);
    onFrame = {};
    reset();
    EXPECT_EQ(messages.last(), "Reset Failed!");
    EXPECT_EQ(shownBy(form1), before);
}

/// A window with an address box of its own.
class OwnAddressBox : public WithMainWindow, public ::testing::WithParamInterface<AddressWindow> {};

TEST_P(OwnAddressBox, BeginsAsACopyOfThatOfTheMainWindowAndDoesNotChangeIt)
{
    const auto& row = GetParam();
    TestNo().setText("5");
    for (int showing = 0; showing < 2; ++showing) {
        const auto window = row.make(workplace);
        auto& box = *child<QLineEdit>(*window, row.box);
        EXPECT_EQ(box.text(), "5");
        box.setText("12");
        row.act(*window);
        EXPECT_FALSE(frames.empty());
        EXPECT_EQ(TestNo().text(), "5");
        EXPECT_EQ(bench.currentAddress, "5");
    }
}

std::vector<AddressWindow> withAddressBox()
{
    std::vector<AddressWindow> rows{
        {"Form2", made<Form2>, "Text1", pressing({"Command1"}, {{"Text2", "33"}}), {}}};
    for (const auto& row : kAddressWindows) {
        if (row.box) rows.push_back(row);
    }
    return rows;
}

INSTANTIATE_TEST_SUITE_P(All, OwnAddressBox, ::testing::ValuesIn(withAddressBox()),
                         [](const auto& instance) { return instance.param.name; });

} // namespace
} // namespace quorvel::test
