#include "VxCamera/pixel/RowKernels.h"

#include "unit/VxCamera/pixel/ReferencePicture.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

using pixel::InstructionSet;

namespace {

// Chosen: more than two registers of the widest set, so that every kind of row end occurs.
constexpr std::size_t kWidestPx = 130;
constexpr std::size_t kCanaryBytes = 64;
constexpr std::uint8_t kCanary = 0xC5;

/// Bytes on the heap with untouchable ones before and behind them.
class GuardedRow {
public:
    explicit GuardedRow(std::size_t size) : m_bytes(size + 2 * kCanaryBytes, kCanary), m_size(size) {}

    [[nodiscard]] std::span<std::uint8_t> Bytes() { return std::span(m_bytes).subspan(kCanaryBytes, m_size); }
    [[nodiscard]] bool IsIntact() const
    {
        const auto isCanary = [](std::uint8_t byte) { return byte == kCanary; };
        const std::span<const std::uint8_t> all(m_bytes);
        return std::ranges::all_of(all.first(kCanaryBytes), isCanary) &&
               std::ranges::all_of(all.last(kCanaryBytes), isCanary);
    }

private:
    std::vector<std::uint8_t> m_bytes;
    std::size_t m_size;
};

std::vector<std::uint8_t> RandomBytes(std::size_t size, unsigned seed)
{
    return reference::RandomSource(size, 1, 1, seed).bytes;
}

/// Every set that this processor has, but the scalar one, which the others are compared with.
std::vector<InstructionSet> FastSets()
{
    std::vector<InstructionSet> sets;
    for (const auto set : {InstructionSet::Sse41, InstructionSet::Avx2, InstructionSet::Avx512Vbmi})
        if (pixel::IsAvailable(set))
            sets.push_back(set);
    return sets;
}

/// Runs a kernel of every set on the same row and expects what the scalar one gives.
/// @param run  (kernels, destination): converts one row into the destination
template <typename Run>
void ExpectSameFromEverySet(std::size_t destinationBytes, const std::string& what, Run run)
{
    GuardedRow expected(destinationBytes);
    run(pixel::ScalarKernels(), expected.Bytes());
    ASSERT_TRUE(expected.IsIntact()) << what;
    for (const InstructionSet set : FastSets()) {
        GuardedRow actual(destinationBytes);
        run(pixel::KernelsOf(set), actual.Bytes());
        ASSERT_TRUE(std::ranges::equal(actual.Bytes(), expected.Bytes()))
            << what << ", set " << static_cast<int>(set);
        ASSERT_TRUE(actual.IsIntact()) << what << ", set " << static_cast<int>(set);
    }
}

/// Four random rows of a Bayer picture, each in memory of its own.
struct BayerSource {
    explicit BayerSource(std::size_t widthPx)
        : rows{RandomBytes(widthPx, 1), RandomBytes(widthPx, 2), RandomBytes(widthPx, 3),
               RandomBytes(widthPx, 4)}
    {
    }
    [[nodiscard]] pixel::BayerRows Rows() const { return {rows[0], rows[1], rows[2], rows[3]}; }

    std::array<std::vector<std::uint8_t>, 4> rows;
};

constexpr std::array kPhases{pixel::BayerPhase{true, true}, pixel::BayerPhase{true, false},
                             pixel::BayerPhase{false, true}, pixel::BayerPhase{false, false}};

constexpr std::array kMatrices{
    std::pair{VxColorMatrix::Bt601Full, reference::kFull601},
    std::pair{VxColorMatrix::Bt601Limited, reference::kLimited601},
    std::pair{VxColorMatrix::Bt709Limited, reference::kLimited709},
    std::pair{VxColorMatrix::Bt2020Limited, reference::kLimited2020},
};

void ExpectSameBayerRows(std::size_t sourcePx, std::size_t targetPx)
{
    const BayerSource source(sourcePx);
    for (std::size_t target = 0; target < pixel::kTargetCount; ++target)
        for (const pixel::BayerPhase phase : kPhases) {
            const std::size_t rowBytes = targetPx * pixel::kTargetBytesPerPixel[target];
            ExpectSameFromEverySet(
                2 * rowBytes, std::to_string(targetPx) + " of " + std::to_string(sourcePx) + " pixels",
                [&](const pixel::RowKernels& kernels, std::span<std::uint8_t> destination) {
                    kernels.bayer[target](source.Rows(), phase, destination.first(rowBytes),
                                          destination.last(rowBytes));
                });
        }
}

} // namespace

TEST(RowKernelsTest, BestSetIsAvailable)
{
    EXPECT_TRUE(pixel::IsAvailable(pixel::BestInstructionSet()));
    EXPECT_TRUE(pixel::IsAvailable(InstructionSet::Scalar));
}

TEST(RowKernelsTest, EverySetConvertsWholePixelsAlike)
{
    for (std::size_t layout = 0; layout < pixel::kInterleavedRowCount; ++layout)
        for (std::size_t target = 0; target < pixel::kTargetCount; ++target)
            for (std::size_t widthPx = 1; widthPx <= kWidestPx; ++widthPx) {
                const auto source = RandomBytes(widthPx * pixel::kInterleavedBytesPerPixel[layout],
                                                static_cast<unsigned>(widthPx));
                ExpectSameFromEverySet(
                    widthPx * pixel::kTargetBytesPerPixel[target],
                    "layout " + std::to_string(layout) + ", " + std::to_string(widthPx) + " pixels",
                    [&](const pixel::RowKernels& kernels, std::span<std::uint8_t> destination) {
                        kernels.interleaved[layout][target](source, destination);
                    });
            }
}

TEST(RowKernelsTest, EverySetConvertsPairsAlike)
{
    for (const auto& [matrix, unused] : kMatrices)
        for (std::size_t layout = 0; layout < pixel::kPairRowCount; ++layout)
            for (std::size_t target = 0; target < pixel::kTargetCount; ++target)
                for (std::size_t widthPx = 1; widthPx <= kWidestPx; ++widthPx) {
                    const auto source = RandomBytes(widthPx * 2, static_cast<unsigned>(widthPx));
                    const pixel::ColorCoefficients& coefficients = pixel::CoefficientsOf(matrix);
                    ExpectSameFromEverySet(
                        widthPx * pixel::kTargetBytesPerPixel[target], std::to_string(widthPx) + " pixels",
                        [&](const pixel::RowKernels& kernels, std::span<std::uint8_t> destination) {
                            kernels.pairs[layout][target](source, destination, coefficients);
                        });
                }
}

TEST(RowKernelsTest, EverySetConvertsTriplesAlike)
{
    for (const auto& [matrix, unused] : kMatrices)
        for (std::size_t layout = 0; layout < pixel::kTripleRowCount; ++layout)
            for (std::size_t target = 0; target < pixel::kTargetCount; ++target)
                for (std::size_t widthPx = 1; widthPx <= kWidestPx; ++widthPx) {
                    const auto source = RandomBytes(widthPx * 3, static_cast<unsigned>(widthPx));
                    ExpectSameFromEverySet(
                        widthPx * pixel::kTargetBytesPerPixel[target], std::to_string(widthPx) + " triples",
                        [&](const pixel::RowKernels& kernels, std::span<std::uint8_t> destination) {
                            kernels.triples[layout][target](source, destination,
                                                            pixel::CoefficientsOf(matrix));
                        });
                }
}

TEST(RowKernelsTest, EverySetConvertsDifferencesOfAnotherPlaneAlike)
{
    for (const auto& [matrix, unused] : kMatrices)
        for (std::size_t layout = 0; layout < pixel::kChromaRowCount; ++layout)
            for (std::size_t target = 0; target < pixel::kTargetCount; ++target)
                for (std::size_t widthPx = 1; widthPx <= kWidestPx; ++widthPx) {
                    const auto luma = RandomBytes(widthPx, static_cast<unsigned>(widthPx));
                    const auto chroma = RandomBytes(widthPx + widthPx % 2, static_cast<unsigned>(widthPx));
                    ExpectSameFromEverySet(
                        widthPx * pixel::kTargetBytesPerPixel[target], std::to_string(widthPx) + " pixels",
                        [&](const pixel::RowKernels& kernels, std::span<std::uint8_t> destination) {
                            kernels.semiplanar[layout][target]({luma, chroma}, destination,
                                                               pixel::CoefficientsOf(matrix));
                        });
                }
}

TEST(RowKernelsTest, EverySetConvertsPlanesAlike)
{
    for (std::size_t target = 0; target < pixel::kTargetCount; ++target)
        for (std::size_t widthPx = 1; widthPx <= kWidestPx; ++widthPx) {
            const BayerSource source(widthPx);
            ExpectSameFromEverySet(
                widthPx * pixel::kTargetBytesPerPixel[target], std::to_string(widthPx) + " pixels",
                [&](const pixel::RowKernels& kernels, std::span<std::uint8_t> destination) {
                    kernels.planes[target]({source.rows[0], source.rows[1], source.rows[2]}, destination);
                });
        }
}

TEST(RowKernelsTest, EverySetConvertsTwoColorsPerPixelAlike)
{
    for (std::size_t target = 0; target < pixel::kTargetCount; ++target)
        for (const auto phase : {pixel::BiColorPhase::Red, pixel::BiColorPhase::Blue})
            for (std::size_t widthPx = 1; widthPx <= kWidestPx; ++widthPx) {
                const BayerSource source(2 * widthPx);
                ExpectSameFromEverySet(
                    widthPx * pixel::kTargetBytesPerPixel[target], std::to_string(widthPx) + " pixels",
                    [&](const pixel::RowKernels& kernels, std::span<std::uint8_t> destination) {
                        kernels.biColor[target]({source.rows[0], source.rows[1], source.rows[2]}, phase,
                                                destination);
                    });
            }
}

// Rows of every length, from memory that ends with the last byte that belongs to them.
TEST(RowKernelsTest, EverySetUnpacksAlike)
{
    constexpr std::size_t kMostComponents = 3 * kWidestPx;
    for (std::size_t i = 0; i < pixel::kUnpackKindCount; ++i) {
        const auto group = pixel::GroupOf(static_cast<pixel::UnpackKind>(i));
        for (std::size_t components = 1; components <= kMostComponents; ++components) {
            const std::size_t bits = components * group.bytes * 8 / pixel::kUnpackGroup;
            const auto packed = RandomBytes((bits + 7) / 8, static_cast<unsigned>(components));
            // The last of four components in three fields has no meaning: whole pixels only.
            if (static_cast<pixel::UnpackKind>(i) == pixel::UnpackKind::Rgb10p32 && components % 4 != 0)
                continue;
            ExpectSameFromEverySet(components,
                                   "kind " + std::to_string(i) + ", " + std::to_string(components),
                                   [&](const pixel::RowKernels& kernels, std::span<std::uint8_t> to) {
                                       kernels.unpack[i](packed, to);
                                   });
        }
    }
}

TEST(RowKernelsTest, FieldsOfFiveAndSixBitsAreStretchedToTheNearest)
{
    for (unsigned field = 0; field < 64; ++field) {
        const unsigned pixels = (field & 31) | field << 5 | (field & 31) << 11;
        const std::array<std::uint8_t, 2> source{static_cast<std::uint8_t>(pixels & 0xFF),
                                                 static_cast<std::uint8_t>(pixels >> 8)};
        std::array<std::uint8_t, 3> converted{};
        constexpr auto kLayout = static_cast<std::size_t>(pixel::InterleavedRow::Bgr565);
        pixel::ScalarKernels().interleaved[kLayout][0](source, converted);

        EXPECT_EQ(converted[0], std::lround((field & 31) * 255.0 / 31));
        EXPECT_EQ(converted[1], std::lround(field * 255.0 / 63));
        EXPECT_EQ(converted[2], converted[0]);
    }
}

TEST(RowKernelsTest, EverySetDemosaicsAlike)
{
    for (std::size_t widthPx = 1; widthPx <= kWidestPx; ++widthPx)
        ExpectSameBayerRows(widthPx, widthPx);
}

TEST(RowKernelsTest, EverySetDemosaicsThePartOfARowAlike)
{
    for (std::size_t widthPx = 1; widthPx < kWidestPx; ++widthPx)
        ExpectSameBayerRows(kWidestPx, widthPx);
}

// The mean of four comes from means of two: every way in which these can be rounded occurs among all small
// values.
TEST(RowKernelsTest, EverySetTakesMeansOfFourAlike)
{
    constexpr unsigned kValues = 4;
    constexpr std::size_t kWidthPx = 3 * kValues * kValues * kValues * kValues;
    std::array<std::vector<std::uint8_t>, 4> rows;
    rows.fill(std::vector<std::uint8_t>(kWidthPx));
    for (unsigned i = 0; i < kWidthPx / 3; ++i) {
        // Around the pixel in the middle of each three: left, right, above and below take all values
        // independently.
        rows[1][3 * i] = static_cast<std::uint8_t>(i % kValues);
        rows[1][3 * i + 2] = static_cast<std::uint8_t>(i / kValues % kValues);
        rows[0][3 * i + 1] = static_cast<std::uint8_t>(i / kValues / kValues % kValues);
        rows[2][3 * i + 1] = static_cast<std::uint8_t>(i / kValues / kValues / kValues);
    }
    const pixel::BayerRows four{rows[0], rows[1], rows[2], rows[3]};

    for (const InstructionSet set : FastSets())
        for (const bool isFirstPixelGreen : {false, true}) {
            std::vector<std::uint8_t> first(kWidthPx * 3);
            std::vector<std::uint8_t> second(kWidthPx * 3);
            pixel::KernelsOf(set).bayer[0](four, {true, isFirstPixelGreen}, first, second);
            for (unsigned i = 0; i < kWidthPx / 3; ++i) {
                const std::size_t x = 3 * i + 1;
                const bool isGreen = isFirstPixelGreen == (x % 2 == 0);
                const unsigned sum = rows[1][x - 1] + rows[1][x + 1] + rows[0][x] + rows[2][x];
                EXPECT_EQ(first[3 * x + 1], isGreen ? 0 : (sum + 2) / 4) << i;
            }
        }
}

TEST(RowKernelsTest, ColorsOfBrightnessAndDifferencesAreThoseOfTheRealNumbers)
{
    constexpr std::size_t kLevels = 256;
    constexpr unsigned kStep = 3; // chosen: reaches both ends of 0..255
    constexpr double kLargestError = 0.5 + 0.02;
    std::vector<std::uint8_t> source(kLevels * 2);
    std::vector<std::uint8_t> converted(kLevels * 3);
    double worst = 0;
    for (const auto& [matrix, real] : kMatrices)
        for (unsigned cb = 0; cb < kLevels; cb += kStep)
            for (unsigned cr = 0; cr < kLevels; cr += kStep) {
                for (unsigned y = 0; y < kLevels; ++y) {
                    source[2 * y] = static_cast<std::uint8_t>(y);
                    source[2 * y + 1] = static_cast<std::uint8_t>(y % 2 == 0 ? cb : cr);
                }
                pixel::KernelsOf(pixel::BestInstructionSet())
                    .pairs[0][0](source, converted, pixel::CoefficientsOf(matrix));
                for (unsigned y = 0; y < kLevels; ++y) {
                    const reference::Pixel expected = reference::FromYCbCr(y, cb, cr, real);
                    for (std::size_t channel = 0; channel < 3; ++channel)
                        worst = std::max(worst, std::abs(converted[3 * y + channel] - expected[channel]));
                }
            }

    EXPECT_LT(worst, kLargestError);
}
