#include "VxDSSource/pages/DialogItems.h"

#include <gtest/gtest.h>

#include <limits>

namespace {

using pages::NumberIn;

constexpr std::int32_t kPresent = 77;

TEST(NumberInTest, ReadsASignedNumber)
{
    EXPECT_EQ(NumberIn(L"0", kPresent), 0);
    EXPECT_EQ(NumberIn(L"5000", kPresent), 5000);
    EXPECT_EQ(NumberIn(L"-1", kPresent), -1);
    EXPECT_EQ(NumberIn(L"2147483647", kPresent), std::numeric_limits<std::int32_t>::max());
    EXPECT_EQ(NumberIn(L"-2147483648", kPresent), std::numeric_limits<std::int32_t>::min());
}

TEST(NumberInTest, EmptyTextLeavesTheValue)
{
    EXPECT_EQ(NumberIn(L"", kPresent), kPresent);
}

TEST(NumberInTest, TextWithoutANumberInFrontGivesZero)
{
    EXPECT_EQ(NumberIn(L"abc", kPresent), 0);
    EXPECT_EQ(NumberIn(L"x5", kPresent), 0);
    EXPECT_EQ(NumberIn(L"-", kPresent), 0);
}

TEST(NumberInTest, LeadingDigitsCount)
{
    EXPECT_EQ(NumberIn(L"12x34", kPresent), 12);
    EXPECT_EQ(NumberIn(L"1,000", kPresent), 1);
    EXPECT_EQ(NumberIn(L"0x10", kPresent), 0);
    EXPECT_EQ(NumberIn(L"  7", kPresent), 7);
}

TEST(NumberInTest, TooLargeBecomesTheLimit)
{
    EXPECT_EQ(NumberIn(L"4294967295", kPresent), std::numeric_limits<std::int32_t>::max());
    EXPECT_EQ(NumberIn(L"-99999999999", kPresent), std::numeric_limits<std::int32_t>::min());
}

} // namespace
