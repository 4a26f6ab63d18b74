#pragma once

#include <windows.h>

#include <cstdint>
#include <span>

namespace vxds {

/// A frame that is drawn into.
///
/// Owner:  the streaming thread, for one frame.
/// Thread: the streaming thread.
struct OverlayFrame {
    /// The sample's own: nothing beyond it is touched, whatever the header says.
    std::span<std::uint8_t> memory;
    /// Of the current media type; all zero when it has none.
    BITMAPINFOHEADER header{};
};

} // namespace vxds
