#include "VxSimulator/picture/TestPicture.h"

#include "VxSimulator/picture/PictureFormat.h"
#include "VxSimulator/picture/TestPictureRenderer.h"

namespace simulator {

namespace {

/// @return  the format, or null when there is no such picture
const PictureFormat* FormatFor(std::uint32_t widthPx, std::uint32_t heightPx, std::uint32_t pixelFormat)
{
    const PictureFormat* format = FindPictureFormat(pixelFormat);
    if (format == nullptr || widthPx == 0 || heightPx == 0)
        return nullptr;
    return SharesColour(format->layout) && widthPx % 2 != 0 ? nullptr : format;
}

} // namespace

std::vector<std::byte> TestPicture(std::uint64_t frameNumber, std::uint32_t widthPx, std::uint32_t heightPx,
                                   std::uint32_t pixelFormat, TestPattern pattern)
{
    const PictureFormat* format = FormatFor(widthPx, heightPx, pixelFormat);
    if (format == nullptr)
        return {};
    const TestPictureRenderer renderer(*format, widthPx, heightPx, pattern);
    std::vector<std::byte> picture(renderer.Bytes());
    renderer.Render(frameNumber, picture);
    return picture;
}

std::vector<std::byte> TestPictureBgr(std::uint64_t frameNumber, std::uint32_t widthPx,
                                      std::uint32_t heightPx, std::uint32_t pixelFormat)
{
    const PictureFormat* format = FormatFor(widthPx, heightPx, pixelFormat);
    if (format == nullptr)
        return {};
    const bool isGrey = format->layout == PixelLayout::Grey;
    const TestScene scene(widthPx, heightPx);
    std::vector<std::byte> picture;
    picture.reserve(std::size_t{widthPx} * heightPx * 3);
    for (std::uint32_t y = 0; y < heightPx; ++y) {
        for (std::uint32_t x = 0; x < widthPx; ++x) {
            const Colour colour = scene.At(frameNumber, x, y);
            const Colour shown = isGrey ? Grey(GreyOf(colour)) : colour;
            for (const std::uint8_t component : {shown.blue, shown.green, shown.red})
                picture.push_back(static_cast<std::byte>(component));
        }
    }
    return picture;
}

bool IsFlat(std::uint64_t frameNumber, std::uint32_t widthPx, std::uint32_t heightPx, std::uint32_t xPx,
            std::uint32_t yPx, std::uint32_t radiusPx)
{
    const auto isInside = [radiusPx](std::uint32_t at, std::uint32_t size) {
        return at >= radiusPx && at < size && size - 1 - at >= radiusPx;
    };
    if (!isInside(xPx, widthPx) || !isInside(yPx, heightPx))
        return false;
    const TestScene scene(widthPx, heightPx);
    const Colour colour = scene.At(frameNumber, xPx, yPx);
    for (std::uint32_t y = yPx - radiusPx; y <= yPx + radiusPx; ++y)
        for (std::uint32_t x = xPx - radiusPx; x <= xPx + radiusPx; ++x)
            if (scene.At(frameNumber, x, y) != colour)
                return false;
    return true;
}

} // namespace simulator
