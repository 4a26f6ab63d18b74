#pragma once

#include "vxgrab/ComPtr.h"
#include "vxgrab/Options.h"

#include "VxBase/VxExpected.h"
#include "VxDSSource/filter/IVxDSSource.h"

#include <string>

namespace vxgrab {

/// Sets up our filter through its control interface.
///
/// Owner:  the session, by value.
/// Thread: main thread.
class FilterControl final {
public:
    explicit FilterControl(ComPtr<IVxDSSource> filter) : m_filter(std::move(filter)) {}

    /// Writes the settings that are given; nothing is connected yet.
    [[nodiscard]] VxResult Apply(const FilterSettings& settings);

    /// Brings the link to the camera in line with the settings.
    /// @return  NOT_CONNECTED when the filter controls no camera afterwards although it should
    [[nodiscard]] VxResult Connect();

    [[nodiscard]] std::string DeviceId() const;

    /// @return  maker and model as the camera tells them; empty when it is not connected or does not tell
    [[nodiscard]] std::string CameraModel();

    [[nodiscard]] VxResult SaveDefault();
    [[nodiscard]] VxResult ClearDefault();

private:
    [[nodiscard]] std::string ReadCameraText(const char* feature);

    ComPtr<IVxDSSource> m_filter;
};

} // namespace vxgrab
