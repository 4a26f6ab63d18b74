#include "BaseClasses/WideStrings.h"

#include <objbase.h>

#include <gtest/gtest.h>

#include <climits>

TEST(WideStringsTest, CopiesATextIntoTaskMemory)
{
    LPWSTR copy = nullptr;

    ASSERT_EQ(AMGetWideString(L"Grün", &copy), S_OK);

    EXPECT_STREQ(copy, L"Grün");
    ::CoTaskMemFree(copy);
}

TEST(WideStringsTest, CopiesTheEmptyText)
{
    LPWSTR copy = nullptr;

    ASSERT_EQ(AMGetWideString(L"", &copy), S_OK);

    EXPECT_STREQ(copy, L"");
    ::CoTaskMemFree(copy);
}

TEST(WideStringsTest, RefusesNullPointers)
{
    LPWSTR copy = nullptr;

    EXPECT_EQ(AMGetWideString(L"x", nullptr), E_POINTER);
    EXPECT_EQ(AMGetWideString(nullptr, &copy), E_POINTER);
    EXPECT_EQ(copy, nullptr);
}

TEST(WideStringsTest, WritesNumbersInDecimal)
{
    WCHAR text[kIntToWstrUnits] = {};

    IntToWstr(0, text);
    EXPECT_STREQ(text, L"0");
    IntToWstr(INT_MAX, text);
    EXPECT_STREQ(text, L"2147483647");
    IntToWstr(INT_MIN, text);
    EXPECT_STREQ(text, L"-2147483648");
}

TEST(WideStringsTest, ReadsNumbersInDecimal)
{
    EXPECT_EQ(WstrToInt(L"1"), 1);
    EXPECT_EQ(WstrToInt(L"  +12"), 12);
    EXPECT_EQ(WstrToInt(L"-7"), -7);
    EXPECT_EQ(WstrToInt(L"3rd"), 3);
    EXPECT_EQ(WstrToInt(L"Output"), 0);
    EXPECT_EQ(WstrToInt(L""), 0);
}
