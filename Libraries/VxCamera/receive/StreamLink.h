#pragma once

#include "VxCamera/transport/IUdpSocket.h"
#include "VxCamera/transport/Ipv4Endpoint.h"

#include <cstdint>
#include <functional>
#include <memory>

namespace receive {

/// What whoever controls the camera tells the receiver of its stream.
///
/// Without a link a receiver is passive: it never sends.
///
/// Owner:  shared between the receiver and its thread, which may still use it while another one is set.
/// Thread: immutable; the socket only sends.
struct StreamLink {
    transport::Ipv4Endpoint command; ///< where the camera takes commands
    std::uint16_t channel = 0;       ///< stream channel of the camera
    std::uint16_t sourcePort = 0;    ///< from which the camera sends the stream; 0: not known, or to a group
    std::unique_ptr<transport::IUdpSocket> resend; ///< for requests; null: the camera does not send again, or
                                                   ///< sends to a group
    std::function<void()> onPayloadMissing;        ///< leaders come and payload does not; must not wait; may
                                                   ///< be empty
};

} // namespace receive
