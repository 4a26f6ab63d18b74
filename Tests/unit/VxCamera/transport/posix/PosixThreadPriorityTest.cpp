#include "VxCamera/transport/ThreadPriority.h"

#include "support/Niceness.h"

#include <linux/capability.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <array>
#include <functional>
#include <thread>

namespace transport {
namespace {

/// Runs it on a thread, whose niceness and rights are its own, that goes behind others.
void OnThread(const std::function<void()>& run)
{
    std::thread([&] {
        ASSERT_TRUE(niceness::BeBehind());
        run();
    }).join();
}

/// Takes the right to go before others from the calling thread, and what the process may do without it for as
/// long as this lives.
class WithoutRight final {
public:
    WithoutRight()
    {
        ::getrlimit(RLIMIT_NICE, &m_before);
        const rlimit none{0, m_before.rlim_max};
        m_isTaken = ::setrlimit(RLIMIT_NICE, &none) == 0 && DropCapability();
    }
    ~WithoutRight() { ::setrlimit(RLIMIT_NICE, &m_before); }
    WithoutRight(const WithoutRight&) = delete;
    WithoutRight& operator=(const WithoutRight&) = delete;

    [[nodiscard]] bool IsTaken() const { return m_isTaken; }

private:
    static bool DropCapability()
    {
        __user_cap_header_struct whose{_LINUX_CAPABILITY_VERSION_3, 0};
        std::array<__user_cap_data_struct, 2> rights{};
        if (::syscall(SYS_capget, &whose, rights.data()) != 0)
            return false;
        rights[0].effective &= ~(1U << CAP_SYS_NICE);
        return ::syscall(SYS_capset, &whose, rights.data()) == 0; // of this thread alone
    }

    rlimit m_before{};
    bool m_isTaken = false;
};

TEST(PosixThreadPriorityTest, AThreadGoesBeforeOthersUntilTheEndOfIt)
{
    const bool isPermitted = niceness::MayBe(-10);
    OnThread([&] {
        const int before = niceness::OfThread();

        auto raised = RaiseThreadPriority();
        EXPECT_EQ(raised != nullptr, isPermitted);
        EXPECT_EQ(niceness::OfThread(), isPermitted ? -10 : before);

        raised.reset();
        EXPECT_EQ(niceness::OfThread(), before);
    });
}

TEST(PosixThreadPriorityTest, OtherThreadsStayAsTheyAre)
{
    const id_t other = niceness::CallingThread();
    const int before = niceness::Of(other);
    OnThread([&] {
        const auto raised = RaiseThreadPriority();
        EXPECT_EQ(niceness::Of(other), before);
    });
    EXPECT_EQ(niceness::Of(other), before);
}

TEST(PosixThreadPriorityTest, WithoutTheRightNothingChanges)
{
    OnThread([] {
        const WithoutRight without;
        ASSERT_TRUE(without.IsTaken());
        const int before = niceness::OfThread();

        EXPECT_EQ(RaiseThreadPriority(), nullptr);

        EXPECT_EQ(niceness::OfThread(), before);
    });
}

TEST(PosixThreadPriorityTest, AThreadThatGoesFurtherBeforeOthersIsLeftSo)
{
    const bool isPermitted = niceness::MayBe(-15);
    OnThread([&] {
        ASSERT_EQ(niceness::Be(-15), isPermitted);
        const int before = niceness::OfThread();

        auto raised = RaiseThreadPriority();
        EXPECT_EQ(raised != nullptr, !isPermitted && niceness::MayBe(-10));

        raised.reset();
        EXPECT_EQ(niceness::OfThread(), before);
    });
}

} // namespace
} // namespace transport
