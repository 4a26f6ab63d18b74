#pragma once

#include "vxgrab/ComPtr.h"

#include "VxBase/VxExpected.h"

#include <strmif.h>

#include <string>
#include <string_view>
#include <vector>

namespace vxgrab {

/// One entry of the system's video input category.
struct CaptureDevice {
    std::string friendlyName; ///< what people see; UTF-8
    std::string displayName;  ///< the moniker's text: tells two devices of one name apart
    std::string devicePath;   ///< where the hardware sits; empty for a device that has none
    bool isOurs = false;      ///< the filter "Vexa DirectShow Source"
    ComPtr<IMoniker> moniker;
};

/// Reads the category; no device is opened.
/// @return  the devices in the system's order; none is no error
[[nodiscard]] VxExpected<std::vector<CaptureDevice>> ListCaptureDevices();

/// Finds the device that is meant.
///
/// @param wish  a number in the list, a friendly or display name, or a part of exactly one friendly name
///              (letter case does not matter); empty means our filter
/// @return  its place in the list; INVALID_PARAMETER when the wish fits no device or several, NOT_FOUND when
///          our filter is wanted and not registered
[[nodiscard]] VxExpected<std::size_t> ChooseDevice(const std::vector<CaptureDevice>& devices,
                                                   std::string_view wish);

/// Creates the device's filter. Many devices are opened by this.
[[nodiscard]] VxExpected<ComPtr<IBaseFilter>> CreateFilter(const CaptureDevice& device);

/// @return  the list for people: one line a device, ours marked with a star
[[nodiscard]] std::string DescribeDevices(const std::vector<CaptureDevice>& devices);

} // namespace vxgrab
