#pragma once

#include "VxDSSource/camera/VxStream.h"

/// A receiver of a GigE Vision stream, unicast or multicast.
///
/// Owner and thread: see VxStream.
class VxStreamGEV : public VxStream {
public:
    VxStreamGEV();
    ~VxStreamGEV() override;

    VxResult Open(const VxString& connectionId) override;

    /// Opens a unicast receiver.
    ///
    /// @param connectionId    the camera; only its packets count. A camera that cannot be found is no error:
    /// the
    ///                        first sender of a leader is then taken for it.
    /// @param localPort       UDP port to listen on; 0 = any free one
    /// @param channel         stream channel of the camera, from 0. Receiving does not need it: the packets
    /// of a
    ///                        channel come to the port that was named for it, and whoever asks for lost ones
    ///                        knows the channel from the device
    /// @param localIpAddress  dotted address to listen on; empty = that of the interface through which the
    /// camera
    ///                        is reached
    /// @param bufferCapacity  how many buffers can be filled at the same time, that is how many blocks can be
    /// waited
    ///                        for; 0 = no wish, more than 64 count as 64
    /// @return  ALREADY_OPEN, PORT_IN_USE, NETWORK_ERROR; nothing stays open on failure
    VxResult Open(const VxString& connectionId, std::uint16_t localPort, std::uint16_t channel,
                  const VxString& localIpAddress, std::uint32_t bufferCapacity);

    /// Joins a multicast group.
    ///
    /// @param multicastAddress  dotted address of the group
    /// @param dataPort          UDP port of the group
    /// @return  as above; INVALID_PARAMETER when the address is no multicast group
    VxResult Open(const VxString& connectionId, const VxString& multicastAddress, std::uint16_t dataPort,
                  std::uint16_t channel, const VxString& localIpAddress, std::uint32_t bufferCapacity);

    /// @return  own dotted address on which the receiver listens, for a group that of the (first) interface
    /// on which
    ///          it was joined; "0.0.0.0" = every address; empty while closed
    [[nodiscard]] VxString GetLocalIPAddress() const;

    /// @return  UDP port on which the receiver listens; 0 while closed
    [[nodiscard]] std::uint16_t GetLocalPort() const;

    [[nodiscard]] VxStreamType GetType() const override;
};
