#include "VxDSSource/stream/AcquisitionMutex.h"

#include "support/directshow/Gate.h"

#include <gtest/gtest.h>
#include <windows.h>

#include <algorithm>
#include <atomic>
#include <optional>
#include <thread>
#include <vector>

namespace vxds {
namespace {

constexpr DWORD kLongMs = 60'000; // longer than any test waits

void WaitForRow(AcquisitionMutex& mutex, std::size_t waiters)
{
    while (mutex.WaiterCount() < waiters)
        std::this_thread::yield();
}

bool IsFreeForAnother(AcquisitionMutex& mutex)
{
    bool isHeld = false;
    std::thread([&] { isHeld = AcquisitionMutex::Lock(mutex, 0).IsHeld(); }).join();
    return isHeld;
}

TEST(AcquisitionMutexTest, MayBeTakenAgainByItsOwner)
{
    AcquisitionMutex mutex;
    const AcquisitionMutex::Lock first(mutex);
    const AcquisitionMutex::Lock second(mutex);
    const AcquisitionMutex::Lock third(mutex, 0);

    EXPECT_TRUE(first.IsHeld());
    EXPECT_TRUE(second.IsHeld());
    EXPECT_TRUE(third.IsHeld());
}

TEST(AcquisitionMutexTest, IsNotHeldWhenTheTimeIsOver)
{
    AcquisitionMutex mutex;
    const AcquisitionMutex::Lock lock(mutex);
    const ULONGLONG began = ::GetTickCount64();

    std::thread([&] { EXPECT_FALSE(AcquisitionMutex::Lock(mutex, 40).IsHeld()); }).join();

    EXPECT_GE(::GetTickCount64() - began, 40u);
    EXPECT_FALSE(IsFreeForAnother(mutex));
}

TEST(AcquisitionMutexTest, IsWantedWhileAThreadWaitsWithoutLimit)
{
    AcquisitionMutex mutex;
    Gate isTaken;
    std::thread other;
    EXPECT_FALSE(mutex.IsWanted());
    {
        const AcquisitionMutex::Lock lock(mutex);
        other = std::thread([&] {
            const AcquisitionMutex::Lock waiting(mutex);
            isTaken.Pass();
        });
        while (!mutex.IsWanted())
            std::this_thread::yield();
        EXPECT_EQ(isTaken.Count(), 0);
    }
    EXPECT_TRUE(isTaken.WaitFor());
    other.join();
    EXPECT_FALSE(mutex.IsWanted());
}

TEST(AcquisitionMutexTest, CountsHowOftenItsOwnerHasTakenIt)
{
    AcquisitionMutex mutex;
    const AcquisitionMutex::Lock outer(mutex);
    {
        const AcquisitionMutex::Lock inner(mutex);
    }

    EXPECT_FALSE(IsFreeForAnother(mutex));
}

TEST(AcquisitionMutexTest, IsFreeWhenItsOwnerHasLetGo)
{
    AcquisitionMutex mutex;
    {
        const AcquisitionMutex::Lock outer(mutex);
        const AcquisitionMutex::Lock inner(mutex);
    }

    EXPECT_TRUE(IsFreeForAnother(mutex));
}

TEST(AcquisitionMutexTest, AThreadThatGaveUpIsPassedOver)
{
    AcquisitionMutex mutex;
    {
        const AcquisitionMutex::Lock lock(mutex);
        std::thread([&] { EXPECT_FALSE(AcquisitionMutex::Lock(mutex, 1).IsHeld()); }).join();
    }

    EXPECT_TRUE(IsFreeForAnother(mutex));
}

TEST(AcquisitionMutexTest, AThreadThatWaitsForAWhileGetsItsTurn)
{
    AcquisitionMutex mutex;
    bool isHeld = false;
    std::thread other;
    {
        const AcquisitionMutex::Lock lock(mutex);
        other = std::thread([&] { isHeld = AcquisitionMutex::Lock(mutex, kLongMs).IsHeld(); });
        WaitForRow(mutex, 1);
        EXPECT_FALSE(mutex.IsWanted()) << "it waits with a limit";
    }
    other.join();

    EXPECT_TRUE(isHeld);
    EXPECT_TRUE(IsFreeForAnother(mutex));
}

TEST(AcquisitionMutexTest, ThreadsGetItInTheOrderInWhichTheyCame)
{
    constexpr int kThreads = 4;
    AcquisitionMutex mutex;
    std::vector<int> order; // guarded by the mutex
    std::vector<std::thread> threads;
    {
        const AcquisitionMutex::Lock lock(mutex);
        for (int i = 0; i < kThreads; ++i) {
            threads.emplace_back([&, i] {
                const AcquisitionMutex::Lock waiting(mutex, i % 2 == 0 ? INFINITE : kLongMs);
                order.push_back(i);
            });
            WaitForRow(mutex, threads.size());
        }
    }
    for (std::thread& thread : threads)
        thread.join();

    EXPECT_EQ(order, (std::vector<int>{0, 1, 2, 3}));
    EXPECT_EQ(mutex.WaiterCount(), 0u);
}

/// Three threads wait; the second one only so long.
/// @return  in which order they got the mutex; nothing when the second one gave up before the third one came
std::optional<std::vector<int>> OrderWithoutTheSecond(DWORD secondMs)
{
    AcquisitionMutex mutex;
    std::vector<int> order; // guarded by the mutex
    const auto wait = [&](int number) {
        const AcquisitionMutex::Lock waiting(mutex);
        order.push_back(number);
    };
    std::atomic<bool> hasGivenUp = false;
    bool wasInTheMiddle = false;
    std::vector<std::thread> threads;
    {
        const AcquisitionMutex::Lock lock(mutex);
        threads.emplace_back(wait, 1);
        WaitForRow(mutex, 1);
        threads.emplace_back([&] {
            EXPECT_FALSE(AcquisitionMutex::Lock(mutex, secondMs).IsHeld());
            hasGivenUp = true;
        });
        while (mutex.WaiterCount() < 2 && !hasGivenUp)
            std::this_thread::yield();
        threads.emplace_back(wait, 3);
        std::size_t longest = 0; // the third one is in the row when it has three, or two without the second
        while (longest < 3 && !(hasGivenUp && mutex.WaiterCount() == 2))
            longest = std::max(longest, mutex.WaiterCount());
        wasInTheMiddle = longest == 3;
        while (!hasGivenUp)
            std::this_thread::yield();
        EXPECT_EQ(mutex.WaiterCount(), 2u);
    }
    for (std::thread& thread : threads)
        thread.join();
    return wasInTheMiddle ? std::optional(order) : std::nullopt;
}

TEST(AcquisitionMutexTest, AThreadThatGivesUpInTheMiddleOfTheRowLeavesTheOthersInOrder)
{
    std::optional<std::vector<int>> order;
    for (DWORD ms = 20; !order && !HasFailure(); ms *= 2) // longer where the third one came too late
        order = OrderWithoutTheSecond(ms);

    ASSERT_TRUE(order);
    EXPECT_EQ(*order, (std::vector<int>{1, 3}));
}

// Frame production takes the mutex again as soon as it has let go. Whoever waits must get it in between.
TEST(AcquisitionMutexTest, ItsOwnerCannotTakeItAgainBeforeOneWhoWaits)
{
    constexpr int kRounds = 100;
    AcquisitionMutex mutex;
    std::vector<int> order; // guarded by the mutex
    for (int round = 0; round < kRounds; ++round) {
        std::thread other;
        {
            const AcquisitionMutex::Lock lock(mutex);
            other = std::thread([&] {
                const AcquisitionMutex::Lock waiting(mutex);
                order.push_back(1);
            });
            while (!mutex.IsWanted())
                std::this_thread::yield();
        }
        {
            const AcquisitionMutex::Lock again(mutex);
            order.push_back(2);
        }
        other.join();
    }

    ASSERT_EQ(order.size(), 2u * kRounds);
    for (int round = 0; round < kRounds; ++round)
        EXPECT_EQ(order[2u * round], 1) << "round " << round;
}

TEST(AcquisitionMutexTest, OneAtATimeHoldsIt)
{
    constexpr int kThreads = 4;
    constexpr int kTimes = 5000;
    AcquisitionMutex mutex;
    int inside = 0; // both guarded by the mutex, whose failure this test would show
    int total = 0;
    std::vector<std::thread> threads;
    for (int i = 0; i < kThreads; ++i)
        threads.emplace_back([&, i] {
            for (int time = 0; time < kTimes; ++time) {
                const AcquisitionMutex::Lock lock(mutex, i % 2 == 0 ? INFINITE : 60'000);
                EXPECT_EQ(++inside, 1);
                ++total;
                --inside;
            }
        });
    for (std::thread& thread : threads)
        thread.join();

    EXPECT_EQ(total, kThreads * kTimes);
}

} // namespace
} // namespace vxds
