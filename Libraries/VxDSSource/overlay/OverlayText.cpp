#include "VxDSSource/overlay/OverlayText.h"

#include "VxDSSource/overlay/FrameRows.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <functional>
#include <limits>
#include <memory>
#include <new>
#include <optional>
#include <span>
#include <string>
#include <tuple>

// GDI+ through its flat functions: the wrapper classes of its headers are not the same in all tool chains.
using namespace Gdiplus;
using namespace Gdiplus::DllExports;

namespace vxds {

namespace {

// Fixed: how the text looks.
constexpr wchar_t kFontFamily[] = L"Arial";
constexpr REAL kFontSizePx = 24.0F;
constexpr ARGB kOpaqueCyan = 0xFF00FFFF;
constexpr REAL kMarginPx = 25.0F;

// Chosen: room for pixels beside what is measured; as much as the font's size.
constexpr std::size_t kSlackPx = 24;

constexpr std::size_t kBitsPerByte = 8;
constexpr std::size_t kColourBytes = 3; // blue, green, red

/// A bitmap's description with room for every colour table that GDI+ might look for.
struct BitmapDescription {
    BITMAPINFOHEADER header;
    RGBQUAD colours[256];
};

/// GDI+'s graphics context, in memory of GDI+'s own, and how the last call that failed ended.
struct GraphicsWrapper {
    GpGraphics* graphics = nullptr;
    GpStatus lastStatus = Ok;

    /// A call that fails is remembered and changes nothing else: those that need its result fail in turn.
    void Note(GpStatus status)
    {
        if (status != Ok)
            lastStatus = status;
    }
};

/// Font, brush and graphics context for text on a bitmap; made and released in the fixed order.
class TextOnBitmap {
public:
    /// @param bitmap  null: nothing is drawn
    explicit TextOnBitmap(GpBitmap* bitmap) : m_storage(GdipAlloc(sizeof(GraphicsWrapper)))
    {
        if (m_storage == nullptr)
            return;
        m_wrapper = new (m_storage) GraphicsWrapper;
        m_wrapper->Note(GdipGetImageGraphicsContext(bitmap, &m_wrapper->graphics));
        m_wrapper->Note(GdipSetCompositingMode(m_wrapper->graphics, CompositingModeSourceOver));
        m_wrapper->Note(GdipSetCompositingQuality(m_wrapper->graphics, CompositingQualityHighSpeed));
        m_wrapper->Note(GdipSetInterpolationMode(m_wrapper->graphics, InterpolationModeHighQuality));
        m_wrapper->Note(GdipSetPixelOffsetMode(m_wrapper->graphics, PixelOffsetModeHighSpeed));
        m_wrapper->Note(GdipSetSmoothingMode(m_wrapper->graphics, SmoothingModeNone));
        m_wrapper->Note(GdipSetTextRenderingHint(m_wrapper->graphics, TextRenderingHintAntiAliasGridFit));
        m_wrapper->Note(GdipCreateFontFamilyFromName(kFontFamily, nullptr, &m_family));
        m_wrapper->Note(GdipCreateFont(m_family, kFontSizePx, FontStyleRegular, UnitPixel, &m_font));
        m_wrapper->Note(GdipCreateSolidFill(kOpaqueCyan, &m_brush));
    }

    ~TextOnBitmap()
    {
        if (m_wrapper == nullptr)
            return;
        GdipDeleteGraphics(m_wrapper->graphics);
        GdipFree(m_storage); // the wrapper has nothing to destroy
        GdipDeleteBrush(m_brush);
        GdipDeleteFont(m_font);
        GdipDeleteFontFamily(m_family);
    }

    TextOnBitmap(const TextOnBitmap&) = delete;
    TextOnBitmap& operator=(const TextOnBitmap&) = delete;

    void Draw(std::wstring_view text)
    {
        if (m_wrapper != nullptr)
            m_wrapper->Note(GdipDrawString(m_wrapper->graphics, text.data(), static_cast<INT>(text.size()),
                                           m_font, &m_place, nullptr, m_brush));
    }

    /// @return  what the text covers; empty when that cannot be told
    [[nodiscard]] RectF Measure(std::wstring_view text)
    {
        RectF box;
        if (m_wrapper != nullptr)
            m_wrapper->Note(GdipMeasureString(m_wrapper->graphics, text.data(), static_cast<INT>(text.size()),
                                              m_font, &m_place, nullptr, &box, nullptr, nullptr));
        return box;
    }

private:
    const RectF m_place{kMarginPx, kMarginPx, 0.0F, 0.0F}; // without a size: neither wrapped nor clipped
    void* const m_storage;                                 // of m_wrapper
    GraphicsWrapper* m_wrapper = nullptr;
    GpFontFamily* m_family = nullptr;
    GpFont* m_font = nullptr;
    GpSolidFill* m_brush = nullptr;
};

/// A part of a picture that starts in its top left corner.
struct Part {
    std::size_t widthPx = 0;
    std::size_t rows = 0;
};

std::size_t PixelsUpTo(REAL edge, std::size_t limit)
{
    if (!(edge > 0.0F))
        return 0;
    return std::min(static_cast<std::size_t>(std::min(edge, static_cast<REAL>(limit))) + kSlackPx, limit);
}

/// The text as GDI+ is given it: lines end with a line feed alone, which means the same to GDI+. A carriage
/// return before it Wine 8 shows as a box (seen).
std::wstring WithoutCarriageReturns(std::wstring_view text)
{
    std::wstring lines;
    for (std::size_t i = 0; i < text.size(); ++i)
        if (!text.substr(i).starts_with(L"\r\n"))
            lines.push_back(text[i]);
    return lines;
}

/// The part of a frame that the text covers.
Part PartUnder(std::wstring_view text, const FrameRows& rows)
{
    GpBitmap* scratch = nullptr;
    std::ignore = GdipCreateBitmapFromScan0(1, 1, 0, PixelFormat24bppRGB, nullptr, &scratch);
    const RectF box = TextOnBitmap(scratch).Measure(text);
    GdipDisposeImage(scratch);
    if (box.Width <= 0.0F || box.Height <= 0.0F)
        return {};
    return {PixelsUpTo(box.X + box.Width, rows.WidthPx()), PixelsUpTo(box.Y + box.Height, rows.Count())};
}

/// Bytes of a row as GDI+ counts them: a row starts at a multiple of four bytes.
std::size_t GdiRowBytes(std::size_t pixelBytes)
{
    constexpr std::size_t kAlignment = 4; // fixed by device-independent bitmaps
    return (pixelBytes + kAlignment - 1) / kAlignment * kAlignment;
}

GpBitmap* MakeBitmap(const BITMAPINFOHEADER& header, void* bits)
{
    BitmapDescription description{};
    description.header = header;
    description.header.biSize = sizeof(BITMAPINFOHEADER); // as much as is passed on
    description.header.biCompression = BI_RGB;
    description.header.biClrUsed = 0; // as many as the depth can have
    GpBitmap* bitmap = nullptr;
    std::ignore =
        GdipCreateBitmapFromGdiDib(reinterpret_cast<const BITMAPINFO*>(&description), bits, &bitmap);
    return bitmap;
}

bool LiesIn(std::span<const std::uint8_t> memory, const void* address)
{
    const auto* const byte = static_cast<const std::uint8_t*>(address);
    return !std::less<>()(byte, memory.data()) && std::less<>()(byte, memory.data() + memory.size());
}

/// Copies pixels; of one that is longer on one side the first bytes: blue, green and red.
void CopyPixels(const std::uint8_t* from, std::size_t fromBytes, std::uint8_t* to, std::size_t toBytes,
                std::size_t count)
{
    if (fromBytes == toBytes) {
        std::memcpy(to, from, count * toBytes);
        return;
    }
    for (std::size_t i = 0; i < count; ++i, from += fromBytes, to += toBytes) {
        to[0] = from[0];
        to[1] = from[1];
        to[2] = from[2];
    }
}

/// Brings what was drawn into the frame, unless the bitmap's bits are the frame's.
/// @param drawnBytes  a pixel, of the bitmap
/// @return  whether the bits were others
bool TakeBack(GpBitmap* bitmap, Part part, std::size_t drawnBytes, const FrameRows& rows)
{
    PixelFormat format = 0;
    if (GdipGetImagePixelFormat(bitmap, &format) != Ok ||
        GetPixelFormatSize(format) != drawnBytes * kBitsPerByte)
        return false;
    const Rect area(0, 0, static_cast<INT>(part.widthPx), static_cast<INT>(part.rows));
    BitmapData bits{};
    if (GdipBitmapLockBits(bitmap, &area, ImageLockModeRead, format, &bits) != Ok)
        return false;
    // The first row is the one at the top, wherever it lies in memory: the stride is negative for bottom-up
    // bits.
    const auto* row = static_cast<const std::uint8_t*>(bits.Scan0);
    const bool areOthers = !LiesIn(rows.Bytes(), row);
    for (std::size_t y = 0; areOthers && y < part.rows; ++y, row += bits.Stride)
        CopyPixels(row, drawnBytes, rows.Row(y).data(), rows.PixelBytes(), part.widthPx);
    GdipBitmapUnlockBits(bitmap, &bits);
    return areOthers;
}

/// Draws on the frame's own memory.
GpStatus DrawOnFrame(GdiPlusSession& gdiPlus, const OverlayFrame& frame, const FrameRows& rows,
                     std::wstring_view text)
{
    GpBitmap* const bitmap = MakeBitmap(frame.header, rows.Bytes().data());
    TextOnBitmap(bitmap).Draw(text);
    if (TakeBack(bitmap, {rows.WidthPx(), rows.Count()}, rows.PixelBytes(), rows))
        gdiPlus.NoteThatBitsAreCopied();
    return GdipDisposeImage(bitmap);
}

/// Draws on a copy of the part that the text covers, with rows as GDI+ counts them.
GpStatus DrawOnCopy(const OverlayFrame& frame, const FrameRows& rows, std::wstring_view text)
{
    const Part part = PartUnder(text, rows);
    if (part.widthPx == 0 || part.rows == 0)
        return Ok;
    // Text on 32 bits takes Wine 8 five times as long as text on 24 (3 ms for a summary, measured). The
    // fourth byte of a pixel has no part in it.
    const std::size_t drawnBytes = rows.PixelBytes() == kColourBytes + 1 ? kColourBytes : rows.PixelBytes();
    const std::size_t gdiRowBytes = GdiRowBytes(part.widthPx * drawnBytes);
    const auto copy = std::make_unique<std::uint8_t[]>(gdiRowBytes * part.rows);
    for (std::size_t y = 0; y < part.rows; ++y)
        CopyPixels(rows.Row(y).data(), rows.PixelBytes(), copy.get() + y * gdiRowBytes, drawnBytes,
                   part.widthPx);

    BITMAPINFOHEADER header = frame.header;
    header.biWidth = static_cast<LONG>(part.widthPx); // at most the frame's
    header.biHeight = -static_cast<LONG>(part.rows);  // at most the frame's; from the top
    header.biBitCount = static_cast<WORD>(drawnBytes * kBitsPerByte);
    header.biSizeImage = 0; // as large as it has to be
    GpBitmap* const bitmap = MakeBitmap(header, copy.get());
    TextOnBitmap(bitmap).Draw(text);
    std::ignore = TakeBack(bitmap, part, drawnBytes, rows);
    return GdipDisposeImage(bitmap);
}

} // namespace

// A frame's rows follow each other without a gap; GDI+ lets each start at a multiple of four bytes. Where the
// two agree, GDI+ gets the frame itself. Where they do not, it would shear the picture and write behind the
// frame's end: there the text is drawn on a copy with rows of GDI+'s length, and the rows come back without
// their gaps.
//
// GDI+ may also draw on a copy of the bits it was given (Wine 8 does, measured). The bitmap tells: after the
// first text its bits are not the frame's, and the picture is fetched from it. Such a GDI+ copies the whole
// frame three times (5 ms and more for 1920 x 1080, measured), so from then on it gets a copy of no more than
// the text covers.
GpStatus DrawOverlayText(GdiPlusSession& gdiPlus, const OverlayFrame& frame, std::wstring_view text)
{
    const std::optional<FrameRows> rows = FrameRows::Of(frame);
    if (!rows || text.empty() || text.size() > static_cast<std::size_t>(std::numeric_limits<INT>::max()))
        return InvalidParameter;
    const std::wstring lines = WithoutCarriageReturns(text);
    const bool hasGdiRows = GdiRowBytes(rows->RowBytes()) == rows->RowBytes();
    if (hasGdiRows && !gdiPlus.CopiesBits())
        return DrawOnFrame(gdiPlus, frame, *rows, lines);
    return DrawOnCopy(frame, *rows, lines);
}

} // namespace vxds
