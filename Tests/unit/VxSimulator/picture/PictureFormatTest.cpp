#include "VxSimulator/picture/PictureFormat.h"

#include <gtest/gtest.h>

#include <set>

namespace {

using namespace simulator;

TEST(PictureFormatTest, FindsAFormatByCode)
{
    const PictureFormat* format = FindPictureFormat(0x01080009u);

    ASSERT_NE(format, nullptr);
    EXPECT_EQ(format->name, "BayerRG8");
    EXPECT_EQ(format->layout, PixelLayout::BayerRG);
}

TEST(PictureFormatTest, FindsAFormatByName)
{
    const PictureFormat* format = FindPictureFormat("YUV422_8");

    ASSERT_NE(format, nullptr);
    EXPECT_EQ(format->code, 0x02100032u);
    EXPECT_EQ(format->layout, PixelLayout::Yuyv);
}

TEST(PictureFormatTest, KnowsNoOtherFormats)
{
    EXPECT_EQ(FindPictureFormat(0x01100003u), nullptr); // Mono10
    EXPECT_EQ(FindPictureFormat(0u), nullptr);
    EXPECT_EQ(FindPictureFormat("mono8"), nullptr);
    EXPECT_EQ(FindPictureFormat(""), nullptr);
}

TEST(PictureFormatTest, TheCodeTellsTheBytesOfAPixel)
{
    std::set<std::uint32_t> codes;
    for (const PictureFormat& format : PictureFormats()) {
        EXPECT_EQ((format.code >> 16) & 0xFF, format.bytesPerPixel * 8) << format.name;
        codes.insert(format.code);
    }
    EXPECT_EQ(codes.size(), PictureFormats().size());
}

TEST(PictureFormatTest, CountsTheBytesOfAPicture)
{
    EXPECT_EQ(PictureBytes(*FindPictureFormat("Mono8"), 640, 480), 307200u);
    EXPECT_EQ(PictureBytes(*FindPictureFormat("BGR8"), 640, 480), 921600u);
    EXPECT_EQ(PictureBytes(*FindPictureFormat("YUV422_8"), 65536, 65536), 8589934592u);
}

} // namespace
