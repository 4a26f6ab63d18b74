#include "system/ChildProcess.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>

namespace {

/// Quotes an argument so that the program's start-up code finds it as it was.
std::wstring Quoted(const std::wstring& argument)
{
    std::wstring text = L"\"";
    std::size_t backslashes = 0;
    for (const wchar_t c : argument) {
        if (c == L'"')
            text.append(backslashes + 1, L'\\'); // those before a quote count double, and one for the quote
        backslashes = c == L'\\' ? backslashes + 1 : 0;
        text.push_back(c);
    }
    return text.append(backslashes, L'\\') + L"\"";
}

DWORD Milliseconds(ChildProcess::Duration duration)
{
    const auto ms = std::chrono::duration_cast<std::chrono::milliseconds>(duration).count();
    return static_cast<DWORD>(std::clamp<long long>(ms, 0, INFINITE - 1));
}

} // namespace

ChildProcess::ChildProcess(const std::filesystem::path& program, const std::vector<std::wstring>& arguments)
    : m_grown(::CreateEventW(nullptr, FALSE, FALSE, nullptr))
{
    std::wstring commandLine = Quoted(program.wstring());
    for (const std::wstring& argument : arguments)
        commandLine += L" " + Quoted(argument);

    SECURITY_ATTRIBUTES inherited{sizeof(SECURITY_ATTRIBUTES), nullptr, TRUE};
    HANDLE writeEnd = nullptr;
    EXPECT_TRUE(::CreatePipe(&m_readEnd, &writeEnd, &inherited, 0));
    ::SetHandleInformation(m_readEnd, HANDLE_FLAG_INHERIT, 0);
    STARTUPINFOW start{};
    start.cb = sizeof(start);
    start.dwFlags = STARTF_USESTDHANDLES;
    start.hStdOutput = writeEnd;
    start.hStdError = writeEnd;
    PROCESS_INFORMATION process{};
    const BOOL isStarted = ::CreateProcessW(program.c_str(), commandLine.data(), nullptr, nullptr, TRUE, 0,
                                            nullptr, nullptr, &start, &process);
    EXPECT_TRUE(isStarted) << program << " cannot be started: error " << ::GetLastError();
    ::CloseHandle(writeEnd);
    if (isStarted) {
        ::CloseHandle(process.hThread);
        m_process = process.hProcess;
    }
    m_reader = std::thread([this] { Collect(); });
}

ChildProcess::~ChildProcess()
{
    Kill();
    m_reader.join(); // the pipe ended with the program
    ::CloseHandle(m_readEnd);
    ::CloseHandle(m_grown);
    if (m_process != nullptr)
        ::CloseHandle(m_process);
}

void ChildProcess::Collect()
{
    std::array<char, 4096> part{};
    DWORD length = 0;
    while (::ReadFile(m_readEnd, part.data(), part.size(), &length, nullptr) && length > 0) {
        const std::lock_guard lock(m_mutex);
        m_output.append(part.data(), length);
        ::SetEvent(m_grown);
    }
    const std::lock_guard lock(m_mutex);
    m_isEnded = true;
    ::SetEvent(m_grown);
}

bool ChildProcess::WaitForOutput(const std::string& text, Duration patience)
{
    const auto deadline = std::chrono::steady_clock::now() + patience;
    for (;;) {
        {
            const std::lock_guard lock(m_mutex);
            if (m_output.find(text) != std::string::npos)
                return true;
            if (m_isEnded)
                return false;
        }
        const auto left = deadline - std::chrono::steady_clock::now();
        if (left <= Duration::zero() || ::WaitForSingleObject(m_grown, Milliseconds(left)) != WAIT_OBJECT_0)
            return false;
    }
}

std::optional<DWORD> ChildProcess::WaitForEnd(Duration patience)
{
    DWORD exitCode = 0;
    if (m_process == nullptr || ::WaitForSingleObject(m_process, Milliseconds(patience)) != WAIT_OBJECT_0 ||
        !::GetExitCodeProcess(m_process, &exitCode))
        return std::nullopt;
    return exitCode;
}

void ChildProcess::Kill()
{
    constexpr UINT kExitCode = 99; // chosen: no program of ours ends with it by itself
    if (m_process == nullptr || WaitForEnd(Duration::zero()))
        return;
    ::TerminateProcess(m_process, kExitCode);
    ::WaitForSingleObject(m_process, INFINITE); // the system ends it; nothing in it can resist
}

std::string ChildProcess::Output() const
{
    const std::lock_guard lock(m_mutex);
    return m_output;
}

ProgramRun RunProgram(const std::filesystem::path& program, const std::vector<std::wstring>& arguments,
                      ChildProcess::Duration patience)
{
    ProgramRun run;
    ChildProcess process(program, arguments);
    run.exitCode = process.WaitForEnd(patience);
    if (run.exitCode) // what it printed last may still be in the pipe
        static_cast<void>(process.WaitForOutput("\x1F never printed", patience));
    run.output = process.Output();
    return run;
}
