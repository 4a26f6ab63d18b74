#pragma once

#include "VxDSSource/overlay/GdiPlusSession.h"
#include "VxDSSource/overlay/LinkStatus.h"
#include "VxDSSource/overlay/OverlayFrame.h"

#include <cstdint>
#include <string>

class VxGenParameterArray;

namespace vxds {

/// What the status summary shows of a pin.
///
/// Owner:  the streaming thread, for one frame.
/// Thread: the streaming thread.
struct SummaryValues {
    std::wstring deviceId;
    std::uint32_t role = 0;
    std::uint32_t unicastPort = 0;
    std::wstring multicastAddress;
    std::uint32_t multicastPort = 0;
    std::uint32_t renderWidthPx = 0;
    std::uint32_t renderHeightPx = 0;
    LinkStatus link;
    const VxGenParameterArray* statistics = nullptr; ///< the stream's, borrowed; null when it cannot be asked
    std::uint32_t lastImageWidthPx = 0;              ///< 0: no image yet
    std::uint32_t lastImageHeightPx = 0;
    std::int64_t blocksDroppedByFilter = 0;
    std::wstring lastErrorText;
    std::uint32_t sourceWidthPx = 0; ///< size of the pictures that the hot pixel diagnostic counts in
    std::uint32_t sourceHeightPx = 0;
    std::int32_t pixelVariationCount = 0; ///< 0: no score is shown
};

/// The summary's text. Each line, the last one included, ends with "\r\n".
///
/// Reads the stream's statistics; what cannot be read shows as "N/A" or 0.
[[nodiscard]] std::wstring StatusSummary(const SummaryValues& pin);

/// Draws the summary into a frame; see DrawOverlayText.
void DrawStatusSummary(GdiPlusSession& gdiPlus, const SummaryValues& pin, const OverlayFrame& frame);

} // namespace vxds
