#pragma once

#include <windows.h>

#include <chrono>
#include <condition_variable>
#include <filesystem>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

/// A program that a test starts, reads and ends.
///
/// Owner:  the test; the program does not outlive it.
/// Thread: the test's; what the program prints is collected by a thread of its own, which ends with the
///         program, whoever has inherited the program's output.
class ChildProcess final {
public:
    using Duration = std::chrono::steady_clock::duration;

    /// Starts a program; a failure is a failure of the test.
    /// @param arguments  each one argument, whatever characters it has
    ChildProcess(const std::filesystem::path& program, const std::vector<std::wstring>& arguments);
    /// Ends the program, if it still runs.
    ~ChildProcess();
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    /// Waits until the program has printed a text.
    /// @return  false when it ended without, or the time is over
    [[nodiscard]] bool WaitForOutput(const std::string& text, Duration patience);

    /// Waits until the program ends by itself; what it printed is complete then.
    /// @return  its exit code; nothing when it still runs
    [[nodiscard]] std::optional<DWORD> WaitForEnd(Duration patience);

    /// Ends the program at once, as if it had crashed.
    void Kill();

    /// Everything printed until now, both streams, in UTF-8.
    [[nodiscard]] std::string Output() const;

private:
    void Start(const std::filesystem::path& program, std::wstring commandLine, HANDLE output);
    void Collect();
    void CollectWhatIsThere(HANDLE isRead);
    void Append(std::string_view text);

    HANDLE m_process = nullptr;
    HANDLE m_readEnd = INVALID_HANDLE_VALUE; // overlapped
    mutable std::mutex m_mutex;
    std::condition_variable m_changed; // with m_mutex: there is more output, or there will be none
    std::string m_output;              // guarded by m_mutex
    bool m_isEnded = false;            // guarded by m_mutex: the program ended, its output is complete
    std::thread m_reader;
};

/// One program from start to end.
struct ProgramRun {
    std::optional<DWORD> exitCode; ///< nothing when it did not end in time
    std::string output;
};

[[nodiscard]] ProgramRun RunProgram(const std::filesystem::path& program,
                                    const std::vector<std::wstring>& arguments,
                                    ChildProcess::Duration patience);
