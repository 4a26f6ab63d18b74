#pragma once

#include "VxSimulator/picture/PictureFormat.h"
#include "VxSimulator/picture/TestScene.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace simulator {

/// Draws one frame after the other of the same size and format: what stands still is drawn once.
///
/// Owner:  the stream sender, by value.
/// Thread: const methods from any.
class TestPictureRenderer {
public:
    /// @param widthPx, heightPx  not 0; the width even for formats that share colour
    TestPictureRenderer(const PictureFormat& format, std::uint32_t widthPx, std::uint32_t heightPx,
                        TestPattern pattern = TestPattern::ColorBars);

    [[nodiscard]] std::size_t Bytes() const { return m_background.size(); }

    /// @param out  exactly Bytes() long
    void Render(std::uint64_t frameNumber, std::span<std::byte> out) const;

private:
    enum class Layer { Background, Whole };
    void Draw(const Rectangle& place, Layer layer, std::uint64_t frameNumber, std::span<std::byte> out) const;

    PictureFormat m_format;
    std::uint32_t m_widthPx;
    std::uint32_t m_heightPx;
    TestPattern m_pattern;
    TestScene m_scene;
    std::vector<std::byte> m_background;
};

} // namespace simulator
