#pragma once

#include "sim/descriptor.h"

#include <chrono>
#include <csignal>
#include <ctime>
#include <fcntl.h>
#include <fstream>
#include <gtest/gtest.h>
#include <poll.h>
#include <string>
#include <sys/wait.h>
#include <termios.h>
#include <thread>
#include <vector>

/// A quorvel-sim process, and the ends of its terminal, for tests.
namespace quorvelsim {

inline double seconds()
{
    std::timespec time{};
    ::clock_gettime(CLOCK_MONOTONIC, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) / 1e9;
}

/// What arrives until `quiet` seconds pass without a character, or `count` characters are there.
inline std::string listen(int descriptor, std::size_t count = 1000000, double quiet = 0.3)
{
    std::string all;
    pollfd wait{descriptor, POLLIN, 0};
    while (all.size() < count && ::poll(&wait, 1, static_cast<int>(quiet * 1000)) > 0) {
        char buffer[4096];
        const auto got = ::read(descriptor, buffer, sizeof buffer);
        if (got <= 0) break;
        all.append(buffer, static_cast<std::size_t>(got));
    }
    return all;
}

/// A client that opens a terminal as programs do.
inline Descriptor openRaw(const std::string& path)
{
    Descriptor client(::open(path.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC));
    termios settings{};
    if (client.isOpen() && ::tcgetattr(client.get(), &settings) == 0) {
        ::cfmakeraw(&settings);
        ::tcsetattr(client.get(), TCSANOW, &settings);
    }
    return client;
}

inline void say(int descriptor, const std::string& command)
{
    const auto text = command + "\r\n";
    EXPECT_EQ(::write(descriptor, text.data(), text.size()), static_cast<ssize_t>(text.size()));
}

/// A real quorvel-sim process; ends with the test.
class Process {
public:
    explicit Process(std::vector<std::string> arguments, uid_t user = ::getuid())
    {
        int toChild[2];
        int fromChild[2];
        if (::pipe2(toChild, O_CLOEXEC) != 0 || ::pipe2(fromChild, O_CLOEXEC) != 0) return;
        const Descriptor program(::open(QUORVEL_SIM, O_RDONLY)); // opened here: another user may not reach it
        arguments.insert(arguments.begin(), "quorvel-sim");
        std::vector<char*> argv;
        argv.reserve(arguments.size() + 1);
        for (auto& argument : arguments)
            argv.push_back(argument.data());
        argv.push_back(nullptr);
        pid_ = ::fork();
        if (pid_ == 0) {
            if (user != ::getuid() && ::setuid(user) != 0) ::_exit(126);
            ::dup2(toChild[0], STDIN_FILENO);
            ::dup2(fromChild[1], STDOUT_FILENO);
            ::fexecve(program.get(), argv.data(), environ);
            ::_exit(127);
        }
        ::close(toChild[0]);
        ::close(fromChild[1]);
        input_ = Descriptor(toChild[1]);
        output_ = Descriptor(fromChild[0]);
        port_ = line();
    }
    Process(const Process&) = delete;
    Process& operator=(const Process&) = delete;
    ~Process()
    {
        if (pid_ <= 0) return;
        ::kill(pid_, SIGKILL);
        ::waitpid(pid_, nullptr, 0);
    }

    [[nodiscard]] const std::string& port() const { return port_; }
    [[nodiscard]] pid_t pid() const { return pid_; }

    std::string control(const std::string& text)
    {
        write(text + "\n");
        return line();
    }

    /// Writes to the control channel.
    void write(const std::string& text) const
    {
        EXPECT_EQ(::write(input_.get(), text.data(), text.size()), static_cast<ssize_t>(text.size()));
    }

    void closeInput() { input_.close(); }

    /// The exit status, -1 when it does not end within five seconds or by a signal.
    int waitForEnd()
    {
        for (int i = 0; i < 500; ++i) {
            int status = 0;
            if (::waitpid(pid_, &status, WNOHANG) == pid_) {
                pid_ = -1;
                return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
            }
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        }
        return -1;
    }

    /// Processor time used so far, in seconds; finer than the ticks in which processes are charged.
    [[nodiscard]] double processorSeconds() const
    {
        std::ifstream file("/proc/" + std::to_string(pid_) + "/schedstat");
        double nanoseconds = 0;
        EXPECT_TRUE(file >> nanoseconds) << "the system does not tell";
        return nanoseconds / 1e9;
    }

    /// Memory in use, in bytes.
    [[nodiscard]] std::size_t residentBytes() const
    {
        std::ifstream file("/proc/" + std::to_string(pid_) + "/statm");
        std::size_t whole = 0;
        std::size_t resident = 0;
        file >> whole >> resident;
        return resident * static_cast<std::size_t>(::sysconf(_SC_PAGESIZE));
    }

private:
    std::string line()
    {
        std::string text;
        char character = 0;
        pollfd wait{output_.get(), POLLIN, 0};
        while (::poll(&wait, 1, 10000) > 0 && ::read(output_.get(), &character, 1) == 1 && character != '\n')
            text += character;
        return text;
    }

    pid_t pid_ = -1;
    Descriptor input_;
    Descriptor output_;
    std::string port_;
};

} // namespace quorvelsim
