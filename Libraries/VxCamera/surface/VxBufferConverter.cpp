#include "VxDSSource/camera/VxBufferConverter.h"

#include "VxCamera/pixel/VxPixelConverter.h"
#include "VxCamera/pixel/VxPixelFormat.h"
#include "VxCamera/surface/VxBufferImpl.h"
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

std::string TextOf(const VxImage& picture)
{
    return std::to_string(picture.GetWidth()) + "x" + std::to_string(picture.GetHeight()) + " " +
           VxPixelFormatText(picture.GetPixelType());
}

/// @param given  what came of giving the destination a picture; OK or NOT_INITIALIZED: nobody has tried
VxResult NoDestination(const VxImage& source, const VxResult& given)
{
    const std::string theSource = "; the source is " + TextOf(source) + ".";
    if (given.IsOK() || given.Code() == VxError::NotInitialized)
        return {VxError::InvalidParameter,
                "The destination buffer holds no picture: it has no size, format or memory yet" + theSource};
    return {given.Code(),
            "The destination cannot be as it was asked for: " + given.GetDescription().Narrow() + theSource};
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
    const VxResult& given = destination.Impl().picture.Given();
    // Formats between which there is no way are refused below, before the destination changes.
    const bool isResized = reallocate == VxReallocate::Yes && HasPicture(to) &&
                           VxPixelConverter::CheckFormats(from->GetPixelType(), to->GetPixelType()).IsOK();
    if (isResized && !GiveSizeOf(*from, *to).IsOK())
        return NoDestination(*from, given);
    if (!HasPicture(to))
        return NoDestination(*from, given);
    const auto order = flip == VxVerticalFlip::On ? VxRowOrder::BottomUp : VxRowOrder::TopDown;
    auto view = ViewOf<const std::uint8_t>(*from);
    view.areRowsJoined = source.Impl().picture.AreLinesJoined(); // the public image cannot tell
    return m_impl->pixels.Convert(view, ViewOf<std::uint8_t>(*to), order);
}
