#include "BaseClasses/CAMThread.h"

#include "support/directshow/Gate.h"

#include <gtest/gtest.h>
#include <windows.h>

// Threads that are ended by force never come back to what they had begun, as all threads but one when the
// process ends.

namespace {

constexpr DWORD kFailed = static_cast<DWORD>(E_FAIL);

/// A worker that takes one command and then waits for something that never comes.
class StuckWorker final : public CAMThread {
public:
    ~StuckWorker() override { Close(); }

    Gate hasCommand;

    [[nodiscard]] HANDLE Thread() const { return m_hThread; }
    [[nodiscard]] bool HasEnded() { return HasThreadEnded() != FALSE; }

private:
    DWORD ThreadProc() override
    {
        GetRequest();
        hasCommand.Pass();
        ::Sleep(INFINITE);
        return 0;
    }
};

DWORD WINAPI EndWhenItHasACommand(LPVOID worker)
{
    auto& stuck = *static_cast<StuckWorker*>(worker);
    const bool hasCommand = stuck.hasCommand.WaitFor();
    return hasCommand && ::TerminateThread(stuck.Thread(), 0) ? 1 : 0;
}

/// Sends a command whose worker is ended before it replies.
/// @return  what the call gave
DWORD CallAndEnd(StuckWorker& worker)
{
    const HANDLE other = ::CreateThread(nullptr, 0, &EndWhenItHasACommand, &worker, 0, nullptr);
    const DWORD reply = worker.CallWorker(1);
    DWORD isEnded = 0;
    ::WaitForSingleObject(other, INFINITE);
    ::GetExitCodeThread(other, &isEnded);
    ::CloseHandle(other);
    EXPECT_EQ(isEnded, 1u) << "the worker was not ended by the test";
    return reply;
}

TEST(EndedThreadTest, ACallFailsWhenItsWorkerIsEndedByForce)
{
    StuckWorker worker;
    ASSERT_TRUE(worker.Create());

    EXPECT_EQ(CallAndEnd(worker), kFailed);
}

TEST(EndedThreadTest, ACallFailsWhenItsWorkerWasEndedByForceBefore)
{
    StuckWorker worker;
    ASSERT_TRUE(worker.Create());
    CallAndEnd(worker);

    EXPECT_EQ(worker.CallWorker(2), kFailed);
}

TEST(EndedThreadTest, AWorkerThatWasEndedByForceCountsAsEndedAndCanBeClosed)
{
    StuckWorker worker;
    ASSERT_TRUE(worker.Create());
    EXPECT_FALSE(worker.HasEnded());
    CallAndEnd(worker);

    EXPECT_TRUE(worker.HasEnded());
    worker.Close();
    EXPECT_FALSE(worker.ThreadExists());
}

} // namespace
