#include "VxCamera/surface/PictureMemory.h"

#include <array>
#include <limits>

#include <gtest/gtest.h>

#include "VxCamera/pixel/VxPixelFormat.h"

namespace {

constexpr std::uint32_t kLargest = std::numeric_limits<std::uint32_t>::max();

TEST(PictureMemoryTest, IsEmptyAtFirst)
{
    const PictureMemory picture;

    EXPECT_EQ(picture.GetDataPointer(), nullptr);
    EXPECT_EQ(picture.GetSize(), 0u);
    EXPECT_EQ(picture.GetWidth(), 0u);
}

TEST(PictureMemoryTest, AllocatesRowsWithPadding)
{
    PictureMemory picture;

    ASSERT_TRUE(picture.Alloc(3, 2, VxPfnc::kBgr8, 1, 0, 0).IsOK());

    EXPECT_NE(picture.GetDataPointer(), nullptr);
    EXPECT_EQ(picture.GetSize(), 3u * 3 + 1 + 3 * 3); // the last row needs no padding
    EXPECT_EQ(picture.GetRowPadding(), 1u);
}

TEST(PictureMemoryTest, KeepsItsMemoryForASmallerPicture)
{
    PictureMemory picture;
    ASSERT_TRUE(picture.Alloc(64, 64, VxPfnc::kMono8, 0, 0, 0).IsOK());
    const auto* const first = picture.GetDataPointer();

    ASSERT_TRUE(picture.Alloc(32, 32, VxPfnc::kMono8, 0, 0, 0).IsOK());

    EXPECT_EQ(picture.GetDataPointer(), first);
    EXPECT_EQ(picture.GetSize(), 32u * 32);
}

TEST(PictureMemoryTest, RefusesSizesThatOverflowOrAreEmpty)
{
    PictureMemory picture;

    EXPECT_FALSE(picture.Alloc(0, 10, VxPfnc::kMono8, 0, 0, 0).IsOK());
    EXPECT_FALSE(picture.Alloc(10, 0, VxPfnc::kMono8, 0, 0, 0).IsOK());
    EXPECT_FALSE(picture.Alloc(kLargest, kLargest, VxPfnc::kBgra8, kLargest, 0, 0).IsOK());
    EXPECT_EQ(picture.GetSize(), 0u);
}

TEST(PictureMemoryTest, DescribesForeignMemory)
{
    std::array<std::uint8_t, 12> memory{};
    PictureMemory picture;

    ASSERT_TRUE(picture.Attach(memory, 4, 3, VxPfnc::kMono8, 0, 5, 6).IsOK());

    EXPECT_EQ(picture.GetDataPointer(), memory.data());
    EXPECT_EQ(picture.GetSize(), memory.size());
}

TEST(PictureMemoryTest, RefusesForeignMemoryThatIsTooSmallAndStaysAsItWas)
{
    std::array<std::uint8_t, 12> enough{};
    std::array<std::uint8_t, 11> tooSmall{};
    PictureMemory picture;
    ASSERT_TRUE(picture.Attach(enough, 4, 3, VxPfnc::kMono8, 0, 0, 0).IsOK());

    const VxResult result = picture.Attach(tooSmall, 4, 3, VxPfnc::kMono8, 0, 0, 0);

    EXPECT_EQ(result.Code(), VxError::BufferTooSmall);
    EXPECT_EQ(picture.GetDataPointer(), enough.data());
    EXPECT_EQ(picture.GetWidth(), 4u);
}

TEST(PictureMemoryTest, NamesBothSizesWhenAReceivedPictureDoesNotFit)
{
    PictureMemory picture;
    ASSERT_TRUE(picture.Reserve(99).IsOK());

    const VxResult result = picture.Describe({10, 10, VxPfnc::kMono8, 0, 0, 0});

    EXPECT_EQ(result.Code(), VxError::BufferTooSmall);
    EXPECT_NE(result.GetDescription().Narrow().find("100"), std::string::npos);
    EXPECT_NE(result.GetDescription().Narrow().find("99"), std::string::npos);
    EXPECT_EQ(picture.GetWidth(), 0u);
}

} // namespace
