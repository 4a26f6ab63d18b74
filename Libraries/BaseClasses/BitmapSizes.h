#pragma once

#include <windows.h>

#include <strmif.h>

#include <amvideo.h>

#include <cstddef>
#include <cstdint>

/// Bytes of a VIDEOINFOHEADER before its bitmap header.
inline constexpr DWORD SIZE_PREHEADER = static_cast<DWORD>(offsetof(VIDEOINFOHEADER, bmiHeader));

/// The bitmap header inside the VIDEOINFOHEADER at an address.
inline BITMAPINFOHEADER* HEADER(void* videoInfo)
{
    return &static_cast<VIDEOINFOHEADER*>(videoInfo)->bmiHeader;
}
inline const BITMAPINFOHEADER* HEADER(const void* videoInfo)
{
    return &static_cast<const VIDEOINFOHEADER*>(videoInfo)->bmiHeader;
}

/// Bytes of a row of so many bits: rounded up to 4 bytes, as bitmaps in memory have them.
constexpr DWORD WIDTHBYTES(DWORD bits)
{
    return ((bits + 31U) & ~31U) / 8U;
}

/// Bytes of a row of this bitmap.
constexpr DWORD DIBWIDTHBYTES(const BITMAPINFOHEADER& header)
{
    return WIDTHBYTES(static_cast<DWORD>(header.biWidth) * static_cast<DWORD>(header.biBitCount));
}

/// Bytes of the picture, upright or not.
constexpr DWORD DIBSIZE(const BITMAPINFOHEADER& header)
{
    const auto rows = static_cast<DWORD>(header.biHeight);
    return DIBWIDTHBYTES(header) * (header.biHeight < 0 ? 0U - rows : rows);
}

/// DIBSIZE by pointer.
DWORD WINAPI GetBitmapSize(const BITMAPINFOHEADER* header);
