#include "VxCamera/transport/win/WinThreadPriority.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

namespace transport {
namespace {

int Priority()
{
    return ::GetThreadPriority(::GetCurrentThread());
}

/// What was asked of the class, and by whom.
struct ClassNotes {
    bool isJoining = true;
    std::vector<std::wstring> tasks;
    std::vector<HANDLE> left;
    std::vector<DWORD> threads;
};

/// A class of threads that joins as a test says: Wine's own joins everybody and changes nothing.
///
/// Owner:  the raised priority. Borrows the notes.
/// Thread: one.
class CountingClass final : public IThreadClass {
public:
    explicit CountingClass(ClassNotes& notes) : m_notes(notes) {}

    HANDLE Join(const wchar_t* task) override
    {
        m_notes.tasks.emplace_back(task);
        m_notes.threads.push_back(::GetCurrentThreadId());
        return m_notes.isJoining ? &m_notes : nullptr; // any handle
    }
    void Leave(HANDLE membership) override
    {
        m_notes.left.push_back(membership);
        m_notes.threads.push_back(::GetCurrentThreadId());
    }

private:
    ClassNotes& m_notes;
};

class WinThreadPriorityTest : public testing::Test {
protected:
    std::unique_ptr<IRaisedPriority> Raise()
    {
        return RaiseThreadPriority(std::make_unique<CountingClass>(m_notes));
    }

    const int m_before = Priority();
    ClassNotes m_notes;
};

TEST_F(WinThreadPriorityTest, AThreadIsInTheClassForCaptureUntilItsEnd)
{
    auto raised = Raise();
    ASSERT_NE(raised, nullptr);
    EXPECT_EQ(m_notes.tasks, std::vector<std::wstring>{L"Capture"});
    EXPECT_TRUE(m_notes.left.empty());
    EXPECT_EQ(Priority(), m_before); // the class has its own

    raised.reset();

    EXPECT_EQ(m_notes.left, std::vector<HANDLE>{&m_notes});
    EXPECT_EQ(m_notes.threads, std::vector<DWORD>(2, ::GetCurrentThreadId()));
}

TEST_F(WinThreadPriorityTest, WhereTheClassRefusesTheThreadsOwnPriorityIsHighUntilItsEnd)
{
    m_notes.isJoining = false;
    ASSERT_LT(m_before, THREAD_PRIORITY_HIGHEST);

    auto raised = Raise();
    ASSERT_NE(raised, nullptr);
    EXPECT_EQ(Priority(), THREAD_PRIORITY_HIGHEST);

    raised.reset();

    EXPECT_EQ(Priority(), m_before);
    EXPECT_TRUE(m_notes.left.empty());
}

TEST_F(WinThreadPriorityTest, TheRealSystemRaisesIt)
{
    EXPECT_NE(RaiseThreadPriority(), nullptr);
    EXPECT_EQ(Priority(), m_before);
}

} // namespace
} // namespace transport
