#pragma once

#include "VxBase/VxString.h"

#include <cstdint>

/// Kind of link by which a camera is reached; numbered for display.
enum class VxDeviceInfoType : std::uint32_t {
    Gev = 0, ///< GigE Vision
    U3v = 3, ///< USB3 Vision
};

/// What discovery learnt of one camera.
///
/// Owner:  the VxSystem that found it; borrowed until its next Find or its end.
/// Thread: immutable.
class VxDeviceInfo {
public:
    VxDeviceInfo(const VxDeviceInfo&) = delete;
    VxDeviceInfo& operator=(const VxDeviceInfo&) = delete;
    virtual ~VxDeviceInfo() = default;

    /// What to pass to every connect and open: the MAC address as "02-00-00-00-00-01"; where that is all
    /// zero, the dotted IP address.
    [[nodiscard]] virtual VxString GetConnectionID() const = 0;
    [[nodiscard]] virtual VxString GetModelName() const = 0;
    [[nodiscard]] virtual VxString GetManufacturerName() const = 0;
    [[nodiscard]] virtual VxString GetSerialNumber() const = 0;
    [[nodiscard]] virtual VxString GetUserDefinedName() const = 0;

    /// Dotted IPv4 address; empty for a USB camera.
    [[nodiscard]] virtual VxString GetIPAddress() const = 0;
    [[nodiscard]] virtual VxDeviceInfoType GetType() const = 0;

    /// False when the camera's network set-up does not allow a connection: its address is 0.0.0.0, outside
    /// the subnet of the interface it was found on, or used by two cameras.
    [[nodiscard]] virtual bool IsConfigurationValid() const = 0;

protected:
    VxDeviceInfo() = default;
};
