#include "unit/VxCamera/pixel/ReferencePicture.h"

#include "unit/VxCamera/pixel/ReferenceFormat.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <map>
#include <span>

namespace reference {

namespace {

constexpr double kOpaque = 255;
constexpr double kNoDifference = 128;

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

/// The components of a picture as 0..255.
class Levels {
public:
    Levels(const Format& format, const Source& source)
        : m_format(format), m_source(source), m_rowBytes(BytesPerRow(format, source.widthPx))
    {
    }

    [[nodiscard]] double At(std::size_t index, std::size_t y, std::size_t plane = 0) const
    {
        if (m_source.areRowsJoined)
            return Level(m_format, m_source.bytes, y * ComponentsPerRow(m_format, m_source.widthPx) + index);
        const std::size_t stride = m_rowBytes + m_source.rowPaddingBytes;
        const std::size_t first = (plane * m_source.heightPx + y) * stride;
        return Level(m_format, std::span(m_source.bytes).subspan(first, m_rowBytes), index);
    }

    /// A byte of the plane of colour differences, which follows that of brightness and has whole pairs.
    [[nodiscard]] double ChromaAt(std::size_t index, std::size_t y) const
    {
        const std::size_t pairs = m_rowBytes + m_rowBytes % 2;
        const std::size_t first = m_source.heightPx * (m_rowBytes + m_source.rowPaddingBytes) +
                                  y * (pairs + m_source.rowPaddingBytes);
        return m_source.bytes[first + index];
    }

private:
    const Format& m_format;
    const Source& m_source;
    std::size_t m_rowBytes;
};

/// Mean of all pixels of one colour in the 3x3 pixels around (x, y), or that pixel itself if it has the
/// colour.
double BayerColor(const Source& source, const Levels& levels, std::string_view cell, std::size_t x,
                  std::size_t y, char color)
{
    const auto colorAt = [&](std::size_t column, std::size_t row) { return cell[row % 2 * 2 + column % 2]; };
    if (colorAt(x, y) == color)
        return levels.At(x, y);
    double sum = 0;
    unsigned count = 0;
    for (const int dy : {-1, 0, 1})
        for (const int dx : {-1, 0, 1}) {
            const auto column = static_cast<std::ptrdiff_t>(x) + dx;
            const auto row = static_cast<std::ptrdiff_t>(y) + dy;
            // +2 keeps the position positive and its colour the same.
            if (colorAt(static_cast<std::size_t>(column + 2), static_cast<std::size_t>(row + 2)) != color)
                continue;
            sum += levels.At(Mirrored(column, source.widthPx), Mirrored(row, source.heightPx));
            ++count;
        }
    return std::floor((sum + count / 2.0) / count);
}

/// Blue, green, red and alpha of pixel x, whose components stand in the order of their letters.
Pixel ColorsAt(const Format& format, const Levels& levels, std::size_t x, std::size_t y)
{
    const auto channel = [&](char letter) -> double {
        const std::size_t grey = format.order.find('Y');
        const std::size_t place = format.order.find(letter);
        if (format.planes == Planes::PerComponent && place != std::string::npos)
            return levels.At(x, y, place);
        if (place != std::string::npos)
            return levels.At(x * format.order.size() + place, y);
        return letter != 'a' && grey != std::string::npos ? levels.At(x, y) : kOpaque;
    };
    return {channel('B'), channel('G'), channel('R'), channel('a')};
}

/// The colour difference of the group that pixel x belongs to, or of the group before where the row ends too
/// early, or none.
double DifferenceAt(const Format& format, const Source& source, const Levels& levels, std::size_t x,
                    std::size_t y, char letter)
{
    const std::size_t group = x / PixelsPerGroup(format) * format.order.size();
    std::size_t index = group + format.order.find(letter);
    if (index >= ComponentsPerRow(format, source.widthPx)) {
        if (group == 0)
            return kNoDifference;
        index -= format.order.size();
    }
    return levels.At(index, y);
}

double LumaAt(const Format& format, const Levels& levels, std::size_t x, std::size_t y)
{
    const std::size_t pixels = PixelsPerGroup(format);
    std::size_t place = format.order.find('Y');
    for (std::size_t i = 0; i < x % pixels; ++i)
        place = format.order.find('Y', place + 1);
    return levels.At(x / pixels * format.order.size() + place, y);
}

Pixel BiColorAt(const Format& format, const Source& source, const Levels& levels, std::size_t x,
                std::size_t y)
{
    const auto row = static_cast<std::ptrdiff_t>(y);
    const double above = levels.At(2 * x, Mirrored(row - 1, source.heightPx));
    const double below = levels.At(2 * x, Mirrored(row + 1, source.heightPx));
    const double other = std::floor((above + below + 1) / 2);
    const double own = levels.At(2 * x, y);
    const bool isRed = format.order[y % 2 * 2] == 'R';
    return {isRed ? other : own, levels.At(2 * x + 1, y), isRed ? own : other, kOpaque};
}

Pixel PixelAt(const Format& format, const Source& source, const Levels& levels, const Matrix& matrix,
              std::array<std::size_t, 2> position)
{
    const auto [x, y] = position;
    if (format.isBayer)
        return {BayerColor(source, levels, format.order, x, y, 'B'),
                BayerColor(source, levels, format.order, x, y, 'G'),
                BayerColor(source, levels, format.order, x, y, 'R'), kOpaque};
    if (format.isBiColor)
        return BiColorAt(format, source, levels, x, y);
    if (format.order.find('U') == std::string::npos)
        return ColorsAt(format, levels, x, y);
    if (format.planes != Planes::One) {
        const std::size_t chromaRow = format.planes == Planes::QuarterChroma ? y / 2 : y;
        return FromYCbCr(levels.At(x, y), levels.ChromaAt(x / 2 * 2 + format.order.find('U'), chromaRow),
                         levels.ChromaAt(x / 2 * 2 + format.order.find('V'), chromaRow), matrix);
    }
    return FromYCbCr(LumaAt(format, levels, x, y), DifferenceAt(format, source, levels, x, y, 'U'),
                     DifferenceAt(format, source, levels, x, y, 'V'), matrix);
}

} // namespace

Source RandomSource(std::size_t widthPx, std::size_t heightPx, std::size_t bytesPerPixel, unsigned seed)
{
    std::mt19937 random(seed);
    Source source{widthPx, heightPx, std::vector<std::uint8_t>(widthPx * heightPx * bytesPerPixel)};
    std::ranges::generate(source.bytes, [&] { return static_cast<std::uint8_t>(random() & 0xFF); });
    return source;
}

std::optional<Picture> FromFormat(std::string_view name, const Source& source)
{
    static std::map<std::string, std::optional<Format>, std::less<>> known; // parsing takes long
    auto found = known.find(name);
    if (found == known.end())
        found = known.emplace(name, ParseName(name)).first;
    const std::optional<Format>& format = found->second;
    if (!format)
        return std::nullopt;
    const Levels levels(*format, source);
    const Matrix matrix = MatrixOf(name);
    Picture picture{source.widthPx, source.heightPx, {}};
    for (std::size_t y = 0; y < source.heightPx; ++y)
        for (std::size_t x = 0; x < source.widthPx; ++x)
            picture.pixels.push_back(PixelAt(*format, source, levels, matrix, {x, y}));
    return picture;
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

} // namespace reference
