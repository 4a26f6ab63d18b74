#include "vxctl/Text.h"

#include <gtest/gtest.h>

namespace vxctl {
namespace {

TEST(PrintableTest, LeavesLettersOfAllLanguages)
{
    EXPECT_EQ(Printable("Kamera \xC3\xA4 \xE4\xB8\xAD \xF0\x9F\x98\x80"),
              "Kamera \xC3\xA4 \xE4\xB8\xAD \xF0\x9F\x98\x80");
}

TEST(PrintableTest, KeepsControlCharactersFromTheTerminal)
{
    EXPECT_EQ(Printable("a\x1B[31mb\r\n\t\x7F\xC2\x9B!"), "a?[31mb?????"
                                                          "!");
}

TEST(PrintableTest, GivesUtf8InAnyCase)
{
    EXPECT_EQ(Printable("\xFFz"), "\xEF\xBF\xBDz");
}

TEST(PaddedTest, CountsCharactersAndNotBytes)
{
    EXPECT_EQ(Padded("\xC3\xA4", 3), "\xC3\xA4  ");
    EXPECT_EQ(Padded("long", 3), "long");
}

TEST(ShortenedTest, CutsBetweenCharactersAndSaysSo)
{
    EXPECT_EQ(Shortened("\xC3\xA4\xC3\xA4\xC3\xA4\xC3\xA4\xC3\xA4\xC3\xA4", 5), "\xC3\xA4\xC3\xA4...");
    EXPECT_EQ(Shortened("12345", 5), "12345");
}

TEST(TableTest, MakesEachColumnAsWideAsItsLongestCell)
{
    EXPECT_EQ(Table({{"ID", "NAME"}, {"1", "\xC3\xA4"}, {"long", ""}}), "ID    NAME\n1     \xC3\xA4\nlong\n");
}

TEST(JsonTextTest, EscapesWhatJsonCannotHold)
{
    EXPECT_EQ(JsonText("a\"b\\c\n\x01\x7F"), "\"a\\\"b\\\\c\\u000a\\u0001\\u007f\"");
    EXPECT_EQ(JsonText("\xC3\xA4\xFF"), "\"\xC3\xA4\xEF\xBF\xBD\"");
}

TEST(NearestNameTest, FindsTheNameThatWasMeant)
{
    const std::vector<std::string> names{"Width", "Height", "ExposureTime", "ExposureAuto"};

    EXPECT_EQ(NearestName("Widht", names), "Width");
    EXPECT_EQ(NearestName("Wight", names), ""); // two of five letters: could be anything
    EXPECT_EQ(NearestName("Widh", names), "Width");
    EXPECT_EQ(NearestName("width", names), "Width");
    EXPECT_EQ(NearestName("ExposureTmie", names), "ExposureTime");
    EXPECT_EQ(NearestName("Gain", names), "");
    EXPECT_EQ(NearestName("", names), "");
}

} // namespace
} // namespace vxctl
