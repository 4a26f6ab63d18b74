#include "VxSimulator/picture/TestPictureRenderer.h"

#include "VxSimulator/picture/PixelEncoder.h"

#include <algorithm>

namespace simulator {

TestPictureRenderer::TestPictureRenderer(const PictureFormat& format, std::uint32_t widthPx,
                                         std::uint32_t heightPx, TestPattern pattern)
    : m_format(format),
      m_widthPx(widthPx),
      m_heightPx(heightPx),
      m_pattern(pattern),
      m_scene(widthPx, heightPx),
      m_background(PictureBytes(format, widthPx, heightPx))
{
    Draw({0, 0, widthPx, heightPx}, Layer::Background, 0, m_background);
}

void TestPictureRenderer::Render(std::uint64_t frameNumber, std::span<std::byte> out) const
{
    std::ranges::copy(m_background, out.begin());
    if (m_pattern != TestPattern::ColorBars)
        return;
    Draw(m_scene.MoverPlace(frameNumber), Layer::Whole, frameNumber, out);
    if (const auto strip = m_scene.StripPlace())
        Draw(*strip, Layer::Whole, frameNumber, out);
}

void TestPictureRenderer::Draw(const Rectangle& place, Layer layer, std::uint64_t frameNumber,
                               std::span<std::byte> out) const
{
    std::vector<Colour> row(place.widthPx, m_pattern == TestPattern::White ? kWhite : kBlack);
    const std::size_t rowBytes = row.size() * m_format.bytesPerPixel;
    for (std::uint32_t y = place.yPx; y < place.yPx + place.heightPx; ++y) {
        if (m_pattern == TestPattern::ColorBars) {
            for (std::uint32_t i = 0; i < place.widthPx; ++i)
                row[i] = layer == Layer::Background ? m_scene.BackgroundAt(place.xPx + i, y)
                                                    : m_scene.At(frameNumber, place.xPx + i, y);
        }
        const std::size_t offset = (std::size_t{y} * m_widthPx + place.xPx) * m_format.bytesPerPixel;
        EncodePixels(m_format.layout, row, place.xPx, y, out.subspan(offset, rowBytes));
    }
}

} // namespace simulator
