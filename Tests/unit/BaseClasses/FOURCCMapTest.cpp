#include "BaseClasses/FOURCCMap.h"

#include <uuids.h>

#include <gtest/gtest.h>

TEST(FOURCCMapTest, MakesTheIdentifierOfACode)
{
    constexpr DWORD kYuy2 = 0x32595559; // 'YUY2'

    EXPECT_EQ(static_cast<const GUID&>(FOURCCMap(kYuy2)), MEDIASUBTYPE_YUY2);
    EXPECT_EQ(FOURCCMap(kYuy2).GetFOURCC(), kYuy2);
}

TEST(FOURCCMapTest, TakesTheCodeOutOfAnIdentifier)
{
    const FOURCCMap code(&MEDIASUBTYPE_UYVY);

    EXPECT_EQ(code.GetFOURCC(), 0x59565955u); // 'UYVY'
    EXPECT_EQ(static_cast<const GUID&>(code), MEDIASUBTYPE_UYVY);
}

TEST(FOURCCMapTest, EmptyMapHasCodeZero)
{
    const GUID expected = {0, 0, 0x0010, {0x80, 0x00, 0x00, 0xAA, 0x00, 0x38, 0x9B, 0x71}};

    EXPECT_EQ(static_cast<const GUID&>(FOURCCMap()), expected);
}

TEST(FOURCCMapTest, CodeCanBeChanged)
{
    FOURCCMap code;

    code.SetFOURCC(0x736C7275); // 'urls'

    const GUID expected = {0x736C7275, 0, 0x0010, {0x80, 0x00, 0x00, 0xAA, 0x00, 0x38, 0x9B, 0x71}};
    EXPECT_EQ(static_cast<const GUID&>(code), expected);
}
