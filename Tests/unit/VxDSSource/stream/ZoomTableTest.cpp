#include "VxDSSource/stream/ZoomTable.h"

#include <gtest/gtest.h>

#include <limits>

namespace vxds {
namespace {

TEST(ZoomTableTest, ShowsTheWholePictureWithoutZoom)
{
    EXPECT_EQ(ZoomTable({1000, 800}).RegionFor(0), (PictureSize{1000, 800}));
}

TEST(ZoomTableTest, ShowsATenthLessWithEachStep)
{
    const ZoomTable table({1000, 800});

    EXPECT_EQ(table.RegionFor(1), (PictureSize{900, 720}));
    EXPECT_EQ(table.RegionFor(5), (PictureSize{500, 400}));
    EXPECT_EQ(table.RegionFor(9), (PictureSize{100, 80}));
}

TEST(ZoomTableTest, TruncatesPartsOfPixels)
{
    const ZoomTable table({641, 487});

    EXPECT_EQ(table.RegionFor(1), (PictureSize{576, 438})); // 576.9 x 438.3
    EXPECT_EQ(table.RegionFor(3), (PictureSize{448, 340})); // 448.7 x 340.9
    EXPECT_EQ(table.RegionFor(9), (PictureSize{64, 48}));   // 64.1 x 48.7
}

TEST(ZoomTableTest, CountsAZoomPastTheLastStepAsTheLastOne)
{
    const ZoomTable table({1000, 800});

    EXPECT_EQ(table.RegionFor(10), table.RegionFor(9));
    EXPECT_EQ(table.RegionFor(std::numeric_limits<std::int32_t>::max()), table.RegionFor(9));
}

TEST(ZoomTableTest, CountsANegativeZoomAsNone)
{
    const ZoomTable table({1000, 800});

    EXPECT_EQ(table.RegionFor(-3), table.RegionFor(0));
    EXPECT_EQ(table.RegionFor(std::numeric_limits<std::int32_t>::min()), table.RegionFor(0));
}

TEST(ZoomTableTest, KeepsAtLeastOnePixelOfASmallPicture)
{
    const ZoomTable table({5, 1});

    EXPECT_EQ(table.RegionFor(9), (PictureSize{1, 1}));
    EXPECT_EQ(table.RegionFor(1), (PictureSize{4, 1})); // 4.5 x 0.9
}

TEST(ZoomTableTest, IsEmptyForNoPicture)
{
    EXPECT_EQ(ZoomTable().RegionFor(4), PictureSize{});
    EXPECT_EQ(ZoomTable(PictureSize{}).RegionFor(0), PictureSize{});
}

} // namespace
} // namespace vxds
