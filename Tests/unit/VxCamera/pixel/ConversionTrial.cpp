#include "unit/VxCamera/pixel/ConversionTrial.h"

#include "VxCamera/pixel/VxPixelFormat.h"
#include "unit/VxCamera/pixel/GuardedPicture.h"
#include "unit/VxCamera/pixel/ReferencePicture.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <optional>
#include <string>
#include <tuple>

namespace {

/// Differences that rounding explains; integer formulas must agree exactly, which a difference below 1/2
/// says.
constexpr double kRounding = 0.52;

void ExpectPixels(const ConversionCase& tried, const reference::Picture& expected,
                  const GuardedPicture& actual)
{
    const std::size_t bytesPerPixel = tried.targetCode == VxPfnc::kBgr8 ? 3 : 4;
    const std::size_t columns = std::min(tried.widthPx, tried.targetWidthPx);
    const std::size_t rows = std::min(tried.heightPx, tried.targetHeightPx);
    for (std::size_t y = 0; y < rows; ++y) {
        const std::size_t memoryRow = tried.order == VxRowOrder::BottomUp ? tried.targetHeightPx - 1 - y : y;
        const auto row = actual.MemoryRow(memoryRow);
        for (std::size_t x = 0; x < columns; ++x)
            for (std::size_t channel = 0; channel < bytesPerPixel; ++channel)
                if (std::abs(row[x * bytesPerPixel + channel] - expected.At(x, y)[channel]) > kRounding)
                    FAIL() << "pixel " << x << ", " << y << ", channel " << channel << ": "
                           << int{row[x * bytesPerPixel + channel]} << " instead of "
                           << expected.At(x, y)[channel];
    }
    const std::size_t firstRow = tried.order == VxRowOrder::BottomUp ? tried.targetHeightPx - rows : 0;
    EXPECT_TRUE(actual.IsIntactOutside(columns * bytesPerPixel, firstRow, firstRow + rows));
}

/// A random picture and what it is to become.
struct KnownSource {
    reference::Source source;
    std::optional<reference::Picture> expected;
};

/// Random bytes in the whole of the picture's memory, the padding between its rows included.
KnownSource MakeSource(const ConversionCase& tried)
{
    const auto layout = VxLayOutPicture(tried.code, tried.widthPx, tried.heightPx, tried.sourcePadding);
    const std::size_t joinedBits =
        std::size_t{tried.widthPx} * tried.heightPx * VxBitsPerPixel(tried.code); // small pictures
    const std::size_t bytes = tried.areRowsJoined ? (joinedBits + 7) / 8 : layout->usedBytes;
    const unsigned seed = tried.widthPx * 1000 + tried.heightPx;
    KnownSource known{{tried.widthPx, tried.heightPx, reference::RandomSource(bytes, 1, 1, seed).bytes,
                       tried.sourcePadding, tried.areRowsJoined},
                      std::nullopt};
    known.expected = reference::FromFormat(VxFindPixelFormat(tried.code)->name, known.source);
    return known;
}

/// The same source is tried many times in a row, and the reference is slow.
const KnownSource& SourceOf(const ConversionCase& tried)
{
    static std::optional<std::tuple<std::uint32_t, std::uint32_t, std::uint32_t, std::size_t, bool>> lastKey;
    static KnownSource last;
    const auto key =
        std::tuple{tried.code, tried.widthPx, tried.heightPx, tried.sourcePadding, tried.areRowsJoined};
    if (lastKey != key) {
        last = MakeSource(tried);
        lastKey = key;
    }
    return last;
}

} // namespace

std::vector<VxPixelConverter> ConvertersOfAllSets()
{
    std::vector<VxPixelConverter> converters;
    for (const auto set : {pixel::InstructionSet::Scalar, pixel::InstructionSet::Sse41,
                           pixel::InstructionSet::Avx2, pixel::InstructionSet::Avx512Vbmi})
        if (pixel::IsAvailable(set))
            converters.emplace_back(set);
    return converters;
}

void TryConversion(VxPixelConverter& converter, const ConversionCase& tried)
{
    SCOPED_TRACE(std::string(VxFindPixelFormat(tried.code)->name) + " " + std::to_string(tried.widthPx) +
                 "x" + std::to_string(tried.heightPx) + " to " +
                 std::string(VxFindPixelFormat(tried.targetCode)->name) + " " +
                 std::to_string(tried.targetWidthPx) + "x" + std::to_string(tried.targetHeightPx));
    const auto& [source, expected] = SourceOf(tried);
    GuardedPicture to(tried.targetCode, tried.targetWidthPx, tried.targetHeightPx, tried.targetPadding);

    const VxResult result = converter.Convert(
        {source.bytes, tried.code, tried.widthPx, tried.heightPx, tried.sourcePadding, tried.areRowsJoined},
        to.View(), tried.order);

    ASSERT_TRUE(result.IsOK()) << result.GetDescription().GetAscii();
    ASSERT_TRUE(expected);
    ExpectPixels(tried, *expected, to);
}

std::vector<std::uint8_t> ToBgr(std::uint32_t code, std::uint32_t widthPx, std::uint32_t heightPx,
                                const std::vector<std::uint8_t>& bytes, VxRowOrder order)
{
    std::vector<std::uint8_t> converted(std::size_t{widthPx} * heightPx * 3);
    VxPixelConverter converter;
    const VxResult result = converter.Convert({bytes, code, widthPx, heightPx, 0},
                                              {converted, VxPfnc::kBgr8, widthPx, heightPx, 0}, order);
    EXPECT_TRUE(result.IsOK()) << result.GetDescription().GetAscii();
    return converted;
}
