#include "VxDSSource/overlay/GdiPlusSession.h"
#include "VxDSSource/overlay/OverlayText.h"

#include "GuardedFrame.h"
#include "ScriptedGdiPlus.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <initializer_list>
#include <string>
#include <tuple>
#include <vector>

namespace {

using Lines = std::vector<std::string>;

constexpr WORD kDepths[] = {16, 24, 32};

// From the graphics context to the end of what it needs, around one call that uses it all.
Lines CallsAround(const char* use)
{
    return {"GdipAlloc",
            "GdipGetImageGraphicsContext",
            "GdipSetCompositingMode",
            "GdipSetCompositingQuality",
            "GdipSetInterpolationMode",
            "GdipSetPixelOffsetMode",
            "GdipSetSmoothingMode",
            "GdipSetTextRenderingHint",
            "GdipCreateFontFamilyFromName",
            "GdipCreateFont",
            "GdipCreateSolidFill",
            use,
            "GdipDeleteGraphics",
            "GdipFree",
            "GdipDeleteBrush",
            "GdipDeleteFont",
            "GdipDeleteFontFamily"};
}

Lines Joined(std::initializer_list<Lines> parts)
{
    Lines all;
    for (const Lines& each : parts)
        all.insert(all.end(), each.begin(), each.end());
    return all;
}

const Lines kDrawing = Joined({{"GdipCreateBitmapFromGdiDib"}, CallsAround("GdipDrawString")});
const Lines kLookingAtBits = {"GdipGetImagePixelFormat", "GdipBitmapLockBits", "GdipBitmapUnlockBits"};
const Lines kDisposal = {"GdipDisposeImage"};
const Lines kMeasuring = Joined({{"GdipCreateBitmapFromScan0"}, CallsAround("GdipMeasureString"), kDisposal});

/// Where it is known that bits are wrapped.
const Lines kCallsOfOneText = Joined({kDrawing, kDisposal});
/// Where it has to be found out.
const Lines kCallsOfTheFirstText = Joined({kDrawing, kLookingAtBits, kDisposal});
/// Where bits are copied.
const Lines kCallsOnACopy = Joined({kMeasuring, kDrawing, kLookingAtBits, kDisposal});

/// What became of the fourth byte of a pixel, which is no colour.
enum class Fourth {
    Drawn, ///< GDI+ has drawn on it: on the frame itself
    Kept,  ///< nothing that was drawn elsewhere is taken over
};

/// The frame with the pattern at its place, as a viewer sees it; everything else as it was.
std::vector<std::uint8_t> ExpectedOf(const BITMAPINFOHEADER& header, Fourth fourth = Fourth::Drawn)
{
    const auto width = static_cast<std::size_t>(header.biWidth);
    const auto height = static_cast<std::size_t>(std::abs(header.biHeight));
    const std::size_t pixelBytes = header.biBitCount / 8U;
    std::vector<std::uint8_t> bytes;
    for (std::size_t row = 0; row < height; ++row) {
        const std::size_t y = header.biHeight > 0 ? height - 1 - row : row;
        for (std::size_t x = 0; x < width; ++x)
            for (std::size_t k = 0; k < pixelBytes; ++k)
                bytes.push_back(ScriptedGdiPlus::IsDrawn(x, y) && (k < 3 || fourth == Fourth::Drawn)
                                    ? ScriptedGdiPlus::DrawnByte(x, y, k)
                                    : GuardedFrame::StaleByte(bytes.size()));
    }
    return bytes;
}

class OverlayCallsTest : public testing::Test {
protected:
    OverlayCallsTest() { TheGdiPlus().Reset(); }
    ~OverlayCallsTest() override { TheGdiPlus().Reset(); } // checks that nothing is left

    /// Draws with a GDI+ that has just started, and remembers the calls that took.
    Gdiplus::GpStatus Draw(GuardedFrame& frame, std::wstring_view text = L"text")
    {
        vxds::GdiPlusSession session;
        return DrawWith(session, frame, text);
    }

    Gdiplus::GpStatus DrawWith(vxds::GdiPlusSession& session, GuardedFrame& frame,
                               std::wstring_view text = L"text")
    {
        TheGdiPlus().calls.clear();
        const Gdiplus::GpStatus status = vxds::DrawOverlayText(session, frame.Frame(), text);
        m_calls = TheGdiPlus().calls;
        return status;
    }

    Lines m_calls;
};

// --- What GDI+ is asked for.

TEST_F(OverlayCallsTest, CallsInTheFixedOrder)
{
    vxds::GdiPlusSession session;
    for (int i = 0; i < 3; ++i) {
        GuardedFrame frame(8, 6, 24);

        EXPECT_EQ(DrawWith(session, frame), Gdiplus::Ok);

        EXPECT_EQ(m_calls, i == 0 ? kCallsOfTheFirstText : kCallsOfOneText);
    }
}

TEST_F(OverlayCallsTest, CallsInTheFixedOrderOnACopy)
{
    TheGdiPlus().copiesBits = true;
    vxds::GdiPlusSession session;
    for (int i = 0; i < 3; ++i) {
        GuardedFrame frame(8, 6, 24);

        EXPECT_EQ(DrawWith(session, frame), Gdiplus::Ok);

        EXPECT_EQ(m_calls, i == 0 ? kCallsOfTheFirstText : kCallsOnACopy);
    }
}

TEST_F(OverlayCallsTest, CallsInTheFixedOrderWhereRowsAreNoMultiplesOfFourBytes)
{
    for (const bool copiesBits : {false, true}) {
        TheGdiPlus().copiesBits = copiesBits;
        vxds::GdiPlusSession session;
        for (int i = 0; i < 3; ++i) {
            GuardedFrame frame(7, 6, 24);

            EXPECT_EQ(DrawWith(session, frame), Gdiplus::Ok);

            const bool isFetched = copiesBits || i == 0;
            EXPECT_EQ(m_calls, isFetched ? kCallsOnACopy : Joined({kMeasuring, kCallsOfOneText}));
            EXPECT_EQ(frame.Bytes(), ExpectedOf(frame.Frame().header));
        }
    }
}

TEST_F(OverlayCallsTest, DescribesTheBitmapByTheTypesHeader)
{
    GuardedFrame frame(8, -6, 16);
    frame.Frame().header.biCompression = 0x32595559; // YUY2
    frame.Frame().header.biSizeImage = 7;
    frame.Frame().header.biXPelsPerMeter = 5;

    std::ignore = Draw(frame);

    const BITMAPINFOHEADER& header = TheGdiPlus().header;
    EXPECT_EQ(header.biSize, 40u);
    EXPECT_EQ(header.biWidth, 8);
    EXPECT_EQ(header.biHeight, -6);
    EXPECT_EQ(header.biPlanes, 1);
    EXPECT_EQ(header.biBitCount, 16);
    EXPECT_EQ(header.biCompression, static_cast<DWORD>(BI_RGB));
    EXPECT_EQ(header.biSizeImage, 7u);
    EXPECT_EQ(header.biXPelsPerMeter, 5);
    const RGBQUAD& colour = TheGdiPlus().firstColour;
    EXPECT_EQ(colour.rgbBlue + colour.rgbGreen + colour.rgbRed + colour.rgbReserved, 0);
}

TEST_F(OverlayCallsTest, AsksForTheFixedLook)
{
    GuardedFrame frame(8, 6, 32);

    std::ignore = Draw(frame, std::wstring_view(L"one\r\ntwo more").substr(0, 8));

    const ScriptedGdiPlus& asked = TheGdiPlus();
    EXPECT_EQ(asked.renderingOptions, (std::vector{0, 1, 2, 1, 3, 3}));
    EXPECT_EQ(asked.family, L"Arial");
    EXPECT_EQ(asked.fontCollection, nullptr);
    EXPECT_EQ(asked.fontSize, 24.0F);
    EXPECT_EQ(asked.fontStyle, 0);
    EXPECT_EQ(asked.fontUnit, 2);
    EXPECT_EQ(asked.colour, 0xFF00FFFFu);
    EXPECT_EQ(asked.text, L"one\ntwo") << "a line feed is a line's end, too, and cannot be seen";
    EXPECT_EQ(asked.place.X, 25.0F);
    EXPECT_EQ(asked.place.Y, 25.0F);
    EXPECT_EQ(asked.place.Width, 0.0F);
    EXPECT_EQ(asked.place.Height, 0.0F);
    EXPECT_EQ(asked.stringFormat, nullptr);
}

TEST_F(OverlayCallsTest, KeepsACarriageReturnThatEndsNoLine)
{
    GuardedFrame frame(8, 6, 24);

    std::ignore = Draw(frame, L"\r\n\r\r\na\rb\r");

    EXPECT_EQ(TheGdiPlus().text, L"\n\r\na\rb\r");
}

TEST_F(OverlayCallsTest, HandsOverTheFrameItselfWhereRowsAreMultiplesOfFourBytes)
{
    for (const WORD bits : kDepths) {
        GuardedFrame frame(8, 6, bits);

        std::ignore = Draw(frame);

        EXPECT_EQ(TheGdiPlus().bits, frame.Frame().memory.data()) << bits;
    }
}

// --- Where the drawing lands.

TEST_F(OverlayCallsTest, LandsInTheFrameWhetherBitsAreWrappedOrCopied)
{
    for (const bool copiesBits : {false, true}) {
        for (const WORD bits : kDepths) {
            for (const LONG width : {1, 2, 3, 4, 5, 7, 8, 31, 641}) {
                for (const LONG height : {1, -1, 2, -2, 9, -9}) {
                    TheGdiPlus().copiesBits = copiesBits;
                    vxds::GdiPlusSession session;
                    for (const char* const which : {"first", "second"}) {
                        GuardedFrame frame(width, height, bits);

                        EXPECT_EQ(DrawWith(session, frame), Gdiplus::Ok);

                        const Fourth fourth = copiesBits ? Fourth::Kept : Fourth::Drawn;
                        EXPECT_EQ(frame.Bytes(), ExpectedOf(frame.Frame().header, fourth))
                            << width << " x " << height << ", " << bits << " bits, copied: " << copiesBits
                            << ", " << which;
                    }
                }
            }
        }
    }
}

TEST_F(OverlayCallsTest, LeavesMemoryBehindTheFrameAlone)
{
    for (const bool copiesBits : {false, true}) {
        TheGdiPlus().copiesBits = copiesBits;
        GuardedFrame frame(7, 8, 24);
        frame.Frame().header.biHeight = 5; // the sample is larger than its type

        std::ignore = Draw(frame);

        for (std::size_t i = std::size_t{7} * 5 * 3; i < frame.Frame().memory.size(); ++i)
            ASSERT_EQ(frame.Frame().memory[i], GuardedFrame::StaleByte(i));
    }
}

// --- How much is handed over.

TEST_F(OverlayCallsTest, GivesAGdiPlusThatWrapsTheFrameItselfEachTime)
{
    vxds::GdiPlusSession session;
    for (int i = 0; i < 3; ++i) {
        GuardedFrame frame(400, 300, 24);

        EXPECT_EQ(DrawWith(session, frame), Gdiplus::Ok);

        EXPECT_EQ(TheGdiPlus().bits, frame.Frame().memory.data());
        EXPECT_EQ(frame.Bytes(), ExpectedOf(frame.Frame().header));
    }
}

TEST_F(OverlayCallsTest, GivesAGdiPlusThatCopiesOnlyTheCoveredPartAfterTheFirstFrame)
{
    for (const LONG height : {300, -300}) {
        TheGdiPlus().copiesBits = true;
        TheGdiPlus().measured = {25, 25, 100.5, 50};
        vxds::GdiPlusSession session;
        GuardedFrame first(400, height, 24);
        EXPECT_EQ(DrawWith(session, first), Gdiplus::Ok);
        EXPECT_EQ(TheGdiPlus().header.biWidth, 400);
        EXPECT_EQ(first.Bytes(), ExpectedOf(first.Frame().header));
        GuardedFrame second(400, height, 24);

        EXPECT_EQ(DrawWith(session, second), Gdiplus::Ok);

        EXPECT_GE(TheGdiPlus().header.biWidth, 126);
        EXPECT_LE(TheGdiPlus().header.biWidth, 160);
        EXPECT_GE(std::abs(TheGdiPlus().header.biHeight), 75);
        EXPECT_LE(std::abs(TheGdiPlus().header.biHeight), 110);
        const std::vector<std::uint8_t> whole = ExpectedOf(second.Frame().header);
        const std::vector<std::uint8_t> drawn = second.Bytes();
        for (std::size_t i = 0; i < whole.size(); ++i) {
            const std::size_t row = i / 1200;
            const std::size_t y = height > 0 ? 299 - row : row;
            const std::size_t x = i % 1200 / 3;
            const bool isCovered = x < static_cast<std::size_t>(TheGdiPlus().header.biWidth) &&
                                   y < static_cast<std::size_t>(std::abs(TheGdiPlus().header.biHeight));
            ASSERT_EQ(drawn[i], isCovered ? whole[i] : GuardedFrame::StaleByte(i)) << x << ", " << y;
        }
    }
}

TEST_F(OverlayCallsTest, DrawsOnACopyWithoutTheFourthByteOfAPixel)
{
    TheGdiPlus().copiesBits = true;
    vxds::GdiPlusSession session;
    for (const int drawnBits : {32, 24, 24}) {
        GuardedFrame frame(8, 6, 32);

        EXPECT_EQ(DrawWith(session, frame), Gdiplus::Ok);

        EXPECT_EQ(TheGdiPlus().header.biBitCount, drawnBits);
        EXPECT_EQ(frame.Bytes(), ExpectedOf(frame.Frame().header, Fourth::Kept));
    }
}

TEST_F(OverlayCallsTest, FindsOutOnceForEachDepth)
{
    vxds::GdiPlusSession session;
    for (const int round : {1, 2}) {
        for (const WORD bits : kDepths) {
            TheGdiPlus().copiesBits = bits == 16; // as some GDI+ might
            GuardedFrame frame(8, 6, bits);

            EXPECT_EQ(DrawWith(session, frame), Gdiplus::Ok);

            EXPECT_EQ(m_calls, round == 1   ? kCallsOfTheFirstText
                               : bits == 16 ? kCallsOnACopy
                                            : kCallsOfOneText)
                << bits;
            EXPECT_EQ(frame.Bytes(), ExpectedOf(frame.Frame().header)) << bits;
        }
    }
}

TEST_F(OverlayCallsTest, AsksAgainWhenItCouldNotFindOut)
{
    for (const char* const refused : {"GdipGetImagePixelFormat", "GdipBitmapLockBits"}) {
        for (const bool copiesBits : {false, true}) {
            TheGdiPlus().copiesBits = copiesBits;
            TheGdiPlus().failing = refused;
            vxds::GdiPlusSession session;
            GuardedFrame first(8, 6, 24);
            EXPECT_EQ(DrawWith(session, first), Gdiplus::Ok);
            EXPECT_EQ(first.IsUntouched(), copiesBits) << "nobody knows where the text is";
            TheGdiPlus().failing.clear();

            for (int i = 0; i < 2; ++i) {
                GuardedFrame frame(8, 6, 24);
                EXPECT_EQ(DrawWith(session, frame), Gdiplus::Ok);

                EXPECT_EQ(frame.Bytes(), ExpectedOf(frame.Frame().header)) << refused << ", " << copiesBits;
                EXPECT_EQ(std::ranges::count(m_calls, "GdipBitmapLockBits"), copiesBits || i == 0 ? 1 : 0);
            }
        }
    }
}

TEST_F(OverlayCallsTest, DrawsAgainAfterAFrameWhoseBitsCouldNotBeFetched)
{
    TheGdiPlus().copiesBits = true;
    vxds::GdiPlusSession session;
    GuardedFrame first(8, 6, 24);
    std::ignore = DrawWith(session, first);
    TheGdiPlus().failing = "GdipBitmapLockBits";
    GuardedFrame second(8, 6, 24);
    EXPECT_EQ(DrawWith(session, second), Gdiplus::Ok);
    EXPECT_TRUE(second.IsUntouched());
    TheGdiPlus().failing.clear();
    GuardedFrame third(8, 6, 24);

    EXPECT_EQ(DrawWith(session, third), Gdiplus::Ok);

    EXPECT_EQ(third.Bytes(), ExpectedOf(third.Frame().header));
}

TEST_F(OverlayCallsTest, NeedsNoFetchingFromACopyThatWasDrawnOn)
{
    TheGdiPlus().failing = "GdipBitmapLockBits";
    GuardedFrame frame(7, 6, 24);

    EXPECT_EQ(Draw(frame), Gdiplus::Ok);

    EXPECT_EQ(frame.Bytes(), ExpectedOf(frame.Frame().header));
}

TEST_F(OverlayCallsTest, DrawsOnACopyOfTheWholeFrameWhenTheTextCannotBeMeasured)
{
    for (const char* const failing : {"GdipCreateBitmapFromScan0", "GdipMeasureString"}) {
        TheGdiPlus().failing = failing;
        TheGdiPlus().measured = {25, 25, 1, 1};
        GuardedFrame frame(301, 200, 24);

        EXPECT_EQ(Draw(frame), Gdiplus::Ok);

        EXPECT_EQ(frame.Bytes(), ExpectedOf(frame.Frame().header)) << failing;
    }
}

TEST_F(OverlayCallsTest, DrawsNothingOnACopyWhenTheTextCoversNothing)
{
    for (const Gdiplus::RectF& box :
         {Gdiplus::RectF(), Gdiplus::RectF(25, 25, 0, 9), Gdiplus::RectF(25, 25, 9, 0)}) {
        TheGdiPlus().measured = box;
        GuardedFrame frame(7, 6, 24);

        std::ignore = Draw(frame);

        EXPECT_TRUE(frame.IsUntouched());
    }
}

// --- What cannot be drawn.

TEST_F(OverlayCallsTest, DrawsNoEmptyText)
{
    GuardedFrame frame(8, 6, 24);

    std::ignore = Draw(frame, L"");

    EXPECT_TRUE(frame.IsUntouched());
}

TEST_F(OverlayCallsTest, LeavesAFrameAloneThatIsSmallerThanItsType)
{
    GuardedFrame frame(8, 6, 24);
    frame.Frame().header.biHeight = 7;

    std::ignore = Draw(frame);

    EXPECT_EQ(m_calls, Lines{});
    EXPECT_TRUE(frame.IsUntouched());
}

TEST_F(OverlayCallsTest, TakesTheRemainingStepsWhenOneFails)
{
    const Lines needed = {"GdipCreateBitmapFromGdiDib",   "GdipGetImageGraphicsContext",
                          "GdipCreateFontFamilyFromName", "GdipCreateFont",
                          "GdipCreateSolidFill",          "GdipDrawString"};
    for (const std::string& failing : kCallsOfTheFirstText) {
        if (failing == "GdipAlloc" || failing == "GdipFree")
            continue; // the one is tested by itself, the other cannot fail
        for (const bool copiesBits : {false, true}) {
            TheGdiPlus().Reset();
            TheGdiPlus().failing = failing;
            TheGdiPlus().copiesBits = copiesBits;
            GuardedFrame frame(8, 6, 24);

            std::ignore = Draw(frame);

            const bool isFetched = failing != "GdipGetImagePixelFormat" && failing != "GdipBitmapLockBits";
            const bool isDrawn =
                std::ranges::find(needed, failing) == needed.end() && (isFetched || !copiesBits);
            EXPECT_EQ(frame.Bytes() == ExpectedOf(frame.Frame().header), isDrawn) << failing;
            EXPECT_EQ(frame.IsUntouched(), !isDrawn) << failing;
            EXPECT_EQ(TheGdiPlus().liveObjects, 0) << failing;
            Lines steps = m_calls;
            std::erase_if(steps, [](const std::string& each) {
                return std::ranges::find(kLookingAtBits, each) != kLookingAtBits.end();
            });
            EXPECT_EQ(steps, kCallsOfOneText) << failing;
        }
    }
}

TEST_F(OverlayCallsTest, LeavesNothingBehindWhenAStepOnACopyFails)
{
    // Without these there is no text, or no way to it where bits are copied.
    const Lines needed = {"GdipCreateBitmapFromGdiDib",   "GdipGetImageGraphicsContext",
                          "GdipCreateFontFamilyFromName", "GdipCreateFont",
                          "GdipCreateSolidFill",          "GdipDrawString"};
    const Lines neededToFetch = {"GdipGetImagePixelFormat", "GdipBitmapLockBits"};
    for (const std::string& failing : kCallsOnACopy) {
        if (failing == "GdipAlloc" || failing == "GdipFree")
            continue; // the one is tested by itself, the other cannot fail
        for (const bool copiesBits : {false, true}) {
            TheGdiPlus().Reset();
            TheGdiPlus().failing = failing;
            TheGdiPlus().copiesBits = copiesBits;
            GuardedFrame frame(7, 6, 24);

            std::ignore = Draw(frame);

            const bool isDrawn = std::ranges::find(needed, failing) == needed.end();
            const bool isFetched =
                !copiesBits || std::ranges::find(neededToFetch, failing) == neededToFetch.end();
            EXPECT_EQ(frame.Bytes() == ExpectedOf(frame.Frame().header), isDrawn && isFetched) << failing;
            EXPECT_EQ(frame.IsUntouched(), !isDrawn || !isFetched) << failing;
            EXPECT_EQ(TheGdiPlus().liveObjects, 0) << failing;
        }
    }
}

TEST_F(OverlayCallsTest, LeavesTheFrameWithoutTextWhenGdiPlusHasNoMemory)
{
    TheGdiPlus().hasAllocator = false;
    GuardedFrame frame(8, 6, 24);

    std::ignore = Draw(frame);

    EXPECT_TRUE(frame.IsUntouched());
    EXPECT_EQ(m_calls.back(), "GdipDisposeImage");
}

// --- Start and end.

TEST_F(OverlayCallsTest, StartsGdiPlusWithItsOwnThreadAndCodecs)
{
    {
        const vxds::GdiPlusSession session;

        ASSERT_TRUE(TheGdiPlus().startup);
        EXPECT_EQ(TheGdiPlus().startup->GdiplusVersion, 1u);
        EXPECT_EQ(TheGdiPlus().startup->DebugEventCallback, nullptr);
        EXPECT_EQ(TheGdiPlus().startup->SuppressBackgroundThread, FALSE);
        EXPECT_EQ(TheGdiPlus().startup->SuppressExternalCodecs, FALSE);
        EXPECT_EQ(TheGdiPlus().startupOutput, nullptr);
        EXPECT_EQ(TheGdiPlus().shutDown, std::vector<ULONG_PTR>{});
    }

    EXPECT_EQ(TheGdiPlus().shutDown, std::vector<ULONG_PTR>{ScriptedGdiPlus::kToken});
}

TEST_F(OverlayCallsTest, EndsNothingThatDidNotStart)
{
    TheGdiPlus().failing = "GdiplusStartup";
    {
        const vxds::GdiPlusSession session;
    }

    EXPECT_EQ(TheGdiPlus().shutDown, std::vector<ULONG_PTR>{});
}

} // namespace
