#pragma once

#include "VxBase/VxString.h"

#include <cstddef>

class VxDeviceInfo;

/// One network interface (or USB host) with the cameras found on it.
///
/// Owner:  the VxSystem; borrowed until its next Find or its end.
/// Thread: immutable.
class VxInterface {
public:
    VxInterface(const VxInterface&) = delete;
    VxInterface& operator=(const VxInterface&) = delete;
    virtual ~VxInterface() = default;

    /// Name for people, with its addresses: "lo (127.0.0.1)", "Ethernet 2 (192.168.1.5, 169.254.7.8)".
    [[nodiscard]] virtual VxString GetDisplayName() const = 0;

    [[nodiscard]] virtual std::size_t GetDeviceCount() const = 0;

    /// @return  borrowed; null for an index without a device. Order: by connection ID.
    [[nodiscard]] virtual const VxDeviceInfo* GetDeviceInfo(std::size_t index) const = 0;

protected:
    VxInterface() = default;
};
