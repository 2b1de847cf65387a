#include "tests/sim/process.h"

#include <arpa/inet.h>
#include <chrono>
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <thread>

namespace quorvelsim {
namespace {

using testing::HasSubstr;
using testing::StartsWith;
using namespace std::chrono_literals;

constexpr uid_t kNobody = 65534;

/// Waits until `condition` holds, at most five seconds.
template<typename Condition>
bool eventually(Condition condition)
{
    for (int i = 0; i < 500; ++i) {
        if (condition()) return true;
        std::this_thread::sleep_for(10ms);
    }
    return false;
}

TEST(Process, AnswersOverATerminalWithoutEcho)
{
    const Process sim({"--fast"});
    ASSERT_THAT(sim.port(), StartsWith("/dev/pts/"));
    const Descriptor client(::open(sim.port().c_str(), O_RDWR | O_NOCTTY)); // no settings: it is raw already
    ASSERT_TRUE(client.isOpen());
    say(client.get(), ":FF01FF");
    EXPECT_EQ(listen(client.get(), 25), ":05\r\n:0C\r\n:21\r\n:64\r\n:F9\r\n");
    say(client.get(), ":0572FF");
    EXPECT_EQ(listen(client.get()), ":0572+0.00000FF\r\n");
}

TEST(Process, EndsWhenItsInputCloses)
{
    Process sim({});
    sim.closeInput();
    EXPECT_EQ(sim.waitForEnd(), 0);
}

TEST(Process, EndsOnSignals)
{
    for (const int signal : {SIGTERM, SIGINT}) {
        Process sim({"--no-control"});
        sim.closeInput();
        ASSERT_FALSE(sim.port().empty());
        ::kill(sim.pid(), signal);
        EXPECT_EQ(sim.waitForEnd(), 0);
    }
}

TEST(Process, WrongUsageEndsWithStatus2)
{
    EXPECT_EQ(Process({"--readout", "5:A", "--ring", "6:10,0,0"}).waitForEnd(), 2);
    EXPECT_EQ(Process({"--tcp", "nowhere"}).waitForEnd(), 2);
    EXPECT_EQ(Process({"--tcp", "127.0.0.1:99999"}).waitForEnd(), 2);
}

/// Seconds until all of 249 readouts have answered a search.
double searchSeconds(std::vector<std::string> options)
{
    options.insert(options.end(), {"--readout", "1-249:A"});
    const Process sim(options);
    const auto client = openRaw(sim.port());
    const auto start = seconds();
    say(client.get(), ":FF01FF");
    EXPECT_EQ(listen(client.get(), std::size_t{249} * 5, 10).size(), 249U * 5);
    return seconds() - start;
}

// That it is not slower either is tested without real time (bus_test.cpp).
TEST(Process, FindsAll249ReadoutsAtThePaceOf9600BaudOrAtOnceWhenFast)
{
    constexpr double kOnTheWire = (8 + 249 * 5 + 248) * 10.0 / 9600; // the answers, and pauses between them
    const auto paced = searchSeconds({});
    EXPECT_GE(paced, kOnTheWire);
    EXPECT_LT(searchSeconds({"--fast"}), paced);
}

TEST(Process, ServesClientsThatComeAndGo)
{
    Process sim({"--fast"});
    for (int i = 0; i < 5; ++i) {
        const auto client = openRaw(sim.port());
        ASSERT_TRUE(client.isOpen());
        say(client.get(), ":0572FF");
        EXPECT_EQ(listen(client.get(), 17), ":0572+0.00000FF\r\n");
    }
}

TEST(Process, AnAnswerThatNobodyWaitsForIsLost)
{
    Process sim({"--fault", "late=0.3@72"});
    {
        const auto client = openRaw(sim.port());
        say(client.get(), ":0572FF");
        ASSERT_TRUE(eventually([&] { return sim.control("frames").find("0572FF") != std::string::npos; }));
    }
    std::this_thread::sleep_for(500ms);
    const auto client = openRaw(sim.port());
    EXPECT_EQ(listen(client.get()), "");
    say(client.get(), ":0574FF");
    EXPECT_EQ(listen(client.get()), ":0574+0.00000FF\r\n");
}

/// Opens the terminal for itself alone as `user`, and is killed.
void killedHolder(const std::string& path, uid_t user)
{
    const auto child = ::fork();
    if (child == 0) {
        if (user != ::getuid() && ::setuid(user) != 0) ::_exit(1);
        const int terminal = ::open(path.c_str(), O_RDWR | O_NOCTTY);
        if (terminal < 0 || ::ioctl(terminal, TIOCEXCL) != 0) ::_exit(1);
        ::kill(::getpid(), SIGKILL);
    }
    int status = 0;
    ::waitpid(child, &status, 0);
    ASSERT_TRUE(WIFSIGNALED(status)) << "the holder could not lock the terminal";
}

/// Exit status of a client that opens the terminal as `user`: 0 opened, 1 refused.
int opensAs(const std::string& path, uid_t user)
{
    const auto child = ::fork();
    if (child == 0) {
        if (user != ::getuid() && ::setuid(user) != 0) ::_exit(2);
        ::_exit(::open(path.c_str(), O_RDWR | O_NOCTTY) >= 0 ? 0 : 1);
    }
    int status = 0;
    ::waitpid(child, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

// Root is let into a locked terminal, so as root these two run as somebody else.
const uid_t kUser = ::getuid() == 0 ? kNobody : ::getuid();

TEST(Process, ALockDiesWithTheClientThatHeldIt)
{
    Process sim({"--fast"}, kUser);
    ASSERT_THAT(sim.port(), StartsWith("/dev/pts/"));
    for (int i = 0; i < 3; ++i) {
        killedHolder(sim.port(), kUser);
        EXPECT_TRUE(eventually([&] { return opensAs(sim.port(), kUser) == 0; }));
        // who locks within the moment in which the bus looks whether the last client has gone is not noticed
        std::this_thread::sleep_for(100ms);
    }
    const auto client = openRaw(sim.port());
    say(client.get(), ":0572FF");
    EXPECT_EQ(listen(client.get(), 17), ":0572+0.00000FF\r\n");
}

TEST(Process, ALockHoldsWhileItsClientLives)
{
    Process sim({"--fast"}, kUser);
    const auto client = openRaw(sim.port());
    ASSERT_EQ(::ioctl(client.get(), TIOCEXCL), 0);
    const Descriptor second(::dup(client.get()));
    EXPECT_EQ(opensAs(sim.port(), kUser), 1);
    if (::getuid() == 0) openRaw(sim.port()); // let in and gone again: no reason to unlock
    say(client.get(), ":0572FF");
    EXPECT_EQ(listen(client.get(), 17), ":0572+0.00000FF\r\n");
    EXPECT_EQ(opensAs(sim.port(), kUser), 1);
}

TEST(Process, SleepsWhileThereIsNothingToDo)
{
    Process sim({});
    const auto atRest = [&] {
        const auto before = sim.processorSeconds();
        std::this_thread::sleep_for(1s);
        return sim.processorSeconds() - before;
    };
    EXPECT_LE(atRest(), 0.01) << "before a client came";
    {
        const auto client = openRaw(sim.port());
        EXPECT_LE(atRest(), 0.01) << "with a client";
    }
    EXPECT_LE(atRest(), 0.01) << "after the client went";
}

TEST(Process, UnplugsAndIsPluggedInAgain)
{
    Process sim({"--fast"});
    auto client = openRaw(sim.port());
    EXPECT_EQ(sim.control("unplug"), R"({"ok":true})");
    char character = 0;
    EXPECT_LE(::read(client.get(), &character, 1), 0);
    EXPECT_LT(::write(client.get(), "x", 1), 0);
    const auto answer = sim.control("plug");
    ASSERT_THAT(answer, HasSubstr("/dev/pts/"));
    const auto begin = answer.find("/dev");
    client = openRaw(answer.substr(begin, answer.find('"', begin) - begin));
    say(client.get(), ":0572FF");
    EXPECT_EQ(listen(client.get(), 17), ":0572+0.00000FF\r\n");
}

TEST(Process, AHangUpTakesTheTerminalAway)
{
    Process sim({"--fault", "hangup@72"});
    const auto client = openRaw(sim.port());
    say(client.get(), ":0572FF");
    EXPECT_TRUE(eventually([&] { return ::write(client.get(), "x", 1) < 0; }));
    EXPECT_EQ(sim.control("device"), R"({"device":null})");
}

TEST(Process, AClientThatDoesNotReadCostsNothing)
{
    Process sim({"--fast"});
    const auto client = openRaw(sim.port());
    for (int i = 0; i < 30; ++i)
        say(client.get(), ":0565FF");
    ASSERT_TRUE(
        eventually([&] { return sim.control("state 5").find("\"address\":5") != std::string::npos; }));
    const auto before = sim.processorSeconds();
    std::this_thread::sleep_for(500ms);
    EXPECT_LE(sim.processorSeconds() - before, 0.02);
    EXPECT_THAT(listen(client.get(), 14913), StartsWith(":05651D1A"));
}

Descriptor connectTo(const std::string& port)
{
    Descriptor client(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<std::uint16_t>(std::stoi(port.substr(port.rfind(':') + 1))));
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    const auto* generic = static_cast<const sockaddr*>(static_cast<const void*>(&address));
    EXPECT_EQ(::connect(client.get(), generic, sizeof address), 0);
    return client;
}

TEST(Process, AnswersOverTcpOneClientAtATime)
{
    Process sim({"--fast", "--tcp", "127.0.0.1:0"});
    ASSERT_THAT(sim.port(), StartsWith("tcp:127.0.0.1:"));
    {
        const auto client = connectTo(sim.port());
        say(client.get(), ":0572FF");
        EXPECT_EQ(listen(client.get(), 17), ":0572+0.00000FF\r\n");
        const auto second = connectTo(sim.port());
        char character = 0;
        EXPECT_LE(::recv(second.get(), &character, 1, 0), 0);
        say(client.get(), ":0574FF");
        EXPECT_EQ(listen(client.get(), 17), ":0574+0.00000FF\r\n");
    }
    const auto next = connectTo(sim.port());
    say(next.get(), ":0572FF");
    EXPECT_EQ(listen(next.get(), 17), ":0572+0.00000FF\r\n");
    EXPECT_EQ(sim.control("unplug"), R"({"ok":true})");
    char character = 0;
    EXPECT_LE(::recv(next.get(), &character, 1, 0), 0);
    EXPECT_EQ(sim.control("plug"), R"({"device":")" + sim.port() + "\"}");
}

TEST(Process, ATcpClientThatHasGoneMakesRoomForTheNextWhateverItHadWritten)
{
    Process sim({"--fast", "--tcp", "127.0.0.1:0"});
    auto client = connectTo(sim.port());
    say(client.get(), ":0572FF");
    EXPECT_EQ(listen(client.get(), 17), ":0572+0.00000FF\r\n");
    ASSERT_EQ(::kill(sim.pid(), SIGSTOP), 0);
    say(client.get(), std::string(2000, 'x'));
    client.close();
    const auto next = connectTo(sim.port());
    ASSERT_EQ(::kill(sim.pid(), SIGCONT), 0);
    say(next.get(), ":0574FF");
    EXPECT_EQ(listen(next.get(), 17), ":0574+0.00000FF\r\n");
}

/// Writes what the other side takes, for that long.
std::size_t flood(int descriptor, const std::string& command, double duration)
{
    std::string many;
    while (many.size() < 100'000)
        many += command + "\r\n";
    std::size_t written = 0;
    for (const auto end = seconds() + duration; seconds() < end;) {
        const auto count = ::send(descriptor, many.data(), many.size(), MSG_DONTWAIT | MSG_NOSIGNAL);
        if (count > 0) written += static_cast<std::size_t>(count);
        if (count < 0) std::this_thread::sleep_for(1ms);
    }
    return written;
}

TEST(Process, AClientThatFloodsCostsNoMemory)
{
    for (const bool fast : {true, false}) {
        std::vector<std::string> options{"--tcp", "127.0.0.1:0"};
        if (fast) options.emplace_back("--fast");
        Process sim(options);
        const auto client = connectTo(sim.port());
        const auto before = sim.residentBytes();
        EXPECT_GT(flood(client.get(), ":0565FF", 1), 10'000U);
        EXPECT_LT(sim.residentBytes(), before + 40'000'000) << fast;
        EXPECT_THAT(sim.control("state 5"), HasSubstr("\"address\":5"))
            << "the control lines are not forgotten";
    }
}

TEST(Process, AControlLineThatIsTooLongDoesNothingWithItsEnd)
{
    Process sim({"--fast"});
    for (int i = 0; i < 20; ++i)
        sim.write(std::string(5000, ' ')); // more than is kept of a line
    EXPECT_THAT(sim.control("unplug"), HasSubstr("error"));
    EXPECT_THAT(sim.control("device"), HasSubstr("/dev/pts/")) << "and the next line is one again";
}

} // namespace
} // namespace quorvelsim
