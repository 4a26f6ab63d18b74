#include "VxCamera/genapi/node/TextForm.h"

#include <gtest/gtest.h>

#include <clocale>
#include <cmath>
#include <random>

#include "VxCamera/genapi/xml/NumberText.h"

namespace genapi {
namespace {

TEST(TextFormTest, WritesIntegersAsTheirRepresentationAsks)
{
    EXPECT_EQ(IntegerToText(-42, Representation::Unspecified), "-42");
    EXPECT_EQ(IntegerToText(255, Representation::Linear), "255");
    EXPECT_EQ(IntegerToText(255, Representation::HexNumber), "0xff");
    EXPECT_EQ(IntegerToText(-1, Representation::HexNumber), "0xffffffffffffffff");
    EXPECT_EQ(IntegerToText(0xC0A80001, Representation::Ipv4Address), "192.168.0.1");
    EXPECT_EQ(IntegerToText(0x0200000000FE, Representation::MacAddress), "02:00:00:00:00:fe");
}

TEST(TextFormTest, WritesAddressesThatAreNoneAsNumbers)
{
    EXPECT_EQ(IntegerToText(0x1C0A80001, Representation::Ipv4Address), "7527202817");
    EXPECT_EQ(IntegerToText(-1, Representation::MacAddress), "-1");
}

TEST(TextFormTest, ReadsIntegersInEveryForm)
{
    EXPECT_EQ(IntegerFromText(" 42 "), 42);
    EXPECT_EQ(IntegerFromText("-1"), -1);
    EXPECT_EQ(IntegerFromText("0xFF"), 255);
    EXPECT_EQ(IntegerFromText("192.168.0.1"), 0xC0A80001);
    EXPECT_EQ(IntegerFromText("255.255.255.255"), 0xFFFFFFFF);
    EXPECT_EQ(IntegerFromText("02:00:00:00:00:FE"), 0x0200000000FE);
}

TEST(TextFormTest, RefusesIntegersThatAreNone)
{
    for (const char* text :
         {"", "abc", "1.5", "1.2.3", "1.2.3.4.5", "256.1.1.1", "1.2.3.-4", "1..2.3", "00:11:22:33:44",
          "00:11:22:33:44:55:66", "00:11:22:33:44:100", "gg:11:22:33:44:55", "12 3"})
        EXPECT_FALSE(IntegerFromText(text)) << text;
}

TEST(TextFormTest, WritesFloatsInTheirShortestForm)
{
    EXPECT_EQ(FloatToText(0.1, FloatDigits::Double), "0.1");
    EXPECT_EQ(FloatToText(100000, FloatDigits::Double), "100000");
    EXPECT_EQ(FloatToText(0, FloatDigits::Double), "0");
    EXPECT_EQ(FloatToText(-2.5, FloatDigits::Double), "-2.5");
    EXPECT_EQ(FloatToText(1e30, FloatDigits::Double), "1e+30");
    EXPECT_EQ(FloatToText(INFINITY, FloatDigits::Double), "inf");
    EXPECT_EQ(FloatToText(static_cast<double>(0.1f), FloatDigits::Single), "0.1");
    EXPECT_EQ(FloatToText(static_cast<double>(0.1f), FloatDigits::Double), "0.10000000149011612");
}

TEST(TextFormTest, ReadsBackTheFloatsItWrote)
{
    std::mt19937_64 random(3);
    for (int i = 0; i < 20000; ++i) {
        const double value =
            std::ldexp(static_cast<double>(random()), static_cast<int>(random() % 400) - 264);

        EXPECT_EQ(ParseFloat(FloatToText(value, FloatDigits::Double)), value);
        const auto single = static_cast<float>(value);
        EXPECT_EQ(
            static_cast<float>(*ParseFloat(FloatToText(static_cast<double>(single), FloatDigits::Single))),
            single);
    }
}

TEST(TextFormTest, ReadsTruthValues)
{
    for (const char* text : {"true", "True", "TRUE", "1", " true "})
        EXPECT_EQ(BooleanFromText(text), true) << text;
    for (const char* text : {"false", "False", "FALSE", "0"})
        EXPECT_EQ(BooleanFromText(text), false) << text;
    for (const char* text : {"", "yes", "2", "truethful", "falsehood"})
        EXPECT_FALSE(BooleanFromText(text)) << text;
}

TEST(TextFormTest, WritesAndReadsBytes)
{
    const std::vector<std::byte> bytes{std::byte{0x00}, std::byte{0xAB}, std::byte{0x7F}};

    EXPECT_EQ(BytesToText(bytes), "00ab7f");
    EXPECT_EQ(BytesFromText("00AB7f"), bytes);
    EXPECT_EQ(BytesFromText("0x00ab7f"), bytes);
    EXPECT_EQ(BytesFromText(""), std::vector<std::byte>{});
    for (const char* text : {"0", "0g", "00 ab", "+1"})
        EXPECT_FALSE(BytesFromText(text)) << text;
}

} // namespace
} // namespace genapi
