#include "VxCamera/surface/SmallerPackets.h"

#include "support/Latch.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace {

TEST(SmallerPacketsTest, AskingWithoutAThreadIsHarmless)
{
    SmallerPackets smaller([] { FAIL() << "nobody may be called"; });

    smaller.Ask();
    smaller.End();
}

TEST(SmallerPacketsTest, AStepThatThrowsDoesNotEndTheThread)
{
    Latch first(1);
    Latch second(2);
    SmallerPackets smaller([&] {
        second.count_down();
        first.count_down();
        throw std::runtime_error("no memory for the command");
    });
    ASSERT_TRUE(smaller.Start().IsOK());

    smaller.Ask();
    first.wait();
    smaller.Ask();
    second.wait(); // would last for ever if the thread had ended

    smaller.End();
}

} // namespace
