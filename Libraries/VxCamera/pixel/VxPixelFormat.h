#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

/// What the values of a pixel mean.
enum class VxPixelFamily : std::uint8_t {
    Mono,       ///< brightness
    Bayer,      ///< one colour per pixel, in a 2x2 pattern
    Rgb,        ///< red, green, blue and perhaps alpha, in any order
    YCbCr,      ///< brightness and two colour differences
    Plane,      ///< one of the colours of a picture
    BiColor,    ///< two colours per pixel of a line-scan camera
    Sparse,     ///< brightness, with a coloured pixel now and then
    Coordinate, ///< position in space
    Confidence, ///< how far a coordinate can be trusted
    Data,       ///< anything
};

/// The order of the components in memory; for Bayer the first two pixels of the first row.
enum class VxPixelOrder : std::uint8_t {
    Single,
    BayerGR,
    BayerRG,
    BayerGB,
    BayerBG,
    Rgb,
    Bgr,
    Rgba,
    Bgra,
    Uyv,     ///< 4:4:4, one U, Y, V per pixel
    Yuv,     ///< 4:4:4, one Y, U, V per pixel
    Yuyv,    ///< 4:2:2, Y0 U Y1 V
    Uyvy,    ///< 4:2:2, U Y0 V Y1
    Uyyvyy,  ///< 4:1:1, U Y0 Y1 V Y2 Y3
    Yyuyyv,  ///< 4:1:1, Y0 Y1 U Y2 Y3 V
    YThenUv, ///< a plane of Y, then one of U V pairs
    YThenVu, ///< a plane of Y, then one of V U pairs
    Rgbg,    ///< BiColor: R G, next row B G
    Bgrg,    ///< BiColor: B G, next row R G
    Abc,     ///< coordinates A, B, C
    Ac,      ///< coordinates A, C
};

/// How components lie in bytes.
enum class VxPixelPacking : std::uint8_t {
    Cells,     ///< each in the next larger cell of 8, 16, 32 or 64 bits, little endian, value in the low bits
    LsbPacked, ///< a stream without gaps, filled from bit 0 of the first byte
    LsbPacked32,  ///< three of 10 bits from bit 0 of a little-endian 32-bit word
    LsbPacked565, ///< three of 5, 6 and 5 bits from bit 0 of a little-endian 16-bit word
    GevPacked,    ///< two of 10 or 12 bits in 3 bytes: high bits in bytes 0 and 2, low bits in byte 1
    GevPackedV1,  ///< three in 32 or 36 bits: low bits first, then the high bytes
};

/// How the components of a picture are divided over planes.
enum class VxPixelPlanes : std::uint8_t {
    One,           ///< all components of a pixel together
    PerComponent,  ///< one whole picture per component, one after the other
    ChromaHalf,    ///< a picture of Y, then one of colour pairs at half width
    ChromaQuarter, ///< a picture of Y, then one of colour pairs at half width and half height
};

/// How to read a component as a number.
enum class VxPixelNumber : std::uint8_t { Unsigned, Signed, Float };

/// How brightness and colour differences become red, green and blue.
enum class VxColorMatrix : std::uint8_t {
    None,
    Bt601Full,    ///< 0..255, differences centred at 128
    Bt601Limited, ///< brightness 16..235, differences 16..240 centred at 128
    Bt709Limited,
    Bt2020Limited,
};

/// One pixel format of the naming convention (PFNC): a row of the format table.
struct VxPixelFormat {
    std::uint32_t code;
    std::string_view name;
    VxPixelFamily family;
    VxPixelOrder order;
    VxPixelPacking packing;
    std::uint8_t bitsPerComponent;
    VxPixelPlanes planes = VxPixelPlanes::One;
    VxColorMatrix matrix = VxColorMatrix::None;
    VxPixelNumber number = VxPixelNumber::Unsigned;
};

/// Codes that callers name; every other one is reached through the table.
namespace VxPfnc {
constexpr std::uint32_t kMono8 = 0x01080001;
constexpr std::uint32_t kBayerGR8 = 0x01080008;
constexpr std::uint32_t kBayerRG8 = 0x01080009;
constexpr std::uint32_t kBayerGB8 = 0x0108000A;
constexpr std::uint32_t kBayerBG8 = 0x0108000B;
constexpr std::uint32_t kRgb8 = 0x02180014;
constexpr std::uint32_t kBgr8 = 0x02180015;
constexpr std::uint32_t kRgba8 = 0x02200016;
constexpr std::uint32_t kBgra8 = 0x02200017;
constexpr std::uint32_t kYuv422_8 = 0x02100032;
constexpr std::uint32_t kYuv422_8_Uyvy = 0x0210001F;
} // namespace VxPfnc

/// @return  the format's row, or null for a code that the table does not have (a maker's own, or a later one)
[[nodiscard]] const VxPixelFormat* VxFindPixelFormat(std::uint32_t code);

/// @return  the format of that name ("BayerRG8", exact spelling), or null
[[nodiscard]] const VxPixelFormat* VxFindPixelFormat(std::string_view name);

/// A format for people: "BayerRG8 (0x01080009)", or "pixel format 0x8108ABCD" where the table has none.
[[nodiscard]] std::string VxPixelFormatText(std::uint32_t code);

/// Bits that one pixel takes in memory, on the average over those that share components.
/// @return  0..255 from the code itself, so it is known for formats that the table does not have, too
[[nodiscard]] constexpr std::uint32_t VxBitsPerPixel(std::uint32_t code)
{
    // Fixed by the naming convention: bits 23..16 of the code.
    constexpr unsigned kShift = 16;
    constexpr std::uint32_t kMask = 0xFF;
    return (code >> kShift) & kMask;
}

/// Bytes of one row of a picture without padding; packed formats are rounded up to whole bytes. For formats
/// of several planes it is a row of the first plane.
/// @return  never overflows: at most 2^32 pixels of 255 bits
[[nodiscard]] std::uint64_t VxRowBytes(std::uint32_t code, std::uint32_t widthPx);

/// Where the rows of a picture lie.
struct VxPictureLayout {
    std::size_t rowBytes;    ///< pixels of one row (of the first plane)
    std::size_t strideBytes; ///< from one row to the next (of the first plane): rowBytes and padding
    std::size_t totalBytes;  ///< the whole picture, with the padding behind every row
    std::size_t usedBytes;   ///< the same without the padding behind the last row: up to the last pixel
};

/// Bytes of a packed picture whose rows run together: each begins at the bit behind the last one of the row
/// before, and only the whole picture is rounded up to bytes.
/// @return  empty when it has no size, or one that does not fit; for formats whose rows end with a byte
///          anyway; and for those of which nobody says where a row would begin: unknown ones, and those whose
///          pixels share components, as the last one of a row has nobody to share with
[[nodiscard]] std::optional<std::size_t> VxJoinedPictureBytes(std::uint32_t code, std::uint32_t widthPx,
                                                              std::uint32_t heightPx);

/// Bytes of one row of colour pairs of a picture in two planes, without padding: at half width a pair takes
/// as much as two pixels of brightness, and an odd last column has a pair of its own.
[[nodiscard]] constexpr std::size_t VxChromaRowBytes(std::size_t lumaRowBytes)
{
    return lumaRowBytes + lumaRowBytes % 2;
}

/// @param rowPaddingBytes  bytes behind each row, of every plane
/// @return  empty for a width, height or bits per pixel of 0, and when a size does not fit into std::size_t
[[nodiscard]] std::optional<VxPictureLayout> VxLayOutPicture(std::uint32_t code, std::uint32_t widthPx,
                                                             std::uint32_t heightPx,
                                                             std::size_t rowPaddingBytes);
