#include "BaseClasses/CRefTime.h"

#include <gtest/gtest.h>

TEST(CRefTimeTest, StartsAtZero)
{
    EXPECT_EQ(CRefTime().GetUnits(), 0);
}

TEST(CRefTimeTest, Takes32BitArgumentsAsMilliseconds)
{
    EXPECT_EQ(CRefTime(3).GetUnits(), 30000);
    EXPECT_EQ(CRefTime(LONG{3}).GetUnits(), 30000);
    EXPECT_EQ(CRefTime(LONG{0x7FFFFFFF}).GetUnits(), 21474836470000);
}

TEST(CRefTimeTest, Takes64BitArgumentsAsUnits)
{
    EXPECT_EQ(CRefTime(REFERENCE_TIME{3}).GetUnits(), 3);
}

TEST(CRefTimeTest, IsAssignedUnits)
{
    CRefTime time(5);

    time = LONGLONG{7};

    EXPECT_EQ(time.GetUnits(), 7);
}

TEST(CRefTimeTest, AddsAndSubtracts)
{
    CRefTime time(1);

    time += CRefTime(2);
    EXPECT_EQ(time.Millisecs(), 3);
    time -= CRefTime(5);
    EXPECT_EQ(time.Millisecs(), -2);
}

TEST(CRefTimeTest, CutsMillisecondsTowardsZero)
{
    EXPECT_EQ(CRefTime(REFERENCE_TIME{19999}).Millisecs(), 1);
    EXPECT_EQ(CRefTime(REFERENCE_TIME{-19999}).Millisecs(), -1);
}

TEST(CRefTimeTest, ConvertsToReferenceTime)
{
    const REFERENCE_TIME units = CRefTime(2);

    EXPECT_EQ(units, 2 * UNITS / MILLISECONDS);
    EXPECT_LT(CRefTime(1), CRefTime(2));
    EXPECT_EQ(MAX_TIME, 0x7FFFFFFFFFFFFFFF);
}
