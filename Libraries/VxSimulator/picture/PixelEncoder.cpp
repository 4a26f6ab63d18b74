#include "VxSimulator/picture/PixelEncoder.h"

#include <array>
#include <cassert>

namespace simulator {

namespace {

// Fixed by BT.601 with full range, in 1/65536: brightness, and how much a component adds to U and V.
constexpr int kShift = 16;
constexpr int kHalf = 1 << (kShift - 1);
constexpr int kCentre = 128 << kShift;
constexpr std::array<int, 3> kY{19595, 38470, 7471};
constexpr std::array<int, 3> kU{-11059, -21709, 32768};
constexpr std::array<int, 3> kV{32768, -27439, -5329};

constexpr int Weighted(const std::array<int, 3>& weights, const Colour& colour)
{
    return weights[0] * colour.red + weights[1] * colour.green + weights[2] * colour.blue;
}

constexpr std::byte Brightness(const Colour& colour)
{
    return static_cast<std::byte>((Weighted(kY, colour) + kHalf) >>
                                  kShift); // 0 to 255: the weights add up to 1
}

/// Mean of two pixels. The rounding is just below one half, so that pure blue and red give 255 and not 256.
constexpr std::byte Chroma(const std::array<int, 3>& weights, const Colour& left, const Colour& right)
{
    const int sum = Weighted(weights, left) + Weighted(weights, right);
    return static_cast<std::byte>((sum + 2 * kCentre + 2 * kHalf - 1) >> (kShift + 1));
}

enum class Component { Red, Green, Blue };

std::byte ComponentOf(const Colour& colour, Component component)
{
    switch (component) {
    case Component::Red:
        return static_cast<std::byte>(colour.red);
    case Component::Green:
        return static_cast<std::byte>(colour.green);
    case Component::Blue:
        break;
    }
    return static_cast<std::byte>(colour.blue);
}

using BayerCell = std::array<std::array<Component, 2>, 2>; // [row][column]

BayerCell CellOf(PixelLayout layout)
{
    using enum Component;
    switch (layout) {
    case PixelLayout::BayerGR:
        return {{{Green, Red}, {Blue, Green}}};
    case PixelLayout::BayerGB:
        return {{{Green, Blue}, {Red, Green}}};
    case PixelLayout::BayerBG:
        return {{{Blue, Green}, {Green, Red}}};
    default:
        return {{{Red, Green}, {Green, Blue}}}; // BayerRG
    }
}

void EncodeBayer(PixelLayout layout, std::span<const Colour> colours, std::uint32_t xPx, std::uint32_t yPx,
                 std::span<std::byte> out)
{
    const auto row = CellOf(layout)[yPx % 2];
    for (std::size_t i = 0; i < colours.size(); ++i)
        out[i] = ComponentOf(colours[i], row[(xPx + i) % 2]);
}

void EncodeInterleaved(PixelLayout layout, std::span<const Colour> colours, std::span<std::byte> out)
{
    const bool isRedFirst = layout == PixelLayout::Rgb || layout == PixelLayout::Rgba;
    const std::size_t step = layout == PixelLayout::Rgba || layout == PixelLayout::Bgra ? 4 : 3;
    for (std::size_t i = 0; i < colours.size(); ++i) {
        const auto pixel = out.subspan(i * step, step);
        pixel[0] = static_cast<std::byte>(isRedFirst ? colours[i].red : colours[i].blue);
        pixel[1] = static_cast<std::byte>(colours[i].green);
        pixel[2] = static_cast<std::byte>(isRedFirst ? colours[i].blue : colours[i].red);
        if (step == 4)
            pixel[3] = std::byte{0xFF}; // opaque
    }
}

void EncodePairs(PixelLayout layout, std::span<const Colour> colours, std::span<std::byte> out)
{
    const std::size_t brightness = layout == PixelLayout::Yuyv ? 0 : 1;
    const std::size_t chroma = 1 - brightness;
    for (std::size_t i = 0; i + 1 < colours.size(); i += 2) {
        const auto pair = out.subspan(i * 2, 4);
        pair[brightness] = Brightness(colours[i]);
        pair[brightness + 2] = Brightness(colours[i + 1]);
        pair[chroma] = Chroma(kU, colours[i], colours[i + 1]);
        pair[chroma + 2] = Chroma(kV, colours[i], colours[i + 1]);
    }
}

} // namespace

void EncodePixels(PixelLayout layout, std::span<const Colour> colours, std::uint32_t xPx, std::uint32_t yPx,
                  std::span<std::byte> out)
{
    assert(!SharesColour(layout) || (colours.size() % 2 == 0 && xPx % 2 == 0));
    if (IsBayer(layout)) {
        EncodeBayer(layout, colours, xPx, yPx, out);
    } else if (SharesColour(layout)) {
        EncodePairs(layout, colours, out);
    } else if (layout == PixelLayout::Grey) {
        for (std::size_t i = 0; i < colours.size(); ++i)
            out[i] = static_cast<std::byte>(GreyOf(colours[i]));
    } else {
        EncodeInterleaved(layout, colours, out);
    }
}

} // namespace simulator
