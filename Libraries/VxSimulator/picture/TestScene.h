#pragma once

#include "VxSimulator/picture/Colour.h"

#include <cstdint>
#include <optional>

namespace simulator {

/// What the simulated camera shows in every frame.
enum class TestPattern : std::uint8_t {
    ColorBars, ///< the whole test picture
    Black,
    White,
};

struct Rectangle {
    std::uint32_t xPx = 0;
    std::uint32_t yPx = 0;
    std::uint32_t widthPx = 0;
    std::uint32_t heightPx = 0;

    [[nodiscard]] bool Contains(std::uint32_t x, std::uint32_t y) const
    {
        return x >= xPx && x - xPx < widthPx && y >= yPx && y - yPx < heightPx;
    }

    bool operator==(const Rectangle&) const = default;
};

/// The test picture as colours, before any pixel format: pure geometry.
///
///   upper half     eight bars of full colours, and at the top in the middle a triangle that points up
///   third quarter  eight bars of half-tones
///   last quarter   a grey ramp from the left to the right, and at its right end the frame number
///   left edge      in the middle, a triangle that points left
///   in the middle  a square that moves to the right from frame to frame
///
/// All edges except the triangles' lie on even coordinates, so that no Bayer cell and no pair of pixels with
/// shared colour lies on two sides of one.
///
/// Owner:  anybody, by value.
/// Thread: immutable.
class TestScene {
public:
    // Chosen: here the strip and both marks have room beside each other; smaller pictures do without them.
    static constexpr std::uint32_t kSmallestWidthPx = 128;
    static constexpr std::uint32_t kSmallestHeightPx = 64;

    static constexpr std::uint32_t kMarkPx = 24;     // side of a mark's black field; chosen
    static constexpr std::uint32_t kMoverStepPx = 4; // per frame; chosen

    TestScene(std::uint32_t widthPx, std::uint32_t heightPx);

    /// @param xPx, yPx  inside the picture
    /// @return  what does not move
    [[nodiscard]] Colour BackgroundAt(std::uint32_t xPx, std::uint32_t yPx) const;

    /// @param xPx, yPx  inside the picture
    /// @return  the whole picture of this frame; of the number the low 32 bits are shown
    [[nodiscard]] Colour At(std::uint64_t frameNumber, std::uint32_t xPx, std::uint32_t yPx) const;

    /// Where the frame number and the marks are; none in a picture that is too small for them.
    [[nodiscard]] std::optional<Rectangle> StripPlace() const;
    [[nodiscard]] std::optional<Rectangle> UpMarkPlace() const;
    [[nodiscard]] std::optional<Rectangle> LeftMarkPlace() const;

    /// Where the moving square is; of no size in a tiny picture.
    [[nodiscard]] Rectangle MoverPlace(std::uint64_t frameNumber) const;

    /// The mark's shape: @param xPx, yPx  inside its black field
    [[nodiscard]] static bool IsUpMarkWhite(std::uint32_t xPx, std::uint32_t yPx);

private:
    [[nodiscard]] std::optional<Colour> MarkAt(std::uint32_t xPx, std::uint32_t yPx) const;
    [[nodiscard]] bool HasMarks() const;

    std::uint32_t m_widthPx;
    std::uint32_t m_heightPx;
};

} // namespace simulator
