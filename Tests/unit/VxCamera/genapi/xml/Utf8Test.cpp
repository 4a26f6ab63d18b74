#include "VxCamera/genapi/xml/Utf8.h"

#include <gtest/gtest.h>

namespace genapi {
namespace {

TEST(Utf8Test, AcceptsCharactersOfEveryLength)
{
    EXPECT_TRUE(IsUtf8(""));
    EXPECT_TRUE(IsUtf8("abc"));
    EXPECT_TRUE(IsUtf8("\xC2\xB0 \xE4\xB8\xAD \xF0\x9F\x98\x80"));
    EXPECT_TRUE(IsUtf8("\xF4\x8F\xBF\xBF")); // the last code point
}

TEST(Utf8Test, RefusesBrokenSequences)
{
    for (const char* bytes : {"\xB0", "\xC2", "\xC2 ", "\xE4\xB8", "\xF0\x9F\x98", "\xC0\x80", "\xE0\x80\x80",
                              "\xED\xA0\x80", "\xF4\x90\x80\x80", "\xFF", "\xF8\x88\x80\x80\x80"})
        EXPECT_FALSE(IsUtf8(bytes)) << bytes;
}

TEST(Utf8Test, TakesOtherTextFromACameraForLatin1)
{
    EXPECT_EQ(Utf8FromCamera("25 \xB0"
                             "C"),
              "25 \xC2\xB0"
              "C");
    EXPECT_EQ(Utf8FromCamera("\xC2\xB0"), "\xC2\xB0");
    EXPECT_EQ(Utf8FromLatin1("\xFC"), "\xC3\xBC");
}

} // namespace
} // namespace genapi
