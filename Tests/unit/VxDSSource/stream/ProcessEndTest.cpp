#include "VxBase/VxProcessEnd.h"
#include "VxDSSource/stream/AcquisitionMutex.h"

#include <gtest/gtest.h>
#include <windows.h>

#include <memory>
#include <thread>

// What holds once the process is ending, when the system has ended all threads but one, wherever they were. A
// program of its own: nothing takes the beginning of the end back.

namespace vxds {
namespace {

TEST(ProcessEndTest, WhatAnEndedThreadHeldIsTakenOnceTheProcessIsEnding)
{
    AcquisitionMutex mutex;
    std::unique_ptr<AcquisitionMutex::Lock> held;
    std::thread([&] { held = std::make_unique<AcquisitionMutex::Lock>(mutex); }).join();
    ASSERT_TRUE(held->IsHeld());
    ASSERT_FALSE(AcquisitionMutex::Lock(mutex, 1).IsHeld()) << "an owner that has ended keeps it";

    VxProcessEnd::Begin();

    {
        const AcquisitionMutex::Lock lock(mutex); // without the end it would wait for ever
        EXPECT_TRUE(lock.IsHeld());
        EXPECT_TRUE(AcquisitionMutex::Lock(mutex, 0).IsHeld());
    }
    EXPECT_TRUE(AcquisitionMutex::Lock(mutex, 0).IsHeld());
}

} // namespace
} // namespace vxds
