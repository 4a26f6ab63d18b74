#include "VxBase/VxMutex.h"

#include <gtest/gtest.h>

#include <mutex>
#include <thread>

namespace {

bool CanAnotherThreadLock(VxMutex& mutex)
{
    bool isLocked = false;
    std::thread([&] {
        isLocked = mutex.try_lock();
        if (isLocked)
            mutex.unlock();
    }).join();
    return isLocked;
}

TEST(VxMutexTest, ALockHoldsForItsScope)
{
    VxMutex mutex;
    {
        const VxLock lock(mutex);
        EXPECT_FALSE(CanAnotherThreadLock(mutex));
    }
    EXPECT_TRUE(CanAnotherThreadLock(mutex));
}

TEST(VxMutexTest, WorksWithTheStandardLocks)
{
    VxMutex mutex;
    std::unique_lock lock(mutex);
    EXPECT_FALSE(CanAnotherThreadLock(mutex));

    lock.unlock();

    EXPECT_TRUE(CanAnotherThreadLock(mutex));
}

} // namespace
