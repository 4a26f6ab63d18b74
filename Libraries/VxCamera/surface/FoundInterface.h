#pragma once

#include "VxCamera/control/FoundCamera.h"
#include "VxCamera/surface/FoundDevice.h"
#include "VxDSSource/camera/VxInterface.h"

#include <memory>
#include <vector>

/// A network interface with the cameras found on it, as the module sees it.
///
/// Owner:  VxSystem.
/// Thread: immutable.
class FoundInterface final : public VxInterface {
public:
    explicit FoundInterface(const control::ScannedInterface& scanned);

    [[nodiscard]] VxString GetDisplayName() const override { return m_displayName; }
    [[nodiscard]] std::size_t GetDeviceCount() const override { return m_devices.size(); }
    [[nodiscard]] const VxDeviceInfo* GetDeviceInfo(std::size_t index) const override;

private:
    VxString m_displayName;
    std::vector<std::unique_ptr<FoundDevice>> m_devices; // addresses stay: callers borrow them
};
