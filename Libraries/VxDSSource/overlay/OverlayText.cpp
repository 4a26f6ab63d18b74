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

    /// @return  what the text covers; nothing when that cannot be told
    [[nodiscard]] std::optional<RectF> Measure(std::wstring_view text)
    {
        RectF box;
        if (m_wrapper == nullptr ||
            GdipMeasureString(m_wrapper->graphics, text.data(), static_cast<INT>(text.size()), m_font,
                              &m_place, nullptr, &box, nullptr, nullptr) != Ok)
            return std::nullopt;
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
/// return before it Wine 8 shows as a box (seen; Docs/decisions/0011-text-over-a-frame.md).
std::wstring WithoutCarriageReturns(std::wstring_view text)
{
    std::wstring lines;
    for (std::size_t i = 0; i < text.size(); ++i)
        if (!text.substr(i).starts_with(L"\r\n"))
            lines.push_back(text[i]);
    return lines;
}

/// The part of a frame that the text covers; all of it when that cannot be told.
Part PartUnder(std::wstring_view text, const FrameRows& rows)
{
    GpBitmap* scratch = nullptr;
    std::ignore = GdipCreateBitmapFromScan0(1, 1, 0, PixelFormat24bppRGB, nullptr, &scratch);
    const std::optional<RectF> box = TextOnBitmap(scratch).Measure(text);
    GdipDisposeImage(scratch);
    if (!box)
        return {rows.WidthPx(), rows.Count()};
    if (box->Width <= 0.0F || box->Height <= 0.0F)
        return {};
    return {PixelsUpTo(box->X + box->Width, rows.WidthPx()), PixelsUpTo(box->Y + box->Height, rows.Count())};
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

/// Rows that were drawn on, from the top of the picture, wherever that lies in memory.
struct DrawnRows {
    const std::uint8_t* first = nullptr;
    std::ptrdiff_t strideBytes = 0; ///< negative when the rows lie bottom-up
    std::size_t pixelBytes = 0;
};

/// Holds the bits of a bitmap's part for reading, for one scope.
class LockedBits {
public:
    LockedBits(GpBitmap* bitmap, Part part, std::size_t pixelBytes)
        : m_bitmap(bitmap), m_pixelBytes(pixelBytes)
    {
        PixelFormat format = 0;
        if (GdipGetImagePixelFormat(bitmap, &format) != Ok ||
            GetPixelFormatSize(format) != pixelBytes * kBitsPerByte)
            return;
        const Rect area(0, 0, static_cast<INT>(part.widthPx), static_cast<INT>(part.rows));
        m_areHeld = GdipBitmapLockBits(bitmap, &area, ImageLockModeRead, format, &m_bits) == Ok;
    }
    ~LockedBits()
    {
        if (m_areHeld)
            GdipBitmapUnlockBits(m_bitmap, &m_bits);
    }
    LockedBits(const LockedBits&) = delete;
    LockedBits& operator=(const LockedBits&) = delete;

    /// False: GDI+ refused, or has another pixel format.
    [[nodiscard]] bool AreHeld() const { return m_areHeld; }
    [[nodiscard]] DrawnRows Rows() const
    {
        return {static_cast<const std::uint8_t*>(m_bits.Scan0), m_bits.Stride, m_pixelBytes};
    }
    [[nodiscard]] BitsHandling Handling(std::span<const std::uint8_t> given) const
    {
        const auto* const first = static_cast<const std::uint8_t*>(m_bits.Scan0);
        const bool areGiven =
            !std::less<>()(first, given.data()) && std::less<>()(first, given.data() + given.size());
        return areGiven ? BitsHandling::Wrapped : BitsHandling::Copied;
    }

private:
    GpBitmap* const m_bitmap; // borrowed: outlives the scope
    const std::size_t m_pixelBytes;
    BitmapData m_bits{};
    bool m_areHeld = false;
};

/// Copies colours: whole pixels of up to three bytes. A fourth byte is no colour and stays as it is, be it a
/// filler or, to who receives the frame, its opacity.
void CopyColours(const std::uint8_t* from, std::size_t fromBytes, std::uint8_t* to, std::size_t toBytes,
                 std::size_t count)
{
    if (fromBytes == toBytes && toBytes <= kColourBytes) {
        std::memcpy(to, from, count * toBytes);
        return;
    }
    for (std::size_t i = 0; i < count; ++i, from += fromBytes, to += toBytes) {
        to[0] = from[0];
        to[1] = from[1];
        to[2] = from[2];
    }
}

/// Brings what was drawn into the frame.
void TakeBack(const DrawnRows& drawn, Part part, const FrameRows& rows)
{
    const std::uint8_t* row = drawn.first;
    for (std::size_t y = 0; y < part.rows; ++y, row += drawn.strideBytes)
        CopyColours(row, drawn.pixelBytes, rows.Row(y).data(), rows.PixelBytes(), part.widthPx);
}

/// Draws on the frame's own memory.
GpStatus DrawOnFrame(GdiPlusSession& gdiPlus, const OverlayFrame& frame, const FrameRows& rows,
                     std::wstring_view text)
{
    GpBitmap* const bitmap = MakeBitmap(frame.header, rows.Bytes().data());
    TextOnBitmap(bitmap).Draw(text);
    if (gdiPlus.HandlingOf(rows.PixelBytes()) == BitsHandling::Unknown) {
        const Part whole{rows.WidthPx(), rows.Count()};
        const LockedBits bits(bitmap, whole, rows.PixelBytes());
        if (bits.AreHeld()) { // else the next frame asks
            gdiPlus.NoteHandling(rows.PixelBytes(), bits.Handling(rows.Bytes()));
            if (bits.Handling(rows.Bytes()) == BitsHandling::Copied)
                TakeBack(bits.Rows(), whole, rows);
        }
    }
    return GdipDisposeImage(bitmap);
}

/// Draws on a copy of the part that the text covers, with rows as GDI+ counts them.
GpStatus DrawOnCopy(GdiPlusSession& gdiPlus, const OverlayFrame& frame, const FrameRows& rows,
                    std::wstring_view text)
{
    const Part part = PartUnder(text, rows);
    if (part.widthPx == 0 || part.rows == 0)
        return Ok;
    // Text on 32 bits takes Wine 8 five times as long as text on 24 (3 ms for a summary, measured).
    const std::size_t drawnBytes = rows.PixelBytes() == kColourBytes + 1 ? kColourBytes : rows.PixelBytes();
    const std::size_t gdiRowBytes = GdiRowBytes(part.widthPx * drawnBytes);
    const std::size_t copyBytes = gdiRowBytes * part.rows;
    const auto copy = std::make_unique<std::uint8_t[]>(copyBytes);
    for (std::size_t y = 0; y < part.rows; ++y)
        CopyColours(rows.Row(y).data(), rows.PixelBytes(), copy.get() + y * gdiRowBytes, drawnBytes,
                    part.widthPx);

    BITMAPINFOHEADER header = frame.header;
    header.biWidth = static_cast<LONG>(part.widthPx); // at most the frame's
    header.biHeight = -static_cast<LONG>(part.rows);  // at most the frame's; from the top
    header.biBitCount = static_cast<WORD>(drawnBytes * kBitsPerByte);
    header.biSizeImage = 0; // as large as it has to be
    GpBitmap* const bitmap = MakeBitmap(header, copy.get());
    TextOnBitmap(bitmap).Draw(text);
    const DrawnRows ownRows{copy.get(), static_cast<std::ptrdiff_t>(gdiRowBytes), drawnBytes};
    if (gdiPlus.HandlingOf(drawnBytes) == BitsHandling::Wrapped) {
        TakeBack(ownRows, part, rows);
    } else {
        const LockedBits bits(bitmap, part, drawnBytes);
        if (bits.AreHeld())
            gdiPlus.NoteHandling(drawnBytes, bits.Handling({copy.get(), copyBytes}));
        // Refused, the copy may have the text all the same; and without it, it is as it was.
        TakeBack(bits.AreHeld() ? bits.Rows() : ownRows, part, rows);
    }
    return GdipDisposeImage(bitmap);
}

} // namespace

// A frame's rows follow each other without a gap; GDI+ lets each start at a multiple of four bytes. Where the
// two agree, GDI+ gets the frame itself. Where they do not, it would shear the picture and write behind the
// frame's end: there the text is drawn on a copy with rows of GDI+'s length, and the rows come back without
// their gaps.
//
// GDI+ may also draw on a copy of the bits it was given (Wine 8 does, measured). The bitmap tells, and is
// asked once for each depth: where after the first text its bits are not the frame's, the picture is fetched
// from it, and from then on such a GDI+ gets a copy of no more than the text covers. Figures are in
// Docs/decisions/0011-text-over-a-frame.md.
GpStatus DrawOverlayText(GdiPlusSession& gdiPlus, const OverlayFrame& frame, std::wstring_view text)
{
    const std::optional<FrameRows> rows = FrameRows::Of(frame);
    if (!rows || text.empty() || text.size() > static_cast<std::size_t>(std::numeric_limits<INT>::max()))
        return InvalidParameter;
    const std::wstring lines = WithoutCarriageReturns(text);
    const bool hasGdiRows = GdiRowBytes(rows->RowBytes()) == rows->RowBytes();
    if (hasGdiRows && gdiPlus.HandlingOf(rows->PixelBytes()) != BitsHandling::Copied)
        return DrawOnFrame(gdiPlus, frame, *rows, lines);
    return DrawOnCopy(gdiPlus, frame, *rows, lines);
}

} // namespace vxds
