#pragma once

#include "VxDSSource/stream/IVideoInfoHeader.h"

/// A block of the form VIDEOINFOHEADER.
///
/// Owner and thread: see IVideoInfoHeader.
class VideoInfoHeader final : public IVideoInfoHeader {
public:
    explicit VideoInfoHeader(VIDEOINFOHEADER* block) : m_block(block) {}

    RECT* SourceRectangle() override { return &m_block->rcSource; }
    RECT* TargetRectangle() override { return &m_block->rcTarget; }
    DWORD* BitRate() override { return &m_block->dwBitRate; }
    DWORD* BitErrorRate() override { return &m_block->dwBitErrorRate; }
    REFERENCE_TIME* AverageTimePerFrame() override { return &m_block->AvgTimePerFrame; }
    DWORD* InterlaceFlags() override { return &m_interlaceFlags; }
    DWORD* CopyProtectFlags() override { return &m_copyProtectFlags; }
    DWORD* PictureAspectRatioX() override { return &m_pictureAspectRatioX; }
    DWORD* PictureAspectRatioY() override { return &m_pictureAspectRatioY; }
    BITMAPINFOHEADER* BitmapHeader() override { return &m_block->bmiHeader; }
    void* Clear() override;

private:
    VIDEOINFOHEADER* m_block; // borrowed: part of the media type
    DWORD m_interlaceFlags = 0;
    DWORD m_copyProtectFlags = 0;
    DWORD m_pictureAspectRatioX = 0;
    DWORD m_pictureAspectRatioY = 0;
};
