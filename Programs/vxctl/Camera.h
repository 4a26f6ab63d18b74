#pragma once

#include "VxDSSource/camera/VxDevice.h"
#include "VxDSSource/camera/VxGenParameter.h"
#include "VxDSSource/camera/VxGenParameterArray.h"

#include "vxctl/ExitCode.h"
#include "vxctl/Request.h"

#include <memory>
#include <optional>
#include <string>

namespace vxctl {

/// The camera that a request names, under this program's control.
///
/// Owner:  the command that runs, by value.
/// Thread: one.
class Camera {
public:
    /// @return  what went wrong, with the remedy
    [[nodiscard]] std::optional<Failure> Connect(const Request& request);

    /// Only after Connect.
    [[nodiscard]] VxDevice& Device() { return *m_device; }
    [[nodiscard]] VxGenParameterArray& Features() { return *m_features; }

    /// @param[out] feature  borrowed; null when there is none of that name
    /// @return  what to tell the user then, with a name that is like it
    [[nodiscard]] std::optional<Failure> Find(const std::string& name, VxGenParameter*& feature);

    /// @return  the failure of an operation on a feature: that of the camera when the link was lost
    [[nodiscard]] Failure FailureOf(const std::string& feature, const VxResult& result) const;

private:
    struct Free {
        void operator()(VxDevice* device) const { VxDevice::Free(device); }
    };
    std::unique_ptr<VxDevice, Free> m_device;
    VxGenParameterArray* m_features = nullptr; // borrowed from the device
};

} // namespace vxctl
