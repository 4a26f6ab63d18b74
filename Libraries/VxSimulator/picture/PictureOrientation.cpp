#include "VxSimulator/picture/PictureOrientation.h"

#include "VxSimulator/picture/TestScene.h"

#include <algorithm>
#include <array>
#include <optional>

namespace simulator {

namespace {

enum class Flip { None, Exchanged };

struct Sample {
    std::uint32_t along;  // across the mark's field, from 0 to 23
    std::uint32_t inward; // away from the edge at which the mark lies
};

// Chosen: three pixels or more away from every edge of the triangle, so that no demosaicing blurs them.
constexpr std::array kWhites{Sample{11, 14}, Sample{12, 14}, Sample{8, 18}, Sample{15, 18}};
constexpr std::array kBlacks{Sample{4, 6}, Sample{19, 6}, Sample{4, 3}, Sample{19, 3}};

// Chosen: between them lies a quarter of the range for noise, on both sides.
constexpr std::uint8_t kWhiteFrom = 192;
constexpr std::uint8_t kBlackTo = 63;

/// Grey of the pixel that is at (x, y) when both flips are undone.
std::uint8_t GreyAt(const PictureView& picture, std::uint32_t x, std::uint32_t y, Flip vertical,
                    Flip horizontal)
{
    return GreyOf(picture.At(horizontal == Flip::None ? x : picture.widthPx - 1 - x,
                             vertical == Flip::None ? y : picture.heightPx - 1 - y));
}

template <typename GreyOfSample>
bool IsMark(GreyOfSample greyOf)
{
    return std::ranges::all_of(kWhites, [&](const Sample& sample) { return greyOf(sample) >= kWhiteFrom; }) &&
           std::ranges::all_of(kBlacks, [&](const Sample& sample) { return greyOf(sample) <= kBlackTo; });
}

/// @return  which way round the picture is, or none when the mark is at neither place
template <typename HasMarkWhen>
std::optional<Flip> FlipOf(HasMarkWhen hasMarkWhen)
{
    if (hasMarkWhen(Flip::None))
        return Flip::None;
    if (hasMarkWhen(Flip::Exchanged))
        return Flip::Exchanged;
    return std::nullopt;
}

} // namespace

PictureOrientation ReadOrientation(const PictureView& picture)
{
    const TestScene scene(picture.widthPx, picture.heightPx);
    const auto up = scene.UpMarkPlace();
    const auto left = scene.LeftMarkPlace();
    if (!picture.IsValid() || !up || !left)
        return PictureOrientation::Unknown;

    // Each mark lies in the middle of its edge and is symmetric, so it can be found whatever the other flip
    // is.
    const auto vertical = FlipOf([&](Flip flip) {
        return IsMark([&](const Sample& sample) {
            return GreyAt(picture, up->xPx + sample.along, up->yPx + sample.inward, flip, Flip::None);
        });
    });
    const auto horizontal = FlipOf([&](Flip flip) {
        return IsMark([&](const Sample& sample) {
            return GreyAt(picture, left->xPx + sample.inward, left->yPx + sample.along, Flip::None, flip);
        });
    });
    if (!vertical || !horizontal)
        return PictureOrientation::Unknown;
    if (*vertical == Flip::None)
        return *horizontal == Flip::None ? PictureOrientation::Upright : PictureOrientation::Mirrored;
    return *horizontal == Flip::None ? PictureOrientation::UpsideDown
                                     : PictureOrientation::UpsideDownAndMirrored;
}

} // namespace simulator
