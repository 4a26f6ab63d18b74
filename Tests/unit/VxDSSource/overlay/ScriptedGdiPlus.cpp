#include "ScriptedGdiPlus.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <new>

using namespace Gdiplus;

namespace {

/// A bitmap over bits of somebody, or over a copy.
struct ScriptedBitmap {
    std::vector<std::uint8_t> own;
    std::uint8_t* bits = nullptr;
    std::size_t width = 0;
    std::size_t height = 0;
    std::size_t bytesPerPixel = 0;
    std::size_t rowBytes = 0;
    bool isBottomUp = false;

    std::uint8_t* Row(std::size_t fromTop)
    {
        return bits + (isBottomUp ? height - 1 - fromTop : fromTop) * rowBytes;
    }
};

/// One record for each call; false when it has to fail.
bool Called(const char* name)
{
    TheGdiPlus().calls.emplace_back(name);
    return TheGdiPlus().failing != name;
}

template <typename Object>
GpStatus Make(const char* name, Object** object)
{
    *object = nullptr;
    if (!Called(name))
        return GenericError;
    *object = reinterpret_cast<Object*>(new char);
    ++TheGdiPlus().liveObjects;
    return Ok;
}

GpStatus Delete(const char* name, const void* object)
{
    const bool mayWork = Called(name);
    if (object == nullptr)
        return InvalidParameter;
    delete static_cast<const char*>(object);
    --TheGdiPlus().liveObjects;
    return mayWork ? Ok : GenericError;
}

GpStatus Set(const char* name, const void* graphics, int value)
{
    TheGdiPlus().renderingOptions.push_back(value);
    return Called(name) && graphics != nullptr ? Ok : InvalidParameter;
}

void DrawPattern(ScriptedBitmap& bitmap)
{
    for (std::size_t y = 0; y < bitmap.height; ++y) {
        std::uint8_t* const row = bitmap.Row(y);
        for (std::size_t x = 0; x < bitmap.width; ++x)
            for (std::size_t k = 0; ScriptedGdiPlus::IsDrawn(x, y) && k < bitmap.bytesPerPixel; ++k)
                row[x * bitmap.bytesPerPixel + k] = ScriptedGdiPlus::DrawnByte(x, y, k);
        const std::size_t pixels = bitmap.width * bitmap.bytesPerPixel;
        std::memset(row + pixels, 0xEE, bitmap.rowBytes - pixels);
    }
}

ScriptedBitmap* g_bitmap = nullptr; // there is one at a time

} // namespace

ScriptedGdiPlus& TheGdiPlus()
{
    static ScriptedGdiPlus gdiPlus;
    return gdiPlus;
}

void ScriptedGdiPlus::Reset()
{
    EXPECT_EQ(liveObjects, 0);
    *this = ScriptedGdiPlus();
}

namespace Gdiplus {

extern "C" {

GpStatus WINGDIPAPI GdiplusStartup(ULONG_PTR* token, const GdiplusStartupInput* input,
                                   GdiplusStartupOutput* output)
{
    TheGdiPlus().startup = *input;
    TheGdiPlus().startupOutput = output;
    *token = ScriptedGdiPlus::kToken;
    return Called("GdiplusStartup") ? Ok : GenericError;
}

VOID WINGDIPAPI GdiplusShutdown(ULONG_PTR token)
{
    Called("GdiplusShutdown");
    TheGdiPlus().shutDown.push_back(token);
}

} // extern "C"

namespace DllExports {

extern "C" {

VOID* WINGDIPAPI GdipAlloc(size_t bytes)
{
    Called("GdipAlloc");
    if (!TheGdiPlus().hasAllocator)
        return nullptr;
    ++TheGdiPlus().liveObjects;
    return std::malloc(bytes);
}

VOID WINGDIPAPI GdipFree(VOID* memory)
{
    Called("GdipFree");
    --TheGdiPlus().liveObjects;
    std::free(memory);
}

GpStatus WINGDIPAPI GdipCreateBitmapFromGdiDib(const BITMAPINFO* description, VOID* bits, GpBitmap** bitmap)
{
    ScriptedGdiPlus& gdiPlus = TheGdiPlus();
    gdiPlus.header = description->bmiHeader;
    gdiPlus.firstColour = description->bmiColors[0];
    gdiPlus.bits = bits;
    const GpStatus made = Make("GdipCreateBitmapFromGdiDib", bitmap);
    if (made != Ok)
        return made;
    const BITMAPINFOHEADER& header = description->bmiHeader;
    g_bitmap = new ScriptedBitmap;
    g_bitmap->width = static_cast<std::size_t>(header.biWidth);
    g_bitmap->height = static_cast<std::size_t>(std::abs(header.biHeight));
    g_bitmap->bytesPerPixel = header.biBitCount / 8U;
    g_bitmap->rowBytes = (g_bitmap->width * header.biBitCount + 31) / 32 * 4;
    g_bitmap->isBottomUp = header.biHeight > 0;
    g_bitmap->bits = static_cast<std::uint8_t*>(bits);
    if (gdiPlus.copiesBits) {
        g_bitmap->own.assign(g_bitmap->bits, g_bitmap->bits + g_bitmap->rowBytes * g_bitmap->height);
        g_bitmap->bits = g_bitmap->own.data();
    }
    return Ok;
}

GpStatus WINGDIPAPI GdipCreateBitmapFromScan0(INT, INT, INT, PixelFormat, BYTE*, GpBitmap** bitmap)
{
    return Make("GdipCreateBitmapFromScan0", bitmap);
}

GpStatus WINGDIPAPI GdipMeasureString(GpGraphics* graphics, const WCHAR*, INT, const GpFont* font,
                                      const RectF*, const GpStringFormat*, RectF* box, INT*, INT*)
{
    if (!Called("GdipMeasureString") || graphics == nullptr || font == nullptr)
        return InvalidParameter;
    *box = TheGdiPlus().measured;
    return Ok;
}

GpStatus WINGDIPAPI GdipGetImageGraphicsContext(GpImage* image, GpGraphics** graphics)
{
    if (image != nullptr)
        return Make("GdipGetImageGraphicsContext", graphics);
    Called("GdipGetImageGraphicsContext");
    *graphics = nullptr;
    return InvalidParameter;
}

GpStatus WINGDIPAPI GdipSetCompositingMode(GpGraphics* graphics, CompositingMode value)
{
    return Set("GdipSetCompositingMode", graphics, value);
}

GpStatus WINGDIPAPI GdipSetCompositingQuality(GpGraphics* graphics, CompositingQuality value)
{
    return Set("GdipSetCompositingQuality", graphics, value);
}

GpStatus WINGDIPAPI GdipSetInterpolationMode(GpGraphics* graphics, InterpolationMode value)
{
    return Set("GdipSetInterpolationMode", graphics, value);
}

GpStatus WINGDIPAPI GdipSetPixelOffsetMode(GpGraphics* graphics, PixelOffsetMode value)
{
    return Set("GdipSetPixelOffsetMode", graphics, value);
}

GpStatus WINGDIPAPI GdipSetSmoothingMode(GpGraphics* graphics, SmoothingMode value)
{
    return Set("GdipSetSmoothingMode", graphics, value);
}

GpStatus WINGDIPAPI GdipSetTextRenderingHint(GpGraphics* graphics, TextRenderingHint value)
{
    return Set("GdipSetTextRenderingHint", graphics, value);
}

GpStatus WINGDIPAPI GdipCreateFontFamilyFromName(const WCHAR* name, GpFontCollection* collection,
                                                 GpFontFamily** family)
{
    TheGdiPlus().family = name;
    TheGdiPlus().fontCollection = collection;
    return Make("GdipCreateFontFamilyFromName", family);
}

GpStatus WINGDIPAPI GdipCreateFont(const GpFontFamily* family, REAL size, INT style, Unit unit, GpFont** font)
{
    TheGdiPlus().fontSize = size;
    TheGdiPlus().fontStyle = style;
    TheGdiPlus().fontUnit = unit;
    if (family != nullptr)
        return Make("GdipCreateFont", font);
    Called("GdipCreateFont");
    *font = nullptr;
    return InvalidParameter;
}

GpStatus WINGDIPAPI GdipCreateSolidFill(ARGB colour, GpSolidFill** brush)
{
    TheGdiPlus().colour = colour;
    return Make("GdipCreateSolidFill", brush);
}

GpStatus WINGDIPAPI GdipDrawString(GpGraphics* graphics, const WCHAR* text, INT length, const GpFont* font,
                                   const RectF* place, const GpStringFormat* format, const GpBrush* brush)
{
    TheGdiPlus().text.assign(text, static_cast<std::size_t>(length));
    TheGdiPlus().place = *place;
    TheGdiPlus().stringFormat = format;
    if (!Called("GdipDrawString") || graphics == nullptr || font == nullptr || brush == nullptr)
        return InvalidParameter;
    DrawPattern(*g_bitmap);
    return Ok;
}

GpStatus WINGDIPAPI GdipDeleteGraphics(GpGraphics* graphics)
{
    return Delete("GdipDeleteGraphics", graphics);
}

GpStatus WINGDIPAPI GdipDeleteBrush(GpBrush* brush)
{
    return Delete("GdipDeleteBrush", brush);
}

GpStatus WINGDIPAPI GdipDeleteFont(GpFont* font)
{
    return Delete("GdipDeleteFont", font);
}

GpStatus WINGDIPAPI GdipDeleteFontFamily(GpFontFamily* family)
{
    return Delete("GdipDeleteFontFamily", family);
}

GpStatus WINGDIPAPI GdipGetImagePixelFormat(GpImage* image, PixelFormat* format)
{
    if (!Called("GdipGetImagePixelFormat") || image == nullptr)
        return InvalidParameter;
    *format = g_bitmap->bytesPerPixel == 2   ? PixelFormat16bppRGB555
              : g_bitmap->bytesPerPixel == 3 ? PixelFormat24bppRGB
                                             : PixelFormat32bppRGB;
    return Ok;
}

GpStatus WINGDIPAPI GdipBitmapLockBits(GpBitmap* bitmap, const GpRect* area, UINT mode, PixelFormat format,
                                       BitmapData* data)
{
    if (!Called("GdipBitmapLockBits") || bitmap == nullptr)
        return InvalidParameter;
    EXPECT_EQ(area->X, 0);
    EXPECT_EQ(mode, static_cast<UINT>(ImageLockModeRead));
    *data = {static_cast<UINT>(area->Width),
             static_cast<UINT>(area->Height),
             static_cast<INT>(g_bitmap->rowBytes) * (g_bitmap->isBottomUp ? -1 : 1),
             format,
             g_bitmap->Row(static_cast<std::size_t>(area->Y)),
             0};
    ++TheGdiPlus().liveObjects;
    return Ok;
}

GpStatus WINGDIPAPI GdipBitmapUnlockBits(GpBitmap*, BitmapData*)
{
    --TheGdiPlus().liveObjects;
    return Called("GdipBitmapUnlockBits") ? Ok : GenericError;
}

GpStatus WINGDIPAPI GdipDisposeImage(GpImage* image)
{
    if (image != nullptr) {
        delete g_bitmap;
        g_bitmap = nullptr;
    }
    return Delete("GdipDisposeImage", image);
}

} // extern "C"

} // namespace DllExports

} // namespace Gdiplus
