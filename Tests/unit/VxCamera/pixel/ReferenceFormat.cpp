#include "unit/VxCamera/pixel/ReferenceFormat.h"

// The compiler's own <regex> looks uninitialised to it when sanitized (GCC PR 105562).
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"

#include <algorithm>
#include <array>
#include <cstdint>
#include <regex>

namespace reference {

namespace {

using Match = std::match_results<std::string_view::const_iterator>;

bool Fits(std::string_view name, const char* pattern, Match& match)
{
    return std::regex_match(name.begin(), name.end(), match, std::regex(pattern));
}

unsigned NumberOf(const Match& match, std::size_t group)
{
    return static_cast<unsigned>(std::stoul(match.str(group)));
}

Packing PackingOf(const std::string& suffix)
{
    if (suffix == "p")
        return Packing::Stream;
    if (suffix == "Packed")
        return Packing::OldPacked;
    if (suffix == "s")
        return Packing::Signed;
    return Packing::Cells;
}

std::optional<Format> ParseYuv(std::string_view name)
{
    if (name == "YUV411_8_UYYVYY")
        return Format{"UYYVYY", 8};
    if (name == "YUV422_8_UYVY")
        return Format{"UYVY", 8};
    if (name == "YUV422_8")
        return Format{"YUYV", 8};
    if (name == "YUV8_UYV")
        return Format{"UYV", 8};
    return std::nullopt;
}

std::optional<Format> ParseYCbCr(std::string_view name)
{
    Match match;
    if (Fits(name, "YCbCr(420|422)_8_YY_(CbCr|CrCb)_Semiplanar", match))
        return Format{match.str(2) == "CbCr" ? "UV" : "VU", 8, Packing::Cells,
                      match.str(1) == "420" ? Planes::QuarterChroma : Planes::HalfChroma};
    if (!Fits(name, "YCbCr(601_?|709_?|2020_?)?(411_|422_)?(8|10|12)(p)?(_CbYCr|_CbYCrY|_CbYYCrYY)?", match))
        return std::nullopt;
    const bool isLiteral = match[5].matched;
    std::string order = isLiteral ? "UYV" : "YUV";
    if (match.str(2) == "422_")
        order = isLiteral ? "UYVY" : "YUYV";
    if (match.str(2) == "411_")
        order = isLiteral ? "UYYVYY" : "YYUYYV";
    return Format{order, NumberOf(match, 3), PackingOf(match.str(4))};
}

std::optional<Format> ParseRgb(std::string_view name)
{
    Match match;
    if (Fits(name, "(RGB|BGR)565p", match))
        return Format{match.str(1), 5, Packing::Word565};
    if (name == "RGB10p32")
        return Format{"RGB", 10, Packing::Word32};
    if (name == "RGB10V1Packed")
        return Format{"RGB", 10, Packing::OldWord32};
    if (Fits(name, "RGB(8|10|12|16)_Planar", match))
        return Format{"RGB", NumberOf(match, 1), Packing::Cells, Planes::PerComponent};
    if (Fits(name, "(RGBa?|BGRa?)(\\d+)(p)?", match))
        return Format{match.str(1), NumberOf(match, 2), PackingOf(match.str(3))};
    return std::nullopt;
}

std::string CellOf(const std::string& firstRow)
{
    if (firstRow == "GR")
        return "GRBG";
    if (firstRow == "RG")
        return "RGGB";
    return firstRow == "GB" ? "GBRG" : "BGGR";
}

} // namespace

std::optional<Format> ParseName(std::string_view name)
{
    Match match;
    if (Fits(name, "Mono(\\d+)(s|p|Packed)?", match) || Fits(name, "SCF1[WRGB]{4}(\\d+)(p)?", match) ||
        Fits(name, "[RGB](8|10|12|16)()", match))
        return Format{"Y", NumberOf(match, 1), PackingOf(match.str(2))};
    if (Fits(name, "Bayer(GR|RG|GB|BG)(\\d+)(p|Packed)?", match))
        return Format{CellOf(match.str(1)), NumberOf(match, 2), PackingOf(match.str(3)), Planes::One, true};
    if (Fits(name, "BiColor(RGBG|BGRG)(\\d+)(p)?", match))
        return Format{match.str(1), NumberOf(match, 2), PackingOf(match.str(3)), Planes::One, false, true};
    if (name.starts_with("YUV"))
        return ParseYuv(name);
    if (name.starts_with("YCbCr"))
        return ParseYCbCr(name);
    return ParseRgb(name);
}

Matrix MatrixOf(std::string_view name)
{
    if (name.starts_with("YCbCr601"))
        return kLimited601;
    if (name.starts_with("YCbCr709"))
        return kLimited709;
    return name.starts_with("YCbCr2020") ? kLimited2020 : kFull601;
}

std::size_t PixelsPerGroup(const Format& format)
{
    const auto lumas = static_cast<std::size_t>(std::ranges::count(format.order, 'Y'));
    return std::max<std::size_t>(lumas, 1);
}

std::size_t ComponentsPerRow(const Format& format, std::size_t widthPx)
{
    if (format.isBayer || format.planes != Planes::One)
        return widthPx;
    if (format.isBiColor)
        return 2 * widthPx;
    const std::size_t pixels = PixelsPerGroup(format);
    return (widthPx * format.order.size() + pixels - 1) / pixels;
}

std::size_t BytesPerRow(const Format& format, std::size_t widthPx)
{
    const std::size_t components = ComponentsPerRow(format, widthPx);
    switch (format.packing) {
    case Packing::Stream:
        return (components * format.bits + 7) / 8;
    case Packing::OldPacked:
        return (components * 12 + 7) / 8;
    case Packing::Word565:
        return widthPx * 2;
    case Packing::Word32:
    case Packing::OldWord32:
        return widthPx * 4;
    case Packing::Cells:
    case Packing::Signed:
        break;
    }
    return components * (format.bits <= 8 ? 1 : format.bits <= 16 ? 2 : 4);
}

namespace {

double Highest8(std::uint64_t value, unsigned bits)
{
    const std::uint64_t largest = (std::uint64_t{1} << bits) - 1;
    if (bits < 8)
        return static_cast<double>(value & largest) * 255.0 / static_cast<double>(largest);
    return static_cast<double>((value & largest) >> (bits - 8));
}

std::uint64_t BitsOf(std::span<const std::uint8_t> row, std::size_t firstBit, unsigned bits)
{
    std::uint64_t value = 0;
    for (std::size_t i = 0; i < bits; ++i) {
        const std::size_t bit = firstBit + i;
        value |= static_cast<std::uint64_t>(row[bit / 8] >> bit % 8 & 1) << i;
    }
    return value;
}

std::uint64_t OldPackedAt(std::span<const std::uint8_t> row, std::size_t index, unsigned bits)
{
    const std::size_t group = index / 2 * 3;
    const unsigned lowBits = bits - 8;
    const unsigned high = index % 2 == 0 ? row[group] : row[group + 2];
    const unsigned low = index % 2 == 0 ? row[group + 1] : row[group + 1] >> 4;
    return high << lowBits | (low & ((1u << lowBits) - 1));
}

} // namespace

double Level(const Format& format, std::span<const std::uint8_t> row, std::size_t index)
{
    const std::size_t pixel = index / 3;
    const std::size_t channel = index % 3;
    switch (format.packing) {
    case Packing::Signed:
        return static_cast<std::int8_t>(row[index]) + 128.0;
    case Packing::Stream:
        return Highest8(BitsOf(row, index * format.bits, format.bits), format.bits);
    case Packing::OldPacked:
        return Highest8(OldPackedAt(row, index, format.bits), format.bits);
    case Packing::Word32:
        return Highest8(BitsOf(row, pixel * 32 + channel * 10, 10), 10);
    case Packing::Word565: {
        constexpr std::array<unsigned, 3> kFirst{0, 5, 11};
        constexpr std::array<unsigned, 3> kBits{5, 6, 5};
        return Highest8(BitsOf(row, pixel * 16 + kFirst[channel], kBits[channel]), kBits[channel]);
    }
    case Packing::OldWord32: // 2 low bits of R, G, B and 2 unused ones, then 8 high bits of B, G and R
        return row[pixel * 4 + 3 - channel];
    case Packing::Cells:
        break;
    }
    const unsigned cellBits = format.bits <= 8 ? 8 : format.bits <= 16 ? 16 : 32;
    return Highest8(BitsOf(row, index * cellBits, cellBits), format.bits);
}

} // namespace reference
