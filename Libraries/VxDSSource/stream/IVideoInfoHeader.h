#pragma once

#include <windows.h>

#include <strmif.h>

#include <amvideo.h>

#include <memory>

/// The video format block of a media type, whichever of its two forms it has.
///
/// Every operation gives the address of a field in the block, to read and to write. Fields that the shorter
/// form lacks lie in the wrapper, so that callers may set them always.
///
/// Owner:  whoever made it; borrows the block, which must outlive it.
/// Thread: that of the block.
class IVideoInfoHeader {
public:
    virtual ~IVideoInfoHeader() = default;

    virtual RECT* SourceRectangle() = 0;
    virtual RECT* TargetRectangle() = 0;
    virtual DWORD* BitRate() = 0;                      ///< bits a second
    virtual DWORD* BitErrorRate() = 0;                 ///< bits a second
    virtual REFERENCE_TIME* AverageTimePerFrame() = 0; ///< 100 ns units
    virtual DWORD* InterlaceFlags() = 0;
    virtual DWORD* CopyProtectFlags() = 0;
    virtual DWORD* PictureAspectRatioX() = 0;
    virtual DWORD* PictureAspectRatioY() = 0;
    virtual BITMAPINFOHEADER* BitmapHeader() = 0;

    /// Zeroes the whole block. @return  the block
    virtual void* Clear() = 0;
};

/// @return  the wrapper that fits the type's format; null for a format type without one, and for a block that
///          is missing or too short
[[nodiscard]] std::unique_ptr<IVideoInfoHeader> MakeVideoInfoHeader(AM_MEDIA_TYPE& type);
