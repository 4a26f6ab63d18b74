#include "VxSimulator/picture/TestScene.h"

#include "VxSimulator/picture/FrameNumberStrip.h"

#include <algorithm>
#include <array>

namespace simulator {

namespace {

constexpr std::uint32_t kBars = 8;
constexpr std::array<Colour, kBars> kFullColours{kWhite,
                                                 Colour{255, 255, 0},
                                                 Colour{0, 255, 255},
                                                 Colour{0, 255, 0},
                                                 Colour{255, 0, 255},
                                                 Colour{255, 0, 0},
                                                 Colour{0, 0, 255},
                                                 kBlack};
// Chosen: neither 0 nor 255, and all components different, so that exchanged components and wrong ranges
// show.
constexpr std::array<Colour, kBars> kHalfTones{
    Colour{200, 60, 30},  Colour{40, 180, 90},  Colour{70, 110, 220},  Colour{190, 170, 50},
    Colour{120, 50, 160}, Colour{30, 150, 170}, Colour{160, 120, 100}, Colour{90, 100, 80}};
constexpr Colour kMoverColour{255, 128, 0};
constexpr std::uint32_t kMoverMostPx = 32; // chosen

constexpr std::uint32_t Even(std::uint32_t value)
{
    return value & ~1u;
}

} // namespace

TestScene::TestScene(std::uint32_t widthPx, std::uint32_t heightPx) : m_widthPx(widthPx), m_heightPx(heightPx)
{
}

bool TestScene::HasMarks() const
{
    return m_widthPx >= kSmallestWidthPx && m_heightPx >= kSmallestHeightPx;
}

std::optional<Rectangle> TestScene::StripPlace() const
{
    if (!HasMarks())
        return std::nullopt;
    constexpr std::uint32_t kWidthPx = FrameNumberStrip::kWidthPx;
    constexpr std::uint32_t kHeightPx = FrameNumberStrip::kHeightPx;
    return Rectangle{Even(m_widthPx - kWidthPx), Even(m_heightPx - kHeightPx), kWidthPx, kHeightPx};
}

std::optional<Rectangle> TestScene::UpMarkPlace() const
{
    if (!HasMarks())
        return std::nullopt;
    return Rectangle{Even((m_widthPx - kMarkPx) / 2), 0, kMarkPx, kMarkPx};
}

std::optional<Rectangle> TestScene::LeftMarkPlace() const
{
    if (!HasMarks())
        return std::nullopt;
    return Rectangle{0, Even((m_heightPx - kMarkPx) / 2), kMarkPx, kMarkPx};
}

Rectangle TestScene::MoverPlace(std::uint64_t frameNumber) const
{
    const std::uint32_t sidePx = Even(std::min({kMoverMostPx, m_widthPx / 4, m_heightPx / 4}));
    const std::uint32_t steps = (m_widthPx - sidePx) / kMoverStepPx + 1;
    const auto step = static_cast<std::uint32_t>(frameNumber % steps); // below steps
    return {step * kMoverStepPx, Even((m_heightPx - sidePx) / 2), sidePx, sidePx};
}

bool TestScene::IsUpMarkWhite(std::uint32_t xPx, std::uint32_t yPx)
{
    // In a field of 24: the tip between columns 11 and 12 in row 3, the base in row 20, 9 pixels to each
    // side.
    constexpr std::uint32_t kTipRow = 3;
    constexpr std::uint32_t kBaseRow = 20;
    constexpr std::uint32_t kMiddle = kMarkPx / 2;
    if (yPx < kTipRow || yPx > kBaseRow)
        return false;
    const std::uint32_t fromMiddlePx = xPx < kMiddle ? kMiddle - 1 - xPx : xPx - kMiddle;
    return fromMiddlePx <= (yPx - kTipRow) / 2;
}

std::optional<Colour> TestScene::MarkAt(std::uint32_t xPx, std::uint32_t yPx) const
{
    if (const auto up = UpMarkPlace(); up && up->Contains(xPx, yPx))
        return IsUpMarkWhite(xPx - up->xPx, yPx - up->yPx) ? kWhite : kBlack;
    // The same triangle with columns and rows exchanged points left.
    if (const auto left = LeftMarkPlace(); left && left->Contains(xPx, yPx))
        return IsUpMarkWhite(yPx - left->yPx, xPx - left->xPx) ? kWhite : kBlack;
    return std::nullopt;
}

Colour TestScene::BackgroundAt(std::uint32_t xPx, std::uint32_t yPx) const
{
    if (const auto mark = MarkAt(xPx, yPx))
        return *mark;
    if (yPx >= Even(m_heightPx - m_heightPx / 4)) {
        const std::uint64_t last = std::max(m_widthPx, 2u) - 1;
        return Grey(static_cast<std::uint8_t>(std::uint64_t{xPx} * 255 / last)); // at most 255
    }
    const std::uint32_t barPx = std::max(Even(m_widthPx / kBars), 2u);
    const std::uint32_t bar = std::min(xPx / barPx, kBars - 1);
    return yPx < Even(m_heightPx / 2) ? kFullColours[bar] : kHalfTones[bar];
}

Colour TestScene::At(std::uint64_t frameNumber, std::uint32_t xPx, std::uint32_t yPx) const
{
    if (const auto strip = StripPlace(); strip && strip->Contains(xPx, yPx)) {
        const FrameNumberStrip bits(
            static_cast<std::uint32_t>(frameNumber)); // as documented: the low 32 bits
        return bits.IsWhite(xPx - strip->xPx, yPx - strip->yPx) ? kWhite : kBlack;
    }
    if (MoverPlace(frameNumber).Contains(xPx, yPx) && !MarkAt(xPx, yPx))
        return kMoverColour;
    return BackgroundAt(xPx, yPx);
}

} // namespace simulator
