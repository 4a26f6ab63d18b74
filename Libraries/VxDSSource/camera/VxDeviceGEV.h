#pragma once

#include "VxDSSource/camera/VxDevice.h"

/// A GigE Vision camera.
///
/// Owner and thread: see VxDevice.
class VxDeviceGEV : public VxDevice {
public:
    /// Directs a stream channel of the camera to a receiver, in packets as large as the way to this machine
    /// carries them. Not while the camera streams on this channel.
    ///
    /// @param ipAddress  dotted IPv4 address of the receiver or of a multicast group
    /// @param port       its UDP port
    /// @param channel    stream channel, from 0
    /// @return  INVALID_PARAMETER for a text that is no address and for a channel that the camera does not
    ///          have; the camera's refusal; what the link says
    virtual VxResult SetStreamDestination(const VxString& ipAddress, std::uint16_t port,
                                          std::uint32_t channel) = 0;

protected:
    ~VxDeviceGEV() override = default;
};
