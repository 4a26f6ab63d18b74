#include "VxDSSource/stream/AcquisitionMutex.h"

#include "support/directshow/Gate.h"

#include <gtest/gtest.h>

#include <thread>

namespace vxds {
namespace {

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
    bool isHeld = true;

    std::thread other([&] { isHeld = AcquisitionMutex::Lock(mutex, 0).IsHeld(); });
    other.join();

    EXPECT_FALSE(isHeld);
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

TEST(AcquisitionMutexTest, PassesOnWhenItsOwnerEndedWithoutLettingGo)
{
    AcquisitionMutex mutex;
    std::thread([&] { (void)new AcquisitionMutex::Lock(mutex); }).join(); // left behind on purpose

    const AcquisitionMutex::Lock lock(mutex, 1000);

    EXPECT_TRUE(lock.IsHeld());
}

} // namespace
} // namespace vxds
