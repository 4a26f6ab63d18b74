#include "VxCamera/pixel/ColorCoefficients.h"

#include <array>
#include <cassert>
#include <utility>

namespace pixel {

namespace {

constexpr std::int16_t Fixed(double value)
{
    const double scaled = value * (1 << kCoefficientBits);
    return static_cast<std::int16_t>(scaled < 0 ? scaled - 0.5
                                                : scaled + 0.5); // less than 4 in all tables below
}

// Fixed by BT.601, BT.709 and BT.2020; limited: brightness has 219 steps and differences have 224 steps from
// black or grey to full, which is worked into the numbers.
constexpr std::int16_t kLimitedBlack = 16;
constexpr double kLimitedLuma = 255.0 / 219.0;

constexpr std::array kCoefficients{
    std::pair{VxColorMatrix::Bt601Full, ColorCoefficients{0, Fixed(1.0), Fixed(1.402), Fixed(-0.344136),
                                                          Fixed(-0.714136), Fixed(1.772)}},
    std::pair{VxColorMatrix::Bt601Limited,
              ColorCoefficients{kLimitedBlack, Fixed(kLimitedLuma), Fixed(1.596027), Fixed(-0.391762),
                                Fixed(-0.812968), Fixed(2.017232)}},
    std::pair{VxColorMatrix::Bt709Limited,
              ColorCoefficients{kLimitedBlack, Fixed(kLimitedLuma), Fixed(1.792741), Fixed(-0.213249),
                                Fixed(-0.532909), Fixed(2.112402)}},
    std::pair{VxColorMatrix::Bt2020Limited,
              ColorCoefficients{kLimitedBlack, Fixed(kLimitedLuma), Fixed(1.678674), Fixed(-0.187326),
                                Fixed(-0.650424), Fixed(2.141772)}},
};

} // namespace

const ColorCoefficients& CoefficientsOf(VxColorMatrix matrix)
{
    for (const auto& [key, coefficients] : kCoefficients)
        if (key == matrix)
            return coefficients;
    assert(!"a matrix that the table lacks");
    return kCoefficients.front().second;
}

} // namespace pixel
