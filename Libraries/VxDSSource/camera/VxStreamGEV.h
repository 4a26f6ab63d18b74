#pragma once

#include "VxDSSource/camera/VxStream.h"

/// A receiver of a GigE Vision stream, unicast or multicast.
///
/// What it sends: a camera that is named otherwise than by its IP address is searched for while the stream is
/// opened, by discovery questions to everybody on this host's networks. After that nothing, unless this
/// process controls the camera and directs the stream here; then requests for lost packets, and packets that
/// open the way through a firewall. Members of a group never send those either, beside what the system says
/// when a group is joined or left.
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
    ///                        the first sender of a leader is then taken for it.
    /// @param localPort       UDP port to listen on; 0 = any free one
    /// @param channel         stream channel of the camera, from 0. Receiving does not need it: the packets
    ///                        of a channel come to the port that was named for it, and whoever asks for lost
    ///                        ones knows the channel from the device
    /// @param localIpAddress  dotted address to listen on; empty = every address of this host for a fixed
    ///                        port, to which somebody else directs the stream. For a free port it is that of
    ///                        the interface through which the camera is reached, where that is known
    /// @param bufferCapacity  how many buffers can be filled at the same time, that is how many blocks can be
    ///                        waited for; 0 = no wish, more than 64 count as 64
    /// @return  ALREADY_OPEN, PORT_IN_USE (also when the other receiver listens on another address and one of
    ///          the two on every address), NETWORK_ERROR; nothing stays open on failure
    VxResult Open(const VxString& connectionId, std::uint16_t localPort, std::uint16_t channel,
                  const VxString& localIpAddress, std::uint32_t bufferCapacity);

    /// Joins a multicast group: on the interface through which the camera is reached, else on every one;
    /// while nothing arrives also on those that come up later.
    ///
    /// @param multicastAddress  dotted address of the group
    /// @param dataPort          UDP port of the group
    /// @return  as above; INVALID_PARAMETER when the address is no multicast group
    VxResult Open(const VxString& connectionId, const VxString& multicastAddress, std::uint16_t dataPort,
                  std::uint16_t channel, const VxString& localIpAddress, std::uint32_t bufferCapacity);

    /// @return  own dotted address at which the camera reaches the receiver: the one that was asked for, else
    ///          that of the interface towards the camera, for a group that of the (first) interface on which
    ///          it was joined when the stream was opened; "0.0.0.0" = not known, as it listens on every
    ///          address; empty while closed
    [[nodiscard]] VxString GetLocalIPAddress() const;

    /// @return  UDP port on which the receiver listens; 0 while closed
    [[nodiscard]] std::uint16_t GetLocalPort() const;

    [[nodiscard]] VxStreamType GetType() const override;
};
