// A slow converter: whole-byte pixels of grey, RGB and BGR to BGR and BGRa.

#include "VxDSSource/camera/VxBufferConverter.h"

#include "support/camera/CameraDouble.h"
#include "support/camera/DoubleImage.h"

#include <algorithm>
#include <array>
#include <optional>

namespace {

constexpr std::uint32_t kMono8 = 0x01080001;
constexpr std::uint32_t kRgb8 = 0x02180014;
constexpr std::uint32_t kBgr8 = 0x02180015;
constexpr std::uint32_t kBgra8 = 0x02200017;

using Bgr = std::array<std::uint8_t, 3>;

std::optional<Bgr> PixelOf(const DoubleImage& image, std::size_t x, std::size_t y)
{
    const std::uint8_t* at = image.GetDataPointer() + y * image.Stride() + x * image.BytesPerPixel();
    switch (image.GetPixelType()) {
    case kMono8:
        return Bgr{at[0], at[0], at[0]};
    case kRgb8:
        return Bgr{at[2], at[1], at[0]};
    case kBgr8:
    case kBgra8:
        return Bgr{at[0], at[1], at[2]};
    default:
        return std::nullopt;
    }
}

} // namespace

class VxBufferConverterImpl {};

VxBufferConverter::VxBufferConverter(int threadCount) : m_impl(std::make_unique<VxBufferConverterImpl>())
{
    TheCamera().log.Add(CallKind::Picture, "new VxBufferConverter(" + std::to_string(threadCount) + ")");
}

VxBufferConverter::~VxBufferConverter() = default;

VxResult VxBufferConverter::Convert(const VxBuffer& source, VxBuffer& destination, VxReallocate reallocate,
                                    VxVerticalFlip flip)
{
    TheCamera().log.Add(CallKind::Picture, "Convert " + TheCamera().NameOf(&source) +
                                               (reallocate == VxReallocate::Yes ? " reallocating" : "") +
                                               (flip == VxVerticalFlip::On ? " flipped" : " upright"));
    const DoubleImage& from = source.Impl().image;
    DoubleImage& to = destination.Impl().image;
    const std::size_t width = std::min(from.GetWidth(), to.GetWidth());
    const std::size_t height = std::min(from.GetHeight(), to.GetHeight());
    if (from.GetSize() < from.Stride() * from.GetHeight())
        return VxError::BufferTooSmall;
    for (std::size_t y = 0; y < height; ++y) {
        const std::size_t row = flip == VxVerticalFlip::On ? to.GetHeight() - 1 - y : y;
        for (std::size_t x = 0; x < width; ++x) {
            const auto pixel = PixelOf(from, x, y);
            if (!pixel)
                return VxError::NotSupported;
            std::uint8_t* at = to.GetDataPointer() + row * to.Stride() + x * to.BytesPerPixel();
            std::ranges::copy(*pixel, at);
            if (to.GetPixelType() == kBgra8)
                at[3] = 0xFF;
        }
    }
    return VxResult::Ok();
}
