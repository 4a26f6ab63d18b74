#include "FramesFixture.h"

#include <opencv2/imgproc.hpp>

#include <iterator>
#include <utility>

namespace {

using vxds::Setting;

class VxDSStreamYuvTest : public FramesFixture {};

/// Packed 4:2:2 of noise, as bytes in the order of the layout.
ScriptedPicture PackedPicture(int width, int height, std::uint32_t pixelType)
{
    ScriptedPicture picture{
        static_cast<std::uint32_t>(width), static_cast<std::uint32_t>(height), pixelType, {}, 0};
    std::uint32_t noise = 99;
    for (int i = 0; i < width * height * 2; ++i) {
        noise = noise * 1664525 + 1013904223;
        picture.bytes.push_back(static_cast<std::uint8_t>(noise >> 24));
    }
    return picture;
}

/// The colours of a packed picture, by the picture library's conversion.
ReferencePicture ColoursOf(const ScriptedPicture& picture, int code)
{
    cv::Mat packed(static_cast<int>(picture.heightPx), static_cast<int>(picture.widthPx), CV_8UC2,
                   const_cast<std::uint8_t*>(picture.bytes.data()));
    cv::Mat bgr;
    cv::cvtColor(packed, bgr, code);
    ReferencePicture colours{picture.widthPx, picture.heightPx, {}};
    for (int y = 0; y < bgr.rows; ++y)
        for (int x = 0; x < bgr.cols; ++x) {
            const auto pixel = bgr.at<cv::Vec3b>(y, x);
            colours.pixels.push_back({pixel[0], pixel[1], pixel[2]});
        }
    return colours;
}

TEST_F(VxDSStreamYuvTest, WritesYuy2FromBothLayouts)
{
    Stream(8, 4);
    Store(Setting::OutputPixelType, 1);
    UseType(3, 8, 4);
    struct Layout {
        std::uint32_t pixelType;
        int code;
    };
    for (const Layout& each :
         {Layout{0x0210001F, cv::COLOR_YUV2BGR_UYVY}, Layout{0x02100043, cv::COLOR_YUV2BGR_UYVY},
          Layout{0x02100044, cv::COLOR_YUV2BGR_UYVY}, Layout{0x02100045, cv::COLOR_YUV2BGR_UYVY},
          Layout{0x02100032, cv::COLOR_YUV2BGR_YUY2}, Layout{0x0210003B, cv::COLOR_YUV2BGR_YUY2},
          Layout{0x0210003E, cv::COLOR_YUV2BGR_YUY2}, Layout{0x02100041, cv::COLOR_YUV2BGR_YUY2}}) {
        const ScriptedPicture picture = PackedPicture(8, 4, each.pixelType);
        TheCamera().QueuePicture(picture);
        CanarySample sample(8 * 4 * 2);

        Fill(sample);

        EXPECT_EQ(sample.Copy(), AsYuy2(ColoursOf(picture, each.code))) << std::hex << each.pixelType;
    }
    EXPECT_EQ(Pin().Statistics().LastImageSize(), vxds::PictureSize{}) << "this path does not note it";
}

TEST_F(VxDSStreamYuvTest, ProcessesYuvInItsColours)
{
    ASSERT_TRUE(Settings().SetOutputSize(8, 6));
    Stream(16, 12);
    Store(Setting::OutputPixelType, 1);
    Store(Setting::KernelSize, 3);
    UseType(3, 8, 6);
    const ScriptedPicture picture = PackedPicture(16, 12, kUyvy);
    TheCamera().QueuePicture(picture);
    CanarySample sample(8 * 6 * 2);

    Fill(sample);

    EXPECT_EQ(sample.Copy(), AsYuy2(Median(Halved(ColoursOf(picture, cv::COLOR_YUV2BGR_UYVY)), 3)));
}

TEST_F(VxDSStreamYuvTest, ReadsAPaddedYuvImageByItsRows)
{
    Stream(4, 2);
    Store(Setting::OutputPixelType, 1);
    UseType(3, 4, 2);
    const ScriptedPicture plain = PackedPicture(4, 2, kYuyv);
    ScriptedPicture padded = plain;
    padded.rowPaddingBytes = 3;
    padded.bytes.insert(padded.bytes.begin() + 8, 3, 0xEE);
    padded.bytes.insert(padded.bytes.end(), 3, 0xEE);
    TheCamera().QueuePicture(padded);
    CanarySample sample(16);

    Fill(sample);

    EXPECT_EQ(sample.Copy(), AsYuy2(ColoursOf(plain, cv::COLOR_YUV2BGR_YUY2)));
}

TEST_F(VxDSStreamYuvTest, RefusesACameraWithoutYuvWithAZeroFrameAndATextThatSaysSo)
{
    Stream(4, 2);
    Store(Setting::OutputPixelType, 1);
    UseType(3, 4, 2);
    QueueEmptyPicture(); // Mono8
    CanarySample sample(100);
    EXPECT_EQ(Pin().Statistics().LastErrorText(), L"");

    Fill(sample);

    EXPECT_TRUE(sample.IsAll(0)) << "the whole sample";
    EXPECT_EQ(Pin().Statistics().LastErrorText(), L"No pixel conversion available to YUV422");
    EXPECT_TRUE(sample.time) << "it is a frame all the same";
}

TEST_F(VxDSStreamYuvTest, DrawsYuvPicturesOfOddAndTinySizes)
{
    Store(Setting::OutputPixelType, 1);
    for (const auto& [width, height] : {std::pair{1, 1}, {3, 2}, {1, 5}, {5, 3}, {7, 1}}) {
        Store(Setting::OutputWidth, static_cast<std::uint32_t>(width));
        Store(Setting::OutputHeight, static_cast<std::uint32_t>(height));
        Stream(width, height);
        Pin().UpdateOutputSize();
        UseType(3, width, height);
        const ScriptedPicture picture = PackedPicture(width, height, kYuyv);
        TheCamera().QueuePicture(picture);
        CanarySample sample(static_cast<std::size_t>(width * height * 2));

        Fill(sample);

        EXPECT_FALSE(sample.IsAll(CanarySample::kStale)) << width << " x " << height;
    }
}

TEST_F(VxDSStreamYuvTest, KeepsGreyOfAnOddWidthGrey)
{
    Stream(5, 2);
    Store(Setting::OutputPixelType, 1);
    UseType(3, 5, 2);
    ScriptedPicture grey{5, 2, kYuyv, {}, 0};
    for (int i = 0; i < 10; ++i)
        grey.bytes.insert(grey.bytes.end(), {126, 128}); // luma 126 of 16 to 235 is 128 of 255
    TheCamera().QueuePicture(grey);
    CanarySample sample(5 * 2 * 2);

    Fill(sample);

    for (std::size_t pixel = 0; pixel < 10; ++pixel) {
        EXPECT_EQ(sample.Bytes()[pixel * 2], 128) << pixel;
        EXPECT_EQ(sample.Bytes()[pixel * 2 + 1], 128) << pixel;
    }
}

TEST_F(VxDSStreamYuvTest, ReadsNoByteBehindAYuvImageThatIsShorterThanItSays)
{
    Stream(16, 16);
    Store(Setting::OutputPixelType, 1);
    UseType(3, 16, 16);
    for (const std::size_t bytes : {1u, 31u, 32u, 100u, 511u}) {
        ScriptedPicture liar = PackedPicture(16, 16, kYuyv);
        liar.bytes.resize(bytes);
        liar.bytes.shrink_to_fit();
        TheCamera().QueuePicture(liar);
        CanarySample sample(16 * 16 * 2);
        Fill(sample);
    }
    TheCamera().QueuePicture(PackedPicture(3, 1, kYuyv));
    CanarySample sample(16 * 16 * 2);
    Fill(sample);
    EXPECT_EQ(sample.Bytes()[16 * 16 * 2 - 1], 128) << "black beside the small picture";
}

} // namespace
