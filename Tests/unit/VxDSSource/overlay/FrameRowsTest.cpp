#include "VxDSSource/overlay/FrameRows.h"

#include <gtest/gtest.h>

#include <array>
#include <limits>

namespace {

using vxds::FrameRows;
using vxds::OverlayFrame;

std::array<std::uint8_t, 60> g_memory;

OverlayFrame Frame(LONG width, LONG height, WORD bits, std::size_t bytes = 60)
{
    OverlayFrame frame;
    frame.memory = std::span(g_memory).first(bytes);
    frame.header.biWidth = width;
    frame.header.biHeight = height;
    frame.header.biBitCount = bits;
    return frame;
}

TEST(FrameRowsTest, CountsRowsOfATopDownFrameFromTheStart)
{
    const auto rows = FrameRows::Of(Frame(5, -3, 24));

    ASSERT_TRUE(rows);
    EXPECT_EQ(rows->RowBytes(), 15u);
    EXPECT_EQ(rows->Bytes().size(), 45u);
    EXPECT_EQ(rows->Row(0).data(), g_memory.data());
    EXPECT_EQ(rows->Row(2).data(), g_memory.data() + 30);
    EXPECT_EQ(rows->Row(2).size(), 15u);
}

TEST(FrameRowsTest, CountsRowsOfABottomUpFrameFromTheEnd)
{
    const auto rows = FrameRows::Of(Frame(5, 3, 24));

    ASSERT_TRUE(rows);
    EXPECT_EQ(rows->Row(0).data(), g_memory.data() + 30);
    EXPECT_EQ(rows->Row(2).data(), g_memory.data());
}

TEST(FrameRowsTest, TakesAFrameThatFillsItsMemory)
{
    EXPECT_TRUE(FrameRows::Of(Frame(5, 4, 24, 60)));
    EXPECT_FALSE(FrameRows::Of(Frame(5, 4, 24, 59)));
    EXPECT_FALSE(FrameRows::Of(Frame(5, -4, 24, 59)));
    EXPECT_FALSE(FrameRows::Of(Frame(1, 1, 8, 0)));
}

TEST(FrameRowsTest, RefusesWhatIsNoPictureOfWholeBytes)
{
    EXPECT_FALSE(FrameRows::Of(Frame(0, 3, 24)));
    EXPECT_FALSE(FrameRows::Of(Frame(-5, 3, 24)));
    EXPECT_FALSE(FrameRows::Of(Frame(5, 0, 24)));
    EXPECT_FALSE(FrameRows::Of(Frame(5, 3, 0)));
    EXPECT_FALSE(FrameRows::Of(Frame(5, 3, 1)));
    EXPECT_FALSE(FrameRows::Of(Frame(5, 3, 12)));
    EXPECT_FALSE(FrameRows::Of(OverlayFrame{}));
}

TEST(FrameRowsTest, RefusesSizesWhoseProductIsTooLarge)
{
    constexpr LONG kLargest = std::numeric_limits<LONG>::max();
    constexpr LONG kSmallest = std::numeric_limits<LONG>::min();

    EXPECT_FALSE(FrameRows::Of(Frame(kLargest, kLargest, 24)));
    EXPECT_FALSE(FrameRows::Of(Frame(kLargest, kSmallest, 65528)));
    EXPECT_FALSE(FrameRows::Of(Frame(1, kSmallest, 8)));
}

} // namespace
