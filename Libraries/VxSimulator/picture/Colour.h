#pragma once

#include <cstdint>

namespace simulator {

struct Colour {
    std::uint8_t red = 0;
    std::uint8_t green = 0;
    std::uint8_t blue = 0;

    bool operator==(const Colour&) const = default;
};

constexpr Colour kBlack{0, 0, 0};
constexpr Colour kWhite{255, 255, 255};

/// @return  brightness; equal components give exactly that value
[[nodiscard]] constexpr std::uint8_t GreyOf(const Colour& colour)
{
    // Fixed by BT.601: 0.299, 0.587 and 0.114, here in 1/256, with 0.5 for rounding.
    return static_cast<std::uint8_t>((77u * colour.red + 150u * colour.green + 29u * colour.blue + 128u) >>
                                     8);
}

[[nodiscard]] constexpr Colour Grey(std::uint8_t value)
{
    return {value, value, value};
}

} // namespace simulator
