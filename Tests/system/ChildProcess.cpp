#include "system/ChildProcess.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cstddef>
#include <utility>

namespace {

constexpr DWORD kReadBytes = 4096; // chosen: what is read at once

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

/// A pipe whose reading end can be waited for together with something else, which the plain kind cannot.
struct OutputPipe {
    HANDLE readEnd = INVALID_HANDLE_VALUE;  // overlapped, not inherited
    HANDLE writeEnd = INVALID_HANDLE_VALUE; // may be inherited
};

OutputPipe CreateOutputPipe()
{
    static std::atomic<unsigned> count = 0;
    const std::wstring name =
        L"\\\\.\\pipe\\vx-test-" + std::to_wstring(::GetCurrentProcessId()) + L"-" + std::to_wstring(count++);
    OutputPipe pipe;
    pipe.readEnd = ::CreateNamedPipeW(
        name.c_str(), PIPE_ACCESS_INBOUND | FILE_FLAG_OVERLAPPED | FILE_FLAG_FIRST_PIPE_INSTANCE,
        PIPE_TYPE_BYTE | PIPE_REJECT_REMOTE_CLIENTS, 1, kReadBytes, kReadBytes, 0, nullptr);
    SECURITY_ATTRIBUTES inherited{sizeof(SECURITY_ATTRIBUTES), nullptr, TRUE};
    pipe.writeEnd = ::CreateFileW(name.c_str(), GENERIC_WRITE | SYNCHRONIZE, 0, &inherited, OPEN_EXISTING,
                                  FILE_ATTRIBUTE_NORMAL, nullptr);
    EXPECT_NE(pipe.readEnd, INVALID_HANDLE_VALUE);
    EXPECT_NE(pipe.writeEnd, INVALID_HANDLE_VALUE);
    return pipe;
}

/// Names the one handle that a new process inherits; without it that would be every handle that can be.
class OneInheritedHandle {
public:
    explicit OneInheritedHandle(HANDLE handle) : m_handle(handle)
    {
        SIZE_T bytes = 0;
        ::InitializeProcThreadAttributeList(nullptr, 1, 0, &bytes);
        m_memory.resize(bytes);
        EXPECT_TRUE(::InitializeProcThreadAttributeList(List(), 1, 0, &bytes));
        EXPECT_TRUE(::UpdateProcThreadAttribute(List(), 0, PROC_THREAD_ATTRIBUTE_HANDLE_LIST, &m_handle,
                                                sizeof(m_handle), nullptr, nullptr));
    }
    ~OneInheritedHandle() { ::DeleteProcThreadAttributeList(List()); }
    OneInheritedHandle(const OneInheritedHandle&) = delete;
    OneInheritedHandle& operator=(const OneInheritedHandle&) = delete;

    [[nodiscard]] LPPROC_THREAD_ATTRIBUTE_LIST List()
    {
        return reinterpret_cast<LPPROC_THREAD_ATTRIBUTE_LIST>(m_memory.data());
    }

private:
    HANDLE m_handle; // borrowed; the list refers to this member
    std::vector<std::byte> m_memory;
};

} // namespace

ChildProcess::ChildProcess(const std::filesystem::path& program, const std::vector<std::wstring>& arguments)
{
    std::wstring commandLine = Quoted(program.wstring());
    for (const std::wstring& argument : arguments)
        commandLine += L" " + Quoted(argument);

    const OutputPipe pipe = CreateOutputPipe();
    m_readEnd = pipe.readEnd;
    Start(program, std::move(commandLine), pipe.writeEnd);
    ::CloseHandle(pipe.writeEnd);
    m_reader = std::thread([this] { Collect(); });
}

ChildProcess::~ChildProcess()
{
    Kill();
    m_reader.join(); // it ends with the program
    ::CloseHandle(m_readEnd);
    if (m_process != nullptr)
        ::CloseHandle(m_process);
}

void ChildProcess::Start(const std::filesystem::path& program, std::wstring commandLine, HANDLE output)
{
    OneInheritedHandle inherited(output);
    STARTUPINFOEXW start{};
    start.StartupInfo.cb = sizeof(start);
    start.StartupInfo.dwFlags = STARTF_USESTDHANDLES;
    start.StartupInfo.hStdOutput = output;
    start.StartupInfo.hStdError = output;
    start.lpAttributeList = inherited.List();
    PROCESS_INFORMATION process{};
    const BOOL isStarted =
        ::CreateProcessW(program.c_str(), commandLine.data(), nullptr, nullptr, TRUE,
                         EXTENDED_STARTUPINFO_PRESENT, nullptr, nullptr, &start.StartupInfo, &process);
    EXPECT_TRUE(isStarted) << program << " cannot be started: error " << ::GetLastError();
    if (isStarted) {
        ::CloseHandle(process.hThread);
        m_process = process.hProcess;
    }
}

void ChildProcess::Collect()
{
    const HANDLE isRead = ::CreateEventW(nullptr, TRUE, FALSE, nullptr);
    std::array<char, kReadBytes> part{};
    for (bool isRunning = m_process != nullptr; isRunning;) {
        OVERLAPPED reading{};
        reading.hEvent = isRead;
        if (!::ReadFile(m_readEnd, part.data(), part.size(), nullptr, &reading) &&
            ::GetLastError() != ERROR_IO_PENDING)
            break; // nobody is left who could print
        const std::array<HANDLE, 2> either{isRead, m_process};
        if (::WaitForMultipleObjects(either.size(), either.data(), FALSE, INFINITE) != WAIT_OBJECT_0) {
            isRunning = false; // whoever has inherited its output may go on
            ::CancelIoEx(m_readEnd, &reading);
        }
        DWORD length = 0;
        if (::GetOverlappedResult(m_readEnd, &reading, &length, TRUE))
            Append({part.data(), length});
    }
    if (m_process != nullptr)
        ::WaitForSingleObject(m_process, INFINITE); // it may run on with its output closed; Kill ends it
    CollectWhatIsThere(isRead);
    ::CloseHandle(isRead);
    const std::lock_guard lock(m_mutex);
    m_isEnded = true;
    m_changed.notify_all();
}

void ChildProcess::CollectWhatIsThere(HANDLE isRead)
{
    std::array<char, kReadBytes> part{};
    DWORD available = 0;
    while (::PeekNamedPipe(m_readEnd, nullptr, 0, nullptr, &available, nullptr) && available > 0) {
        OVERLAPPED reading{};
        reading.hEvent = isRead;
        DWORD length = 0;
        // Does not wait: there is something.
        ::ReadFile(m_readEnd, part.data(), std::min<DWORD>(available, part.size()), nullptr, &reading);
        if (!::GetOverlappedResult(m_readEnd, &reading, &length, TRUE))
            return;
        Append({part.data(), length});
    }
}

void ChildProcess::Append(std::string_view text)
{
    const std::lock_guard lock(m_mutex);
    m_output.append(text);
    m_changed.notify_all();
}

bool ChildProcess::WaitForOutput(const std::string& text, Duration patience)
{
    std::unique_lock lock(m_mutex);
    const auto isPrinted = [&] { return m_output.find(text) != std::string::npos; };
    m_changed.wait_for(lock, patience, [&] { return m_isEnded || isPrinted(); });
    return isPrinted();
}

std::optional<DWORD> ChildProcess::WaitForEnd(Duration patience)
{
    std::unique_lock lock(m_mutex);
    DWORD exitCode = 0;
    if (!m_changed.wait_for(lock, patience, [&] { return m_isEnded; }) ||
        !::GetExitCodeProcess(m_process, &exitCode))
        return std::nullopt;
    return exitCode;
}

void ChildProcess::Kill()
{
    constexpr UINT kExitCode = 99; // chosen: no program of ours ends with it by itself
    if (m_process == nullptr)
        return;
    ::TerminateProcess(m_process, kExitCode);   // fails when it has ended already
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
    ChildProcess process(program, arguments);
    const std::optional<DWORD> exitCode = process.WaitForEnd(patience);
    return {exitCode, process.Output()};
}
