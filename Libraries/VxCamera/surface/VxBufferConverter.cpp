#include "VxDSSource/camera/VxBufferConverter.h"

#include "VxCamera/pixel/VxPixelConverter.h"
#include "VxCamera/pixel/VxPixelFormat.h"
#include "VxDSSource/camera/VxBuffer.h"
#include "VxDSSource/camera/VxImage.h"

#include <cstdint>
#include <span>
#include <string>

/// What the converter keeps from call to call.
class VxBufferConverterImpl {
public:
    VxPixelConverter pixels;
};

namespace {

template <typename Byte, typename Image>
VxBasicPictureView<Byte> ViewOf(Image& image)
{
    return {std::span<Byte>(image.GetDataPointer(), image.GetSize()), image.GetPixelType(), image.GetWidth(),
            image.GetHeight(), image.GetRowPadding()};
}

bool HasPicture(const VxImage* image)
{
    return image != nullptr && image->GetDataPointer() != nullptr && image->GetSize() != 0;
}

VxResult NoPicture(const char* which)
{
    return {VxError::InvalidParameter, std::string("The ") + which + " buffer holds no picture."};
}

/// What the destination was to be is not known any more: an Attach or Alloc that failed has said it.
VxResult NoDestination(const VxImage& source)
{
    const VxPixelFormat* const format = VxFindPixelFormat(source.GetPixelType());
    return {VxError::InvalidParameter,
            "The destination buffer holds no picture; the source is " + std::to_string(source.GetWidth()) +
                "x" + std::to_string(source.GetHeight()) + " " +
                std::string(format != nullptr ? format->name : "of an unknown format") + "."};
}

/// Gives the destination the source's size. Memory is left alone when the size is right already.
VxResult GiveSizeOf(const VxImage& source, VxImage& destination)
{
    if (HasPicture(&destination) && destination.GetWidth() == source.GetWidth() &&
        destination.GetHeight() == source.GetHeight())
        return VxResult::Ok();
    return destination.Alloc(source.GetWidth(), source.GetHeight(), destination.GetPixelType(),
                             destination.GetRowPadding(), 0, 0);
}

} // namespace

// One thread is enough for what a picture takes, and a module inside somebody else's program starts none
// unasked: the number is accepted for every value and does not count.
VxBufferConverter::VxBufferConverter(int /*threadCount*/) : m_impl(std::make_unique<VxBufferConverterImpl>())
{
}

VxBufferConverter::~VxBufferConverter() = default;

VxResult VxBufferConverter::Convert(const VxBuffer& source, VxBuffer& destination, VxReallocate reallocate,
                                    VxVerticalFlip flip)
{
    const VxImage* const from = source.GetImage();
    if (!HasPicture(from))
        return NoPicture("source");
    VxImage* const to = destination.GetImage();
    if (to == nullptr)
        return NoDestination(*from);
    if (reallocate == VxReallocate::Yes) {
        if (VxResult known = VxPixelConverter::CheckFormats(from->GetPixelType(), to->GetPixelType());
            !known.IsOK())
            return known;
        if (VxResult given = GiveSizeOf(*from, *to); !given.IsOK())
            return given;
    }
    if (!HasPicture(to))
        return NoDestination(*from);
    const auto order = flip == VxVerticalFlip::On ? VxRowOrder::BottomUp : VxRowOrder::TopDown;
    return m_impl->pixels.Convert(ViewOf<const std::uint8_t>(*from), ViewOf<std::uint8_t>(*to), order);
}
