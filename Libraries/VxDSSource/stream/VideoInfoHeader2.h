#pragma once

#include "VxDSSource/stream/IVideoInfoHeader.h"

#include <dvdmedia.h>

/// A block of the form VIDEOINFOHEADER2.
///
/// Owner and thread: see IVideoInfoHeader.
class VideoInfoHeader2 final : public IVideoInfoHeader {
public:
    explicit VideoInfoHeader2(VIDEOINFOHEADER2* block) : m_block(block) {}

    RECT* SourceRectangle() override { return &m_block->rcSource; }
    RECT* TargetRectangle() override { return &m_block->rcTarget; }
    DWORD* BitRate() override { return &m_block->dwBitRate; }
    DWORD* BitErrorRate() override { return &m_block->dwBitErrorRate; }
    REFERENCE_TIME* AverageTimePerFrame() override { return &m_block->AvgTimePerFrame; }
    DWORD* InterlaceFlags() override { return &m_block->dwInterlaceFlags; }
    DWORD* CopyProtectFlags() override { return &m_block->dwCopyProtectFlags; }
    DWORD* PictureAspectRatioX() override { return &m_block->dwPictAspectRatioX; }
    DWORD* PictureAspectRatioY() override { return &m_block->dwPictAspectRatioY; }
    BITMAPINFOHEADER* BitmapHeader() override { return &m_block->bmiHeader; }
    void* Clear() override;

private:
    VIDEOINFOHEADER2* m_block; // borrowed: part of the media type
};
