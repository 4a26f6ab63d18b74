#pragma once

#include <windows.h>

#include <objidl.h>

#include <gdiplus.h>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

/// Stands in for GDI+'s flat functions in the program that it is linked into: records every call in order,
/// draws a pattern instead of text, and works on the bits it is given or on a copy of them.
///
/// Like GDI+ it takes each row for a multiple of four bytes, and it writes the gaps between rows, too.
///
/// Owner:  the program (TheGdiPlus); a test starts with Reset.
/// Thread: one at a time.
class ScriptedGdiPlus {
public:
    /// Forgets everything; no object may be left.
    void Reset();

    // --- What it does.
    bool copiesBits = false;  ///< as Wine does; else it draws on the bits it was given, as Windows does
    std::string failing;      ///< the function of this name fails
    bool hasAllocator = true; ///< else GdipAlloc gives no memory
    Gdiplus::RectF measured{25, 25, 1e6F, 1e6F}; ///< what every text is said to cover

    // --- What it saw.
    std::vector<std::string> calls;
    const void* bits = nullptr;
    BITMAPINFOHEADER header{};
    RGBQUAD firstColour{};
    std::vector<int> renderingOptions; ///< in the order in which they were set
    std::wstring family;
    const void* fontCollection = nullptr;
    float fontSize = 0;
    int fontStyle = -1;
    int fontUnit = -1;
    std::uint32_t colour = 0;
    std::wstring text;
    Gdiplus::RectF place;
    const void* stringFormat = nullptr;
    std::optional<Gdiplus::GdiplusStartupInput> startup;
    const void* startupOutput = nullptr;
    std::vector<ULONG_PTR> shutDown; ///< tokens
    int liveObjects = 0;

    static constexpr ULONG_PTR kToken = 4711;

    /// Whether the pattern changes a pixel, and to what.
    [[nodiscard]] static bool IsDrawn(std::size_t x, std::size_t y) { return (x + y) % 3 == 0; }
    [[nodiscard]] static std::uint8_t DrawnByte(std::size_t x, std::size_t y, std::size_t byteOfPixel)
    {
        return static_cast<std::uint8_t>(x * 7 + y * 13 + byteOfPixel + 1);
    }
};

/// The one GDI+ of this program.
[[nodiscard]] ScriptedGdiPlus& TheGdiPlus();
