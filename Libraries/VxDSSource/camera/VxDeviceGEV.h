#pragma once

#include "VxDSSource/camera/VxDevice.h"

/// A GigE Vision camera.
///
/// Owner and thread: see VxDevice.
class VxDeviceGEV : public VxDevice {
public:
    /// Directs a stream channel of the camera to a receiver.
    ///
    /// @param ipAddress  dotted IPv4 address of the receiver or of a multicast group
    /// @param port       its UDP port
    /// @param channel    stream channel, from 0
    virtual VxResult SetStreamDestination(const VxString& ipAddress, std::uint16_t port, std::uint32_t channel) = 0;

protected:
    ~VxDeviceGEV() override = default;
};
