#include "VxBase/VxRunningThread.h"

#include "support/Latch.h"

#include <gtest/gtest.h>

#include <thread>

namespace {

TEST(VxRunningThreadTest, CountsThreadsWhileTheirBodiesRun)
{
    ASSERT_EQ(VxRunningThread::Count(), 0);
    Latch haveBegun(2);
    Latch mayEnd(1);
    const auto body = [&] {
        const VxRunningThread counted;
        haveBegun.count_down();
        mayEnd.wait();
    };
    std::thread first(body);
    std::thread second(body);
    haveBegun.wait();

    EXPECT_EQ(VxRunningThread::Count(), 2);

    mayEnd.count_down();
    first.join();
    second.join();
    EXPECT_EQ(VxRunningThread::Count(), 0);
}

} // namespace
