#include "unit/VxCamera/pixel/ReferencePicture.h"

#include <algorithm>
#include <cmath>

namespace reference {

namespace {

constexpr double kOpaque = 255;

template <typename PixelAt>
Picture Make(const Source& source, PixelAt pixelAt)
{
    Picture picture{source.widthPx, source.heightPx, {}};
    for (std::size_t y = 0; y < source.heightPx; ++y)
        for (std::size_t x = 0; x < source.widthPx; ++x)
            picture.pixels.push_back(pixelAt(x, y));
    return picture;
}

/// Position in 0 .. size - 1 of a position that may lie one outside: -1 is mirrored to 1, size to size - 2.
std::size_t Mirrored(std::ptrdiff_t position, std::size_t size)
{
    const auto last = static_cast<std::ptrdiff_t>(size) - 1;
    if (last == 0)
        return 0;
    if (position < 0)
        return 1;
    return static_cast<std::size_t>(position > last ? last - 1 : position);
}

/// Mean of all pixels of one colour in the 3x3 pixels around (x, y), or that pixel itself if it has the
/// colour.
double BayerColor(const Source& source, std::string_view cell, std::size_t x, std::size_t y, char color)
{
    const auto colorAt = [&](std::size_t column, std::size_t row) { return cell[row % 2 * 2 + column % 2]; };
    if (colorAt(x, y) == color)
        return source.bytes[y * source.widthPx + x];
    unsigned sum = 0;
    unsigned count = 0;
    for (const int dy : {-1, 0, 1})
        for (const int dx : {-1, 0, 1}) {
            // +2 keeps the position positive and its colour the same.
            const std::size_t column = static_cast<std::size_t>(static_cast<std::ptrdiff_t>(x) + dx + 2);
            const std::size_t row = static_cast<std::size_t>(static_cast<std::ptrdiff_t>(y) + dy + 2);
            if (colorAt(column, row) != color)
                continue;
            sum +=
                source.bytes[Mirrored(static_cast<std::ptrdiff_t>(y) + dy, source.heightPx) * source.widthPx +
                             Mirrored(static_cast<std::ptrdiff_t>(x) + dx, source.widthPx)];
            ++count;
        }
    return std::floor((sum + count / 2.0) / count);
}

} // namespace

Source RandomSource(std::size_t widthPx, std::size_t heightPx, std::size_t bytesPerPixel, unsigned seed)
{
    std::mt19937 random(seed);
    Source source{widthPx, heightPx, std::vector<std::uint8_t>(widthPx * heightPx * bytesPerPixel)};
    std::ranges::generate(source.bytes, [&] { return static_cast<std::uint8_t>(random() & 0xFF); });
    return source;
}

Picture FromChannels(const Source& source, std::string_view order)
{
    return Make(source, [&](std::size_t x, std::size_t y) {
        const std::size_t first = (y * source.widthPx + x) * order.size();
        const auto channel = [&](char letter) -> double {
            const std::size_t grey = order.find('Y');
            const std::size_t place = order.find(letter);
            if (place != std::string_view::npos)
                return source.bytes[first + place];
            return letter != 'a' && grey != std::string_view::npos ? source.bytes[first + grey] : kOpaque;
        };
        return Pixel{channel('B'), channel('G'), channel('R'), channel('a')};
    });
}

Picture FromBayer(const Source& source, std::string_view cell)
{
    return Make(source, [&](std::size_t x, std::size_t y) {
        return Pixel{BayerColor(source, cell, x, y, 'B'), BayerColor(source, cell, x, y, 'G'),
                     BayerColor(source, cell, x, y, 'R'), kOpaque};
    });
}

Pixel FromYCbCr(double y, double cb, double cr, const Matrix& matrix)
{
    const double luma = matrix.luma * (y - matrix.black);
    const double c = cb - 128;
    const double d = cr - 128;
    const auto limited = [](double value) { return std::clamp(value, 0.0, 255.0); };
    return {limited(luma + matrix.blueFromCb * c),
            limited(luma + matrix.greenFromCb * c + matrix.greenFromCr * d),
            limited(luma + matrix.redFromCr * d), kOpaque};
}

Picture FromPairs(const Source& source, std::string_view order, const Matrix& matrix)
{
    const std::size_t cb = order.find('U');
    const std::size_t cr = order.find('V');
    const std::size_t firstLuma = order.find('Y');
    const std::size_t secondLuma = order.rfind('Y');
    return Make(source, [&](std::size_t x, std::size_t y) {
        const std::size_t row = y * source.widthPx * 2;
        const std::size_t group = x / 2 * 4;
        double crValue = 128;
        if (group + cr < source.widthPx * 2)
            crValue = source.bytes[row + group + cr];
        else if (group > 0)
            crValue = source.bytes[row + group - 4 + cr];
        const std::size_t luma = x % 2 == 0 ? firstLuma : secondLuma;
        return FromYCbCr(source.bytes[row + group + luma], source.bytes[row + group + cb], crValue, matrix);
    });
}

} // namespace reference
