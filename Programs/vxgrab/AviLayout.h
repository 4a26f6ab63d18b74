#pragma once

#include "vxgrab/FrameFormat.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace vxgrab {

/// The bytes of an AVI file with one stream of uncompressed pictures, as Microsoft's "AVI RIFF File
/// Reference" describes them. All numbers are little endian.
///
///   offset  content
///        0  'RIFF' size 'AVI '
///       12  'LIST' size 'hdrl'
///       24    'avih' 56   main header: time per frame, number of frames, size of the picture
///       88    'LIST' size 'strl'
///      100      'strh' 56 stream header: rate = frames, scale = microseconds
///      164      'strf' 40 bitmap header
///      212  'LIST' size 'movi'
///      224    '00db' size, one frame; and so on
///           'idx1' size, 16 bytes a frame
struct FilmExtent {
    std::uint32_t frames = 0;
    std::uint32_t microsecondsPerFrame = 0;
};

/// Fixed by the layout above.
constexpr std::size_t kAviHeaderBytes = 224;
constexpr std::size_t kAviChunkHeadBytes = 8;
constexpr std::size_t kAviIndexEntryBytes = 16;

/// @return  bytes of one row in the film: whole 32-bit words, whatever the device's rows are
[[nodiscard]] std::size_t FilmRowBytes(const FrameFormat& format);

/// @return  bytes of one frame in the film
[[nodiscard]] std::size_t FilmFrameBytes(const FrameFormat& format);

/// @return  everything in front of the first frame; kAviHeaderBytes bytes
[[nodiscard]] std::vector<std::byte> AviHeader(const FrameFormat& format, const FilmExtent& extent);

/// One frame with its chunk head, in the row order of films: RGB from the lowest row up, YUV from the top
/// down.
/// @param frame  a whole frame of the format
/// @param[out] chunk  the bytes to write; its memory is used again
void AviFrameChunk(const FrameFormat& format, std::span<const std::byte> frame,
                   std::vector<std::byte>& chunk);

/// @return  the index behind the last frame
[[nodiscard]] std::vector<std::byte> AviIndex(const FrameFormat& format, std::uint32_t frames);

} // namespace vxgrab
