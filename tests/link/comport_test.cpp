#include "link/comport_windows.h"
#include "link/comports_windows.h"

#include <chrono>
#include <cstdlib>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

/// The serial port of Windows before a simulated bus, and the list of ports.
namespace quorvel::link {
namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

/// The port that leads to a simulated bus with the readout 5:A, which hangs up when it is asked for the offset of Y (74).
/// packaging/windows/test names it.
std::wstring portName()
{
    const char* const name = std::getenv("QUORVEL_COM_PORT"); // NOLINT(concurrency-mt-unsafe)
    EXPECT_NE(name, nullptr) << "QUORVEL_COM_PORT does not name a port";
    const std::string plain = name != nullptr ? name : "";
    return {plain.begin(), plain.end()};
}

/// What comes until there are `count` characters or the port vanishes, at most 10 s.
std::string listenTo(ComPort& port, std::size_t count)
{
    std::string come;
    const auto end = steady_clock::now() + milliseconds(10'000);
    while (come.size() < count && port.error() == ERROR_SUCCESS && steady_clock::now() < end) {
        ::WaitForSingleObject(port.arrived(), 100);
        come += port.receive();
    }
    return come;
}

constexpr auto kQuestion = ":0572FF\r\n";
constexpr std::size_t kAnswer = 17;

/// All tests of the port in one: a port that hung up does not come back.
TEST(ComPort, AsksIsAnsweredSleepsAndNoticesThatItIsGone)
{
    {
        ComPort first(portName(), {});
        ASSERT_TRUE(first.isOpen()) << first.error();
        EXPECT_EQ(first.trouble(), ComPort::Trouble::None);
        ASSERT_TRUE(first.send(kQuestion));
        const auto answer = listenTo(first, kAnswer);
        EXPECT_EQ(answer.substr(0, 5), ":0572");
        EXPECT_EQ(answer.size(), kAnswer) << answer;
        EXPECT_EQ(answer.substr(answer.size() - 2), "\r\n");
        EXPECT_EQ(first.receive(), "") << "without waiting";
    }
    ComPort again(portName(), {});
    ASSERT_TRUE(again.isOpen()) << again.error();
    for (const char* at = kQuestion; *at != '\0'; ++at)
        ASSERT_TRUE(again.send({at, 1}));
    EXPECT_EQ(listenTo(again, kAnswer).size(), kAnswer);

    // A silent line rouses nobody.
    EXPECT_EQ(::WaitForSingleObject(again.arrived(), 500), WAIT_TIMEOUT);
    EXPECT_EQ(::WaitForSingleObject(again.sent(), 0), WAIT_TIMEOUT);

    ASSERT_TRUE(again.send(":0574FF\r\n"));
    EXPECT_LT(listenTo(again, kAnswer).size(), kAnswer);
    EXPECT_NE(again.error(), ERROR_SUCCESS);
    EXPECT_FALSE(again.send("x"));
    EXPECT_EQ(::WaitForSingleObject(again.arrived(), 0), WAIT_TIMEOUT);
}

TEST(ComPort, ThatIsMissingSaysSo)
{
    for (const auto* name : {L"COM9", L"COM10", L"COM213", L"\\\\.\\COM77"}) {
        const ComPort port(name, {});
        EXPECT_FALSE(port.isOpen());
        EXPECT_EQ(port.trouble(), ComPort::Trouble::Missing) << port.error();
    }
}

TEST(ComPort, IsNotADiskOrAPipe)
{
    for (const auto* name : {L"NUL", L"C:"}) {
        const ComPort port(name, {});
        EXPECT_FALSE(port.isOpen());
        EXPECT_NE(port.trouble(), ComPort::Trouble::None);
    }
}

/// A key that takes the place of the machine's, with a list of serial ports in it.
class ListOfPorts : public ::testing::Test {
protected:
    ListOfPorts()
    {
        ::RegCreateKeyExW(HKEY_CURRENT_USER, kKey, 0, nullptr, REG_OPTION_VOLATILE, KEY_ALL_ACCESS, nullptr,
                          &machine_, nullptr);
    }
    ~ListOfPorts() override
    {
        ::RegCloseKey(machine_);
        ::RegDeleteTreeW(HKEY_CURRENT_USER, kKey);
    }
    ListOfPorts(const ListOfPorts&) = delete;
    ListOfPorts& operator=(const ListOfPorts&) = delete;

    void add(const wchar_t* value, DWORD type, const std::wstring& data) const
    {
        HKEY list = nullptr;
        ::RegCreateKeyExW(machine_, L"Hardware\\Devicemap\\SerialComm", 0, nullptr, REG_OPTION_VOLATILE,
                          KEY_ALL_ACCESS, nullptr, &list, nullptr);
        const auto* bytes = reinterpret_cast<const BYTE*>(data.c_str());
        EXPECT_EQ(::RegSetValueExW(list, value, 0, type, bytes,
                                   static_cast<DWORD>((data.size() + 1) * sizeof(wchar_t))),
                  ERROR_SUCCESS);
        ::RegCloseKey(list);
    }

    std::vector<std::wstring> names() const
    {
        std::vector<std::wstring> found;
        for (const auto& port : comPorts(machine_))
            found.push_back(port.name);
        return found;
    }

    static constexpr auto kKey = L"Software\\QuorvelTest";
    HKEY machine_ = nullptr;
};

TEST_F(ListOfPorts, IsEmptyWithoutTheKey) { EXPECT_THAT(comPorts(machine_), IsEmpty()); }

TEST_F(ListOfPorts, HasTheTextsInTheOrderOfTheRegistry)
{
    add(L"\\Device\\VCP1", REG_SZ, L"COM12");
    add(L"\\Device\\VCP0", REG_DWORD, L"1");
    add(L"\\Device\\Serial0", REG_SZ, L"COM3");
    add(L"\\Device\\com0com10", REG_SZ, L"CNCA0");
    const auto found = names();
    EXPECT_THAT(found, ::testing::UnorderedElementsAre(L"COM12", L"COM3", L"CNCA0"));

    std::vector<std::wstring> order;
    HKEY list = nullptr;
    ASSERT_EQ(::RegOpenKeyExW(machine_, L"Hardware\\Devicemap\\SerialComm", 0, KEY_READ, &list),
              ERROR_SUCCESS);
    wchar_t value[100];
    BYTE data[100];
    for (DWORD i = 0;; ++i) {
        DWORD size = 100;
        DWORD type = 0;
        DWORD bytes = sizeof data;
        if (::RegEnumValueW(list, i, value, &size, nullptr, &type, data, &bytes) != ERROR_SUCCESS) break;
        if (type == REG_SZ) order.emplace_back(reinterpret_cast<const wchar_t*>(data));
    }
    ::RegCloseKey(list);
    EXPECT_EQ(found, order);
}

TEST_F(ListOfPorts, NumberIsWhatStandsBehindThreeCharacters)
{
    add(L"a", REG_SZ, L"COM12");
    EXPECT_EQ(comPorts(machine_).front().number, 12);
    add(L"a", REG_SZ, L"CNCA0");
    EXPECT_EQ(comPorts(machine_).front().number, 0);
    add(L"a", REG_SZ, L"\u4e32\u53e3\u4e327");
    EXPECT_EQ(comPorts(machine_).front().number, 7);
}

TEST_F(ListOfPorts, HasThePortOfTheBus)
{
    EXPECT_THAT(names(), IsEmpty());
    std::vector<std::wstring> machines;
    for (const auto& port : comPorts())
        machines.push_back(port.name);
    EXPECT_THAT(machines, ::testing::Contains(portName()));
}

} // namespace
} // namespace quorvel::link
