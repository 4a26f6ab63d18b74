#include "vxgrab/AviLayout.h"

#include <dshow.h>

#include <algorithm>
#include <cassert>
#include <string_view>

namespace vxgrab {
namespace {

// Fixed by the file format.
constexpr std::uint32_t kMainHeaderBytes = 56;
constexpr std::uint32_t kStreamHeaderBytes = 56;
constexpr std::uint32_t kBitmapHeaderBytes = 40;
constexpr std::uint32_t kHasIndex = 0x10;   // AVIF_HASINDEX
constexpr std::uint32_t kIsKeyFrame = 0x10; // AVIIF_KEYFRAME
constexpr std::uint32_t kAnyQuality = 0xFFFFFFFF;
constexpr std::uint32_t kMicrosecondsPerSecond = 1000000;

bool IsYuy2(const FrameFormat& format)
{
    return ::IsEqualGUID(format.subtype, MEDIASUBTYPE_YUY2);
}

/// Puts little-endian numbers and four-character codes one behind the other.
class RiffBytes final {
public:
    explicit RiffBytes(std::vector<std::byte>& bytes) : m_bytes(bytes) {}

    RiffBytes& Code(std::string_view code)
    {
        assert(code.size() == 4);
        for (const char c : code)
            m_bytes.push_back(static_cast<std::byte>(c));
        return *this;
    }
    RiffBytes& U16(std::uint32_t value) { return Number(value, 2); }
    RiffBytes& U32(std::uint32_t value) { return Number(value, 4); }
    RiffBytes& Zeros(std::size_t count)
    {
        m_bytes.insert(m_bytes.end(), count, std::byte{0});
        return *this;
    }

private:
    RiffBytes& Number(std::uint32_t value, unsigned bytes)
    {
        for (unsigned i = 0; i < bytes; ++i)
            m_bytes.push_back(static_cast<std::byte>(value >> (8 * i)));
        return *this;
    }

    std::vector<std::byte>& m_bytes; // borrowed: the caller's result
};

/// Sizes of a film that keeps to the writer's limit fit into 32 bits.
std::uint32_t Fits(std::size_t bytes)
{
    assert(bytes <= 0xFFFFFFFF);
    return static_cast<std::uint32_t>(bytes);
}

void WriteMainHeader(RiffBytes& out, const FrameFormat& format, const FilmExtent& extent)
{
    const std::uint64_t bytesPerSecond =
        extent.microsecondsPerFrame == 0
            ? 0
            : std::uint64_t{FilmFrameBytes(format)} * kMicrosecondsPerSecond / extent.microsecondsPerFrame;
    out.Code("avih").U32(kMainHeaderBytes);
    out.U32(extent.microsecondsPerFrame);
    out.U32(static_cast<std::uint32_t>(std::min<std::uint64_t>(bytesPerSecond, 0xFFFFFFFF)));
    out.U32(0); // alignment: none
    out.U32(kHasIndex).U32(extent.frames);
    out.U32(0).U32(1);                     // frames ahead of the film; streams
    out.U32(Fits(FilmFrameBytes(format))); // suggested buffer
    out.U32(static_cast<std::uint32_t>(format.widthPx)).U32(static_cast<std::uint32_t>(format.heightPx));
    out.Zeros(16); // reserved
}

void WriteStreamHeader(RiffBytes& out, const FrameFormat& format, const FilmExtent& extent)
{
    out.Code("strh").U32(kStreamHeaderBytes);
    out.Code("vids").Code(IsYuy2(format) ? "YUY2" : "DIB ");
    out.U32(0).U32(0).U32(0); // flags; priority and language; frames ahead of the film
    out.U32(extent.microsecondsPerFrame)
        .U32(kMicrosecondsPerSecond); // scale and rate: frames per second = rate / scale
    out.U32(0).U32(extent.frames);    // start, length
    out.U32(Fits(FilmFrameBytes(format))).U32(kAnyQuality);
    out.U32(0);        // frames are chunks of their own, not samples of a size
    out.U16(0).U16(0); // place on the screen
    out.U16(static_cast<std::uint32_t>(format.widthPx)).U16(static_cast<std::uint32_t>(format.heightPx));
}

void WriteBitmapHeader(RiffBytes& out, const FrameFormat& format)
{
    out.Code("strf").U32(kBitmapHeaderBytes);
    out.U32(kBitmapHeaderBytes);
    out.U32(static_cast<std::uint32_t>(format.widthPx)).U32(static_cast<std::uint32_t>(format.heightPx));
    out.U16(1).U16(static_cast<std::uint32_t>(format.bytesPerPixel * 8)); // planes, bits
    if (IsYuy2(format))
        out.Code("YUY2");
    else
        out.U32(BI_RGB);
    out.U32(Fits(FilmFrameBytes(format)));
    out.Zeros(16); // resolution and palette: none
}

} // namespace

std::size_t FilmRowBytes(const FrameFormat& format)
{
    return (static_cast<std::size_t>(format.widthPx) * format.bytesPerPixel + 3) / 4 * 4;
}

std::size_t FilmFrameBytes(const FrameFormat& format)
{
    return FilmRowBytes(format) * static_cast<std::size_t>(format.heightPx);
}

std::vector<std::byte> AviHeader(const FrameFormat& format, const FilmExtent& extent)
{
    const std::size_t frameChunks = extent.frames * (kAviChunkHeadBytes + FilmFrameBytes(format));
    const std::size_t index = kAviChunkHeadBytes + extent.frames * kAviIndexEntryBytes;
    constexpr std::uint32_t kStreamListBytes = 4 + 8 + kStreamHeaderBytes + 8 + kBitmapHeaderBytes;
    constexpr std::uint32_t kHeaderListBytes = 4 + 8 + kMainHeaderBytes + 8 + kStreamListBytes;

    std::vector<std::byte> bytes;
    bytes.reserve(kAviHeaderBytes);
    RiffBytes out(bytes);
    out.Code("RIFF").U32(Fits(kAviHeaderBytes - kAviChunkHeadBytes + frameChunks + index)).Code("AVI ");
    out.Code("LIST").U32(kHeaderListBytes).Code("hdrl");
    WriteMainHeader(out, format, extent);
    out.Code("LIST").U32(kStreamListBytes).Code("strl");
    WriteStreamHeader(out, format, extent);
    WriteBitmapHeader(out, format);
    out.Code("LIST").U32(Fits(4 + frameChunks)).Code("movi");
    assert(bytes.size() == kAviHeaderBytes);
    return bytes;
}

void AviFrameChunk(const FrameFormat& format, std::span<const std::byte> frame, std::vector<std::byte>& chunk)
{
    const std::size_t filmRowBytes = FilmRowBytes(format);
    const std::size_t rowBytes = RowBytes(format, frame.size());
    const std::size_t usedBytes = static_cast<std::size_t>(format.widthPx) * format.bytesPerPixel;
    const auto rows = static_cast<std::size_t>(format.heightPx);
    assert(rowBytes != 0);

    chunk.clear();
    RiffBytes(chunk).Code("00db").U32(Fits(FilmFrameBytes(format)));
    chunk.resize(kAviChunkHeadBytes + FilmFrameBytes(format));
    const bool isTurned = !format.isBottomUp && !IsYuy2(format); // films know no RGB from the top down
    for (std::size_t row = 0; row < rows; ++row) {
        const auto source = frame.subspan((isTurned ? rows - 1 - row : row) * rowBytes, usedBytes);
        std::copy(source.begin(), source.end(),
                  chunk.begin() + static_cast<std::ptrdiff_t>(kAviChunkHeadBytes + row * filmRowBytes));
    }
}

std::vector<std::byte> AviIndex(const FrameFormat& format, std::uint32_t frames)
{
    const std::uint32_t chunkBytes = Fits(kAviChunkHeadBytes + FilmFrameBytes(format));
    std::vector<std::byte> bytes;
    bytes.reserve(kAviChunkHeadBytes + frames * kAviIndexEntryBytes);
    RiffBytes out(bytes);
    out.Code("idx1").U32(Fits(frames * kAviIndexEntryBytes));
    std::uint32_t offset = 4; // counted from the word 'movi'
    for (std::uint32_t i = 0; i < frames; ++i, offset += chunkBytes)
        out.Code("00db").U32(kIsKeyFrame).U32(offset).U32(Fits(FilmFrameBytes(format)));
    return bytes;
}

} // namespace vxgrab
