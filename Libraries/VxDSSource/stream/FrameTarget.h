#pragma once

#include "VxDSSource/stream/FrameFormat.h"
#include "VxDSSource/stream/PictureSize.h"
#include "VxDSSource/stream/ZoomTable.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>

namespace vxds {

/// Everything that decides how one picture is drawn, taken once per frame.
///
/// Owner:  the streaming thread, for one frame.
/// Thread: the streaming thread.
struct FrameTarget {
    /// The sample's own memory: no writer goes past it, whatever the format says.
    std::span<std::uint8_t> memory;
    FrameFormat format;
    PictureSize delivered; ///< the settings "width" and "height"
    std::uint32_t outputPixelType = 0;
    std::int32_t kernelSize = 0; ///< aperture of the median; 0 = none
    std::int32_t zoomValue = 0;  ///< 0 = none
    bool hasDiagnostics = false;
    PictureSize source; ///< size of the camera's picture
    ZoomTable zoom;     ///< regions of that picture

    /// Whether the picture must be resized: always with a zoom.
    [[nodiscard]] bool NeedsResize() const { return zoomValue >= 1 || source != delivered; }
    /// Whether the converter cannot write straight into the sample.
    [[nodiscard]] bool NeedsProcessing() const { return kernelSize > 0 || NeedsResize(); }

    /// Whether there is a filter of that kernel: a setter takes 0, 3 and 5, but a configuration may hold
    /// anything.
    [[nodiscard]] bool HasUsableKernel() const
    {
        // Fixed by the picture library: odd, and the pixels of a neighbourhood are counted in 16 bits.
        constexpr std::int32_t kLargestKernel = 255;
        return kernelSize <= 0 || (kernelSize % 2 == 1 && kernelSize <= kLargestKernel);
    }

    /// The first bytes of the sample; fewer when it is smaller.
    [[nodiscard]] std::span<std::uint8_t> First(std::uint64_t bytes) const
    {
        return memory.first(static_cast<std::size_t>(std::min<std::uint64_t>(bytes, memory.size())));
    }

    void ZeroFill() const { std::ranges::fill(memory, std::uint8_t{0}); }
    void ZeroFill(std::uint64_t bytes) const { std::ranges::fill(First(bytes), std::uint8_t{0}); }
};

} // namespace vxds
