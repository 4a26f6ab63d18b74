#include "VxDSSource/overlay/OverlayText.h"
#include "VxDSSource/overlay/GdiPlusSession.h"

#include "GuardedFrame.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <string>
#include <tuple>
#include <vector>

namespace {

constexpr wchar_t kText[] =
    L"Device: 02-00-00-00-00-01\r\nRender size: 1280 x 1024\r\nBandwidth: 314.6 Mb/s\r\n";

constexpr WORD kDepths[] = {16, 24, 32};
constexpr WORD kOtherDepths[] = {8, 40, 48, 65528};

/// A picture from the top: rows without gaps.
struct Picture {
    std::size_t width = 0;
    std::size_t height = 0;
    std::size_t pixelBytes = 0;
    std::vector<std::uint8_t> bytes;

    [[nodiscard]] const std::uint8_t* Pixel(std::size_t x, std::size_t y) const
    {
        return bytes.data() + (y * width + x) * pixelBytes;
    }
    [[nodiscard]] bool IsEqualAt(const Picture& other, std::size_t x, std::size_t y) const
    {
        return std::memcmp(Pixel(x, y), other.Pixel(x, y), pixelBytes) == 0;
    }
};

/// The frame as a viewer sees it.
Picture SeenIn(const vxds::OverlayFrame& frame)
{
    Picture picture{static_cast<std::size_t>(frame.header.biWidth),
                    static_cast<std::size_t>(std::abs(frame.header.biHeight)),
                    frame.header.biBitCount / 8U,
                    {}};
    const std::size_t rowBytes = picture.width * picture.pixelBytes;
    for (std::size_t y = 0; y < picture.height; ++y) {
        const std::size_t row = frame.header.biHeight > 0 ? picture.height - 1 - y : y;
        const auto bytes = frame.memory.subspan(row * rowBytes, rowBytes);
        picture.bytes.insert(picture.bytes.end(), bytes.begin(), bytes.end());
    }
    return picture;
}

/// Copies between a picture and an ordinary bitmap of GDI+'s own.
void Exchange(Gdiplus::Bitmap& bitmap, Picture& picture, Gdiplus::ImageLockMode mode)
{
    Gdiplus::BitmapData data;
    const Gdiplus::Rect whole(0, 0, static_cast<INT>(picture.width), static_cast<INT>(picture.height));
    ASSERT_EQ(bitmap.LockBits(&whole, static_cast<UINT>(mode), bitmap.GetPixelFormat(), &data), Gdiplus::Ok);
    const std::size_t rowBytes = picture.width * picture.pixelBytes;
    for (std::size_t y = 0; y < picture.height; ++y) {
        void* const row =
            static_cast<std::uint8_t*>(data.Scan0) + static_cast<std::ptrdiff_t>(y) * data.Stride;
        std::uint8_t* const pixels = picture.bytes.data() + y * rowBytes;
        if (mode == Gdiplus::ImageLockModeWrite)
            std::memcpy(row, pixels, rowBytes);
        else
            std::memcpy(pixels, row, rowBytes);
    }
    ASSERT_EQ(bitmap.UnlockBits(&data), Gdiplus::Ok);
}

/// The text on the same picture, drawn by the usual road: a bitmap of the picture's depth and the wrapper
/// classes of GDI+. The fourth byte of a pixel, which is no colour, stays as it is.
Picture Rendering(const Picture& before, std::wstring text)
{
    Picture picture = before;
    std::erase(text, L'\r'); // which is no picture, but Wine 8 has one for it
    const Gdiplus::PixelFormat format = picture.pixelBytes == 2   ? PixelFormat16bppRGB555
                                        : picture.pixelBytes == 3 ? PixelFormat24bppRGB
                                                                  : PixelFormat32bppRGB;
    Gdiplus::Bitmap bitmap(static_cast<INT>(picture.width), static_cast<INT>(picture.height), format);
    Exchange(bitmap, picture, Gdiplus::ImageLockModeWrite);
    {
        Gdiplus::Graphics graphics(&bitmap);
        graphics.SetTextRenderingHint(Gdiplus::TextRenderingHintAntiAliasGridFit);
        const Gdiplus::Font font(L"Arial", 24, Gdiplus::FontStyleRegular, Gdiplus::UnitPixel);
        const Gdiplus::SolidBrush cyan(Gdiplus::Color(255, 0, 255, 255));
        EXPECT_EQ(graphics.DrawString(text.c_str(), static_cast<INT>(text.size()), &font,
                                      Gdiplus::PointF(25, 25), &cyan),
                  Gdiplus::Ok);
    }
    Exchange(bitmap, picture, Gdiplus::ImageLockModeRead);
    for (std::size_t i = 3; picture.pixelBytes == 4 && i < picture.bytes.size(); i += 4)
        picture.bytes[i] = before.bytes[i];
    return picture;
}

/// Where two pictures differ.
struct Box {
    std::size_t left = std::numeric_limits<std::size_t>::max();
    std::size_t top = std::numeric_limits<std::size_t>::max();
    std::size_t right = 0;
    std::size_t bottom = 0;
    std::size_t count = 0;
};

Box Difference(const Picture& a, const Picture& b)
{
    Box box;
    for (std::size_t y = 0; y < a.height; ++y) {
        for (std::size_t x = 0; x < a.width; ++x) {
            if (a.IsEqualAt(b, x, y))
                continue;
            box = {std::min(box.left, x), std::min(box.top, y), std::max(box.right, x),
                   std::max(box.bottom, y), box.count + 1};
        }
    }
    return box;
}

/// Whether a pixel's edges are smoothed in another way only: what the text leaves free or covers in one
/// picture it leaves free or covers in the other, and between the two it covers about as much.
bool IsAlikeAt(const Picture& seen, const Picture& ordinary, const Picture& before, std::size_t x,
               std::size_t y)
{
    constexpr std::uint8_t kCyan[] = {255, 255, 0};
    // Measured: GDI, which Wine 8 lets draw on 24 bits, covers up to 0.32 of a pixel more or less than GDI+'s
    // own code does on 32.
    constexpr double kLargestShare = 0.35;
    constexpr double kRounding = 3; // where a pixel was nearly cyan before
    const std::uint8_t* const is = seen.Pixel(x, y);
    const std::uint8_t* const other = ordinary.Pixel(x, y);
    const std::uint8_t* const was = before.Pixel(x, y);
    const bool isWhole = std::equal(other, other + 3, was) || std::equal(other, other + 3, kCyan);
    for (std::size_t k = 0; k < 3; ++k) {
        const double share = isWhole ? 0.0 : kLargestShare;
        if (std::abs(is[k] - other[k]) > share * std::abs(kCyan[k] - was[k]) + kRounding ||
            is[k] < std::min(was[k], kCyan[k]) || is[k] > std::max(was[k], kCyan[k]))
            return false;
    }
    return seen.pixelBytes < 4 || is[3] == was[3];
}

/// Pixels that are not what an ordinary bitmap of the frame's depth has. A frame of 32 bits may have been
/// drawn on by way of 24 bits.
std::size_t CountWrong(const Picture& seen, const Picture& before, vxds::BitsHandling handling)
{
    const Picture ordinary = Rendering(before, kText);
    if (before.pixelBytes != 4 || handling != vxds::BitsHandling::Copied)
        return Difference(seen, ordinary).count;
    std::size_t count = 0;
    for (std::size_t y = 0; y < seen.height; ++y)
        for (std::size_t x = 0; x < seen.width; ++x)
            count += IsAlikeAt(seen, ordinary, before, x, y) ? 0U : 1U;
    return count;
}

class OverlayTextTest : public testing::Test {
protected:
    vxds::GdiPlusSession m_session;
};

// A GDI+ that copies draws each frame but the first on a copy of another size and depth; so does every GDI+
// where rows are no multiples of four bytes.
TEST_F(OverlayTextTest, PutsTheTextWhereAnOrdinaryBitmapHasIt)
{
    for (const WORD bits : kDepths) {
        for (const LONG width : {400, 401, 402, 403}) {
            for (const LONG height : {150, -150, 151, -151}) {
                vxds::GdiPlusSession gdiPlus;
                for (const char* const which : {"first", "second"}) {
                    GuardedFrame frame(width, height, bits);
                    const Picture before = SeenIn(frame.Frame());
                    const vxds::BitsHandling known = gdiPlus.HandlingOf(bits / 8U);

                    EXPECT_EQ(vxds::DrawOverlayText(gdiPlus, frame.Frame(), kText), Gdiplus::Ok);

                    const Picture seen = SeenIn(frame.Frame());
                    EXPECT_EQ(CountWrong(seen, before, known), 0u)
                        << width << " x " << height << ", " << bits << " bits, " << which;
                    EXPECT_GT(Difference(seen, before).count, 2000u);
                }
            }
        }
    }
}

TEST_F(OverlayTextTest, KeepsTheOpacityOfPixels)
{
    for (const int opacity : {0, 1, 128, 255}) {
        vxds::GdiPlusSession gdiPlus;
        for (const char* const which : {"first", "second"}) {
            GuardedFrame frame(400, 150, 32);
            for (std::size_t i = 3; i < frame.Frame().memory.size(); i += 4)
                frame.Frame().memory[i] = static_cast<std::uint8_t>(opacity);
            const Picture before = SeenIn(frame.Frame());
            const vxds::BitsHandling known = gdiPlus.HandlingOf(4);

            std::ignore = vxds::DrawOverlayText(gdiPlus, frame.Frame(), kText);
            if (gdiPlus.HandlingOf(4) != vxds::BitsHandling::Copied)
                return; // GDI+ has the frame itself, and writes what it likes

            const Picture seen = SeenIn(frame.Frame());
            for (std::size_t i = 3; i < seen.bytes.size(); i += 4)
                ASSERT_EQ(seen.bytes[i], opacity) << which;
            EXPECT_EQ(CountWrong(seen, before, known), 0u) << opacity << ", " << which;
            EXPECT_GT(Difference(seen, before).count, 2000u);
        }
    }
}

TEST_F(OverlayTextTest, StartsTheText25PixelsFromTheTopLeftCorner)
{
    for (const LONG height : {150, -150}) {
        GuardedFrame frame(400, height, 24);
        std::ranges::fill(frame.Frame().memory, std::uint8_t{0});
        const Picture before = SeenIn(frame.Frame());

        std::ignore = vxds::DrawOverlayText(m_session, frame.Frame(), L"Device\r\nDevice");

        const Box box = Difference(SeenIn(frame.Frame()), before);
        EXPECT_GE(box.left, 25u);
        EXPECT_LE(box.left, 35u); // GDI+ leaves a sixth of the font's size free
        EXPECT_GE(box.top, 25u);
        EXPECT_LE(box.top, 35u);
        EXPECT_LT(box.right, 150u);
        EXPECT_GT(box.bottom, 60u) << "the second line";
        EXPECT_LT(box.bottom, 85u);
    }
}

TEST_F(OverlayTextTest, DrawsInCyanWithSmoothEdges)
{
    GuardedFrame frame(400, 150, 24);
    std::ranges::fill(frame.Frame().memory, std::uint8_t{0});

    std::ignore = vxds::DrawOverlayText(m_session, frame.Frame(), kText);

    const Picture seen = SeenIn(frame.Frame());
    std::size_t cyan = 0;
    std::size_t between = 0;
    for (std::size_t y = 0; y < seen.height; ++y) {
        for (std::size_t x = 0; x < seen.width; ++x) {
            const std::uint8_t* const pixel = seen.Pixel(x, y); // blue, green, red
            ASSERT_EQ(pixel[0], pixel[1]);
            ASSERT_EQ(pixel[2], 0);
            cyan += pixel[0] == 255 ? 1U : 0U;
            between += pixel[0] > 0 && pixel[0] < 255 ? 1U : 0U;
        }
    }
    EXPECT_GT(cyan, 500u);
    EXPECT_GT(between, 500u);
}

TEST_F(OverlayTextTest, CutsTheTextOffAtTheFramesEdges)
{
    const std::wstring longLine(200, L'W');
    GuardedFrame frame(300, 60, 24);
    const Picture before = SeenIn(frame.Frame());
    const Picture expected = Rendering(before, longLine + L"\r\n" + longLine + L"\r\n" + longLine);

    std::ignore =
        vxds::DrawOverlayText(m_session, frame.Frame(), longLine + L"\r\n" + longLine + L"\r\n" + longLine);

    const Picture seen = SeenIn(frame.Frame());
    EXPECT_EQ(Difference(seen, expected).count, 0u);
    const Box box = Difference(seen, before);
    EXPECT_GE(box.right, 298u);
    EXPECT_GE(box.bottom, 57u);
}

TEST_F(OverlayTextTest, LeavesAFrameAloneThatEndsBeforeTheText)
{
    for (const WORD bits : kDepths) {
        for (const LONG width : {1, 2, 3, 4, 5, 24, 25}) {
            for (const LONG height : {1, -1, 2, -3, 24, -25}) {
                vxds::GdiPlusSession gdiPlus;
                for (const char* const which : {"first", "second"}) {
                    GuardedFrame frame(width, height, bits);

                    EXPECT_EQ(vxds::DrawOverlayText(gdiPlus, frame.Frame(), kText), Gdiplus::Ok);

                    EXPECT_TRUE(frame.IsUntouched())
                        << width << " x " << height << ", " << bits << " bits, " << which;
                }
            }
        }
    }
}

TEST_F(OverlayTextTest, ShowsAsMuchOfTheTextAsASmallFrameHas)
{
    std::size_t drawn = 0;
    for (const WORD bits : kDepths) {
        for (const LONG width : {3, 26, 27, 29, 31, 33, 40, 61}) {
            for (const LONG height : {4, -5, 26, -27, 33, -34, 45, -61}) {
                vxds::GdiPlusSession gdiPlus;
                for (const char* const which : {"first", "second"}) {
                    GuardedFrame frame(width, height, bits);
                    const Picture before = SeenIn(frame.Frame());
                    const vxds::BitsHandling known = gdiPlus.HandlingOf(bits / 8U);

                    EXPECT_EQ(vxds::DrawOverlayText(gdiPlus, frame.Frame(), kText), Gdiplus::Ok);

                    const Picture seen = SeenIn(frame.Frame());
                    EXPECT_EQ(CountWrong(seen, before, known), 0u)
                        << width << " x " << height << ", " << bits << " bits, " << which;
                    drawn += Difference(seen, before).count;
                }
            }
        }
    }
    EXPECT_GT(drawn, 4000u) << "some of these frames have room for something";
}

TEST_F(OverlayTextTest, DrawsNoEmptyText)
{
    for (const WORD bits : kDepths) {
        GuardedFrame frame(101, 80, bits);

        std::ignore = vxds::DrawOverlayText(m_session, frame.Frame(), L"");

        EXPECT_TRUE(frame.IsUntouched());
    }
}

TEST_F(OverlayTextTest, LeavesAFrameAloneWhoseDepthGdiPlusCannotDrawOn)
{
    for (const WORD bits : kOtherDepths) {
        GuardedFrame frame(4, 80, bits);

        std::ignore = vxds::DrawOverlayText(m_session, frame.Frame(), kText);

        EXPECT_TRUE(frame.IsUntouched()) << bits;
    }
}

TEST_F(OverlayTextTest, ReadsNoColourTableBehindTheHeader)
{
    GuardedFrame frame(101, 80, 24);
    frame.Frame().header.biClrUsed = 0xFFFFFFFF;
    frame.Frame().header.biSize = 0xFFFFFFFF;
    const Picture expected = Rendering(SeenIn(frame.Frame()), kText);

    std::ignore = vxds::DrawOverlayText(m_session, frame.Frame(), kText);

    EXPECT_EQ(Difference(SeenIn(frame.Frame()), expected).count, 0u);
}

TEST_F(OverlayTextTest, DrawsOneFrameAfterTheOther)
{
    GuardedFrame first(401, 150, 24);
    GuardedFrame second(401, 150, 24);

    std::ignore = vxds::DrawOverlayText(m_session, first.Frame(), kText);
    std::ignore = vxds::DrawOverlayText(m_session, second.Frame(), kText);

    EXPECT_EQ(first.Bytes(), second.Bytes());
}

} // namespace
