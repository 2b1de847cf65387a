#pragma once

#include <string>

#include <gtest/gtest.h>
#include <windows.h>

namespace quorvel::test {

/// This test program once more, running one disabled test; killed with this object at the latest. Windows only.
class ChildProgram {
public:
    /// @param test  "Suite.DISABLED_Name".
    /// @param path  what the child reads as the environment variable QUORVEL_CHILD.
    ChildProgram(const std::wstring& test, const std::wstring& path)
    {
        wchar_t program[MAX_PATH];
        ::GetModuleFileNameW(nullptr, program, MAX_PATH);
        std::wstring line = L"\"" + std::wstring(program) +
                            L"\" --gtest_brief=1 --gtest_also_run_disabled_tests" + L" --gtest_filter=" +
                            test;
        ::SetEnvironmentVariableW(L"QUORVEL_CHILD", path.c_str());
        STARTUPINFOW start{};
        start.cb = sizeof start;
        EXPECT_NE(::CreateProcessW(program, line.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &start,
                                   &process_),
                  0)
            << ::GetLastError();
    }
    ~ChildProgram()
    {
        kill();
        ::CloseHandle(process_.hThread);
        ::CloseHandle(process_.hProcess);
    }
    ChildProgram(const ChildProgram&) = delete;
    ChildProgram& operator=(const ChildProgram&) = delete;

    /// Ends it in the middle of whatever it does.
    void kill()
    {
        ::TerminateProcess(process_.hProcess, 9);
        ::WaitForSingleObject(process_.hProcess, 10'000);
    }

    bool runs() const { return ::WaitForSingleObject(process_.hProcess, 0) == WAIT_TIMEOUT; }

    /// What the parent gave, read by the child.
    static std::wstring path()
    {
        wchar_t text[MAX_PATH] = L"";
        ::GetEnvironmentVariableW(L"QUORVEL_CHILD", text, MAX_PATH);
        return text;
    }

private:
    PROCESS_INFORMATION process_{};
};

/// A file as it is while another program has it open.
class OpenElsewhere {
public:
    /// @param share  what that program lets others do (FILE_SHARE_...).
    OpenElsewhere(const std::wstring& path, DWORD access, DWORD share)
        : handle_(::CreateFileW(path.c_str(), access, share, nullptr, OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL,
                                nullptr))
    {
        EXPECT_NE(handle_, INVALID_HANDLE_VALUE) << ::GetLastError();
    }
    ~OpenElsewhere() { ::CloseHandle(handle_); }
    OpenElsewhere(const OpenElsewhere&) = delete;
    OpenElsewhere& operator=(const OpenElsewhere&) = delete;

private:
    HANDLE handle_;
};

} // namespace quorvel::test
