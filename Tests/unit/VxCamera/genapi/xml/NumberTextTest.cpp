#include "VxCamera/genapi/xml/NumberText.h"

#include <gtest/gtest.h>

#include <cmath>

namespace genapi {
namespace {

TEST(NumberTextTest, ReadsIntegersInDecimalAndHexadecimal)
{
    EXPECT_EQ(ParseInteger("42"), 42);
    EXPECT_EQ(ParseInteger(" -7 \n"), -7);
    EXPECT_EQ(ParseInteger("+7"), 7);
    EXPECT_EQ(ParseInteger("0x1f"), 31);
    EXPECT_EQ(ParseInteger("0X1F"), 31);
    EXPECT_EQ(ParseInteger("-9223372036854775808"), INT64_MIN);
}

TEST(NumberTextTest, TakesHexadecimalAsAPatternOf64Bits)
{
    EXPECT_EQ(ParseInteger("0xFFFFFFFFFFFFFFFF"), -1);
    EXPECT_EQ(ParseInteger("0x8000000000000000"), INT64_MIN);
    EXPECT_EQ(ParseInteger("18446744073709551615"), -1);
}

TEST(NumberTextTest, TakesFloatsThatAreIntegers)
{
    EXPECT_EQ(ParseInteger("10.0"), 10);
    EXPECT_EQ(ParseInteger("1e3"), 1000);
}

TEST(NumberTextTest, RefusesWhatIsNoInteger)
{
    for (const char* text :
         {"", " ", "abc", "1.5", "0x", "0x1FFFFFFFFFFFFFFFF", "12 13", "1e30", "nan", "--1", "0xG"})
        EXPECT_FALSE(ParseInteger(text)) << text;
}

TEST(NumberTextTest, ReadsHexadecimalWithAndWithoutPrefix)
{
    EXPECT_EQ(ParseHexadecimal("ef86b3e0"), 0xef86b3e0u);
    EXPECT_EQ(ParseHexadecimal("0x10"), 16u);
    EXPECT_FALSE(ParseHexadecimal("xyz"));
    EXPECT_FALSE(ParseHexadecimal(""));
}

TEST(NumberTextTest, ReadsFloats)
{
    EXPECT_EQ(ParseFloat("1.5"), 1.5);
    EXPECT_EQ(ParseFloat("-1e-3"), -0.001);
    EXPECT_EQ(ParseFloat("0x10"), 16.0);
    EXPECT_EQ(ParseFloat("INF"), INFINITY);
    EXPECT_EQ(ParseFloat("-INF"), -INFINITY);
    EXPECT_TRUE(std::isnan(*ParseFloat("NaN")));
    for (const char* text : {"", "1,5", "one", "1.5 V"})
        EXPECT_FALSE(ParseFloat(text)) << text;
}

} // namespace
} // namespace genapi
