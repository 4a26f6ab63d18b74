#include "FramesFixture.h"

#include <opencv2/imgproc.hpp>

#include <algorithm>
#include <array>
#include <cstdlib>
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

/// The colours of a picture of any width: the pixel that the last one of an odd width lacks has its
/// brightness and the colour of the pair before.
ReferencePicture ColoursOfAnyWidth(const ScriptedPicture& picture, int code)
{
    if (picture.widthPx % 2 == 0)
        return ColoursOf(picture, code);
    const std::size_t luma = code == cv::COLOR_YUV2BGR_UYVY ? 1 : 0;
    const std::size_t rowBytes = std::size_t{picture.widthPx} * 2;
    ScriptedPicture even = picture;
    even.widthPx += 1;
    even.bytes.clear();
    for (std::size_t y = 0; y < picture.heightPx; ++y) {
        const std::uint8_t* const row = &picture.bytes[y * rowBytes];
        even.bytes.insert(even.bytes.end(), row, row + rowBytes);
        std::array<std::uint8_t, 2> added{};
        added[luma] = row[rowBytes - 2 + luma];
        added[1 - luma] = picture.widthPx > 1 ? row[rowBytes - 4 + (1 - luma)] : 128;
        even.bytes.insert(even.bytes.end(), added.begin(), added.end());
    }
    return Cropped(ColoursOf(even, code), 0, 0, picture.widthPx, picture.heightPx);
}

TEST_F(VxDSStreamYuvTest, DrawsYuvPicturesOfOddAndTinySizes)
{
    Store(Setting::OutputPixelType, 1);
    for (const auto& [pixelType, code] :
         {std::pair{kYuyv, cv::COLOR_YUV2BGR_YUY2}, {kUyvy, cv::COLOR_YUV2BGR_UYVY}}) {
        for (const auto& [width, height] :
             {std::pair{1, 1}, {3, 2}, {1, 5}, {2, 1}, {5, 3}, {7, 1}, {33, 9}}) {
            Store(Setting::OutputWidth, static_cast<std::uint32_t>(width));
            Store(Setting::OutputHeight, static_cast<std::uint32_t>(height));
            Stream(width, height);
            Pin().UpdateOutputSize();
            UseType(3, width, height);
            const ScriptedPicture picture = PackedPicture(width, height, pixelType);
            TheCamera().QueuePicture(picture);
            CanarySample sample(static_cast<std::size_t>(width * height * 2));

            Fill(sample);

            EXPECT_EQ(sample.Copy(), AsYuy2(ColoursOfAnyWidth(picture, code)))
                << width << " x " << height << ", " << std::hex << pixelType;
        }
    }
}

TEST_F(VxDSStreamYuvTest, DrawsNothingIntoASmallerBitmap)
{
    Stream(6, 4);
    Store(Setting::OutputPixelType, 1);
    for (const auto& [width, height] : {std::pair{4, 4}, {6, 2}, {6, -2}, {1, 1}, {5, 3}}) {
        UseType(3, width, height);
        TheCamera().QueuePicture(PackedPicture(6, 4, kYuyv));
        CanarySample sample(6 * 4 * 2);

        Fill(sample);

        std::vector<std::uint8_t> expected(6 * 4 * 2, CanarySample::kStale);
        std::fill_n(expected.begin(), width * std::abs(height) * 2, std::uint8_t{0});
        EXPECT_EQ(sample.Copy(), expected)
            << width << " x " << height << ": as many bytes as the type names, and no more";
        EXPECT_TRUE(sample.time) << "it is a frame all the same";
    }
}

TEST_F(VxDSStreamYuvTest, CopiesAPictureWithoutRowPaddingIntoALargerBitmap)
{
    Stream(6, 4);
    Store(Setting::OutputPixelType, 1);
    UseType(3, 9, 5);
    const ScriptedPicture picture = PackedPicture(6, 4, kUyvy);
    TheCamera().QueuePicture(picture);
    CanarySample sample(9 * 5 * 2);

    Fill(sample);

    std::vector<std::uint8_t> expected(9 * 5 * 2, CanarySample::kStale);
    std::ranges::copy(AsYuy2(ColoursOf(picture, cv::COLOR_YUV2BGR_UYVY)), expected.begin());
    EXPECT_EQ(sample.Copy(), expected) << "contiguously, whatever the bitmap's width";
}

TEST_F(VxDSStreamYuvTest, ClearsTheNextFrameOnceWhenDiagnosticsAreSwitchedOff)
{
    Stream(6, 4);
    Store(Setting::OutputPixelType, 1);
    UseType(3, 9, 5);
    Pin().SetDiagnosticsEnabled(true);
    Pin().SetDiagnosticsEnabled(false);
    const ScriptedPicture picture = PackedPicture(6, 4, kYuyv);
    for (const std::uint8_t beside : {std::uint8_t{0}, CanarySample::kStale}) {
        TheCamera().QueuePicture(picture);
        CanarySample sample(9 * 5 * 2);

        Fill(sample);

        std::vector<std::uint8_t> expected(9 * 5 * 2, beside);
        std::ranges::copy(AsYuy2(ColoursOf(picture, cv::COLOR_YUV2BGR_YUY2)), expected.begin());
        EXPECT_EQ(sample.Copy(), expected);
    }
}

TEST_F(VxDSStreamYuvTest, ZeroesAFrameOfASizeThatCannotBe)
{
    Stream(4, 2);
    Store(Setting::OutputPixelType, 1);
    struct Size {
        std::uint32_t widthPx;
        std::uint32_t heightPx;
    };
    // Of the huge ones no picture can be made; their numbers of bytes are far beyond 32 bits.
    for (const Size& size :
         {Size{0x7FFFFFFF, 0x7FFFFFFF}, {0x7FFFFFFF, 0x40000000}, {0, 2}, {4, 0}, {0xFFFFFFFF, 2}}) {
        Store(Setting::Width, size.widthPx);
        Store(Setting::Height, size.heightPx);
        UseType(3, static_cast<int>(size.widthPx), static_cast<int>(size.heightPx));
        TheCamera().QueuePicture(PackedPicture(4, 2, kYuyv));
        CanarySample sample(4 * 2 * 2);

        Fill(sample);

        EXPECT_TRUE(sample.IsAll(0)) << size.widthPx << " x " << size.heightPx;
    }
}

TEST_F(VxDSStreamYuvTest, DrawsAHugeBitmapsPictureIntoASmallSample)
{
    Stream(4, 2);
    Store(Setting::OutputPixelType, 1);
    const ScriptedPicture picture = PackedPicture(4, 2, kYuyv);
    const std::vector<std::uint8_t> whole = AsYuy2(ColoursOf(picture, cv::COLOR_YUV2BGR_YUY2));
    UseType(3, 0x7FFFFFFF, 0x7FFFFFFF);
    for (const std::size_t bytes : {1U, 7U, 16U, 40U}) {
        TheCamera().QueuePicture(picture);
        CanarySample sample(bytes);

        Fill(sample);

        std::vector<std::uint8_t> expected(bytes, CanarySample::kStale);
        // Whole pixels: what is left of a cut one stays.
        std::copy_n(whole.begin(), std::min(bytes / 2 * 2, whole.size()), expected.begin());
        EXPECT_EQ(sample.Copy(), expected) << bytes;
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

TEST_F(VxDSStreamYuvTest, ShowsBlackBesideAnImageThatIsSmallerThanTheCamerasSize)
{
    Stream(8, 4);
    Store(Setting::OutputPixelType, 1);
    UseType(3, 8, 4);
    for (const auto& [pixelType, code] :
         {std::pair{kYuyv, cv::COLOR_YUV2BGR_YUY2}, {kUyvy, cv::COLOR_YUV2BGR_UYVY}}) {
        TheCamera().QueuePicture(PackedPicture(8, 4, pixelType)); // whose remains must not show
        const ScriptedPicture small = PackedPicture(3, 2, pixelType);
        TheCamera().QueuePicture(small);
        CanarySample first(8 * 4 * 2);
        CanarySample second(8 * 4 * 2);

        Fill(first);
        Fill(second);

        ScriptedPicture framed{8, 4, pixelType, {}, 0};
        for (std::size_t i = 0; i < 8 * 4; ++i) {
            const bool isUyvy = pixelType == kUyvy;
            framed.bytes.insert(framed.bytes.end(),
                                {std::uint8_t(isUyvy ? 128 : 0), std::uint8_t(isUyvy ? 0 : 128)});
        }
        for (std::size_t y = 0; y < 2; ++y)
            std::copy_n(&small.bytes[y * 6], 6, &framed.bytes[y * 16]);
        EXPECT_EQ(second.Copy(), AsYuy2(ColoursOf(framed, code))) << std::hex << pixelType;
    }
}

} // namespace
