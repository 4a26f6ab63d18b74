#pragma once

#include "VxDSSource/overlay/GdiPlusSession.h"
#include "VxDSSource/overlay/OverlayFrame.h"

#include <windows.h>

#include <objidl.h>

#include <gdiplus.h>

#include <string_view>

namespace vxds {

/// Draws text over a frame: Arial, 24 pixels, cyan, its top left corner 25 pixels from the picture's. Lines
/// break where the text says so; what does not fit is cut off.
///
/// A frame that GDI+ does not take for an RGB bitmap, or whose memory is smaller than its header says, stays
/// as it is. Packed 4:2:2 counts as RGB with 16 bits: such a frame shows the text's pixels in false colours.
///
/// @param gdiPlus  learns how GDI+ treats bits
/// @param frame    rows without padding, bottom-up when the height is positive
/// @return  what GDI+ says to the end of the bitmap; InvalidParameter when there was nothing to draw
/// Thread: one at a time.
Gdiplus::GpStatus DrawOverlayText(GdiPlusSession& gdiPlus, const OverlayFrame& frame, std::wstring_view text);

} // namespace vxds
