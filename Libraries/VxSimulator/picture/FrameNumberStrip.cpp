#include "VxSimulator/picture/FrameNumberStrip.h"

#include "VxSimulator/picture/TestScene.h"

namespace simulator {

namespace {

constexpr unsigned kChecksumBits = 16;
constexpr unsigned kNumberBits = 32;

// CRC-16/CCITT-FALSE: any picture of one colour has a wrong checksum.
std::uint16_t Checksum(std::uint32_t number)
{
    constexpr std::uint32_t kPolynomial = 0x1021;
    constexpr std::uint32_t kTopBit = 0x8000;
    std::uint32_t crc = 0xFFFF;
    for (unsigned bit = kNumberBits; bit > 0; --bit) {
        const std::uint32_t next = (number >> (bit - 1)) & 1u;
        const bool isSet = (((crc & kTopBit) != 0 ? 1u : 0u) ^ next) != 0;
        crc = (crc << 1) & 0xFFFF;
        if (isSet)
            crc ^= kPolynomial;
    }
    return static_cast<std::uint16_t>(crc); // masked to 16 bits
}

/// @return  whether the middle of a block is white; its rim may be blurred
bool IsBlockWhite(const PictureView& picture, std::uint32_t blockX, std::uint32_t blockY)
{
    constexpr std::uint32_t kRimPx = 2;
    constexpr std::uint32_t kMiddlePx = FrameNumberStrip::kBlockPx - 2 * kRimPx;
    constexpr std::uint32_t kHalf = 128 * kMiddlePx * kMiddlePx;
    std::uint32_t sum = 0;
    for (std::uint32_t y = 0; y < kMiddlePx; ++y)
        for (std::uint32_t x = 0; x < kMiddlePx; ++x)
            sum += GreyOf(picture.At(blockX + kRimPx + x, blockY + kRimPx + y));
    return sum >= kHalf;
}

} // namespace

FrameNumberStrip::FrameNumberStrip(std::uint32_t frameNumber)
    : m_bits((std::uint64_t{frameNumber} << kChecksumBits) | Checksum(frameNumber))
{
}

std::optional<std::uint32_t> FrameNumberStrip::Decode(std::uint64_t bits)
{
    const auto number = static_cast<std::uint32_t>(bits >> kChecksumBits); // 48 bits in, 32 remain
    const auto checksum = static_cast<std::uint16_t>(bits);                // the low 16
    if (checksum != Checksum(number))
        return std::nullopt;
    return number;
}

std::optional<std::uint32_t> ReadFrameNumber(const PictureView& picture)
{
    if (!picture.IsValid())
        return std::nullopt;
    const auto place = TestScene(picture.widthPx, picture.heightPx).StripPlace();
    if (!place)
        return std::nullopt;

    std::uint64_t bits = 0;
    for (std::uint32_t row = 0; row < FrameNumberStrip::kRows; ++row) {
        for (std::uint32_t column = 0; column < FrameNumberStrip::kColumns; ++column) {
            const bool isWhite = IsBlockWhite(picture, place->xPx + column * FrameNumberStrip::kBlockPx,
                                              place->yPx + row * FrameNumberStrip::kBlockPx);
            bits = (bits << 1) | (isWhite ? 1u : 0u);
        }
    }
    return FrameNumberStrip::Decode(bits);
}

} // namespace simulator
