#include "VxBase/VxString.h"

#include <gtest/gtest.h>

namespace {

// "Ä€😀": two, three and four bytes of UTF-8.
constexpr const char* kNarrow = "\xC3\x84\xE2\x82\xAC\xF0\x9F\x98\x80";
constexpr const wchar_t* kWide = L"\u00C4\u20AC\U0001F600";
constexpr const char* kReplacement = "\xEF\xBF\xBD"; // U+FFFD

TEST(VxStringTest, IsEmptyAtFirst)
{
    const VxString text;

    EXPECT_TRUE(text.IsEmpty());
    EXPECT_EQ(text.GetLength(), 0u);
    EXPECT_STREQ(text.GetAscii(), "");
    EXPECT_STREQ(text.GetUnicode(), L"");
}

TEST(VxStringTest, ANullPointerIsAnEmptyText)
{
    EXPECT_TRUE(VxString(static_cast<const char*>(nullptr)).IsEmpty());
    EXPECT_TRUE(VxString(static_cast<const wchar_t*>(nullptr)).IsEmpty());
}

TEST(VxStringTest, NarrowTextBecomesWide)
{
    const VxString text(kNarrow);

    EXPECT_STREQ(text.GetUnicode(), kWide);
    EXPECT_STREQ(text.GetAscii(), kNarrow);
    EXPECT_EQ(text.GetLength(), std::wstring_view(kWide).size());
}

TEST(VxStringTest, WideTextBecomesNarrow)
{
    const VxString text(kWide);

    EXPECT_STREQ(text.GetAscii(), kNarrow);
    EXPECT_STREQ(text.GetUnicode(), kWide);
}

TEST(VxStringTest, EveryCodePointSurvivesBothWays)
{
    for (char32_t codePoint = 1; codePoint <= 0x10FFFF; codePoint += codePoint < 0x900 ? 1 : 37) {
        if (codePoint >= 0xD800 && codePoint < 0xE000)
            continue; // surrogates are no code points
        std::wstring wide;
        if (sizeof(wchar_t) == 2 && codePoint > 0xFFFF) {
            wide.push_back(static_cast<wchar_t>(0xD800 + ((codePoint - 0x10000) >> 10)));
            wide.push_back(static_cast<wchar_t>(0xDC00 + ((codePoint - 0x10000) & 0x3FF)));
        } else {
            wide.push_back(static_cast<wchar_t>(codePoint));
        }
        ASSERT_EQ(VxWideFromUtf8(VxUtf8FromWide(wide)), wide) << static_cast<unsigned>(codePoint);
    }
}

TEST(VxStringTest, BrokenUtf8BecomesTheReplacementCharacterPerByte)
{
    EXPECT_EQ(VxWideFromUtf8("a\xFFz"), L"a\uFFFDz");
    EXPECT_EQ(VxWideFromUtf8("\x80"), L"\uFFFD") << "a continuation without its start";
    EXPECT_EQ(VxWideFromUtf8("\xC3"), L"\uFFFD") << "cut";
    EXPECT_EQ(VxWideFromUtf8("\xC3z"), L"\uFFFDz") << "a start without its continuation";
    EXPECT_EQ(VxWideFromUtf8("\xC0\x80"), L"\uFFFD\uFFFD") << "overlong";
    EXPECT_EQ(VxWideFromUtf8("\xED\xA0\x80"), L"\uFFFD\uFFFD\uFFFD") << "a surrogate";
    EXPECT_EQ(VxWideFromUtf8("\xF4\x90\x80\x80"), L"\uFFFD\uFFFD\uFFFD\uFFFD") << "beyond U+10FFFF";
}

TEST(VxStringTest, BrokenBytesStayInTheNarrowForm)
{
    EXPECT_STREQ(VxString("a\xFFz").GetAscii(), "a\xFFz");
}

TEST(VxStringTest, AnUnpairedSurrogateBecomesTheReplacementCharacter)
{
    const wchar_t high[] = {static_cast<wchar_t>(0xD83D), L'z', 0};
    const wchar_t low[] = {static_cast<wchar_t>(0xDE00), 0};
    const wchar_t cut[] = {static_cast<wchar_t>(0xD83D), 0};

    EXPECT_EQ(VxUtf8FromWide(high), std::string(kReplacement) + "z");
    EXPECT_EQ(VxUtf8FromWide(low), kReplacement);
    EXPECT_EQ(VxUtf8FromWide(cut), kReplacement);
}

TEST(VxStringTest, ATextMayContainNul)
{
    const VxString text(std::string_view("a\0b", 3));

    EXPECT_EQ(text.GetLength(), 3u);
    EXPECT_EQ(text.Narrow().size(), 3u);
}

TEST(VxStringTest, ComparesWithTextsAndNarrowCStrings)
{
    EXPECT_TRUE(VxString("true") == "true");
    EXPECT_FALSE(VxString("true") == "True");
    EXPECT_FALSE(VxString("true") == "");
    EXPECT_TRUE(VxString() == static_cast<const char*>(nullptr));
    EXPECT_TRUE(VxString(L"true") == VxString("true"));
}

} // namespace
