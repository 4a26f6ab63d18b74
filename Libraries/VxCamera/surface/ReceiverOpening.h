#pragma once

#include "VxBase/VxExpected.h"
#include "VxBase/VxString.h"
#include "VxCamera/receive/StreamReceiver.h"
#include "VxCamera/transport/Ipv4Address.h"

#include <cstdint>
#include <memory>
#include <optional>

class CameraNetwork;

/// What the caller of VxStreamGEV::Open wants.
struct ReceiverRequest {
    VxString connectionId;
    std::uint16_t port = 0;  ///< 0 = any free one; not for a group
    VxString localIpAddress; ///< empty = every one for a fixed port; for a free one that of the interface
                             ///< through which the camera is reached, where it is known
    std::optional<transport::Ipv4Address> group; ///< none = unicast
    std::uint32_t mostOpenBlocks = 0;            ///< how many are filled at the same time; 0 = no wish
};

/// A receiver, and the own address at which the camera reaches it: the one that was asked for, else that of
/// the interface towards the camera (0.0.0.0 when it was not found); for a group the first one on which it
/// was joined.
struct OpenedReceiver {
    std::unique_ptr<receive::StreamReceiver> receiver;
    transport::Ipv4Address reachedAt;
};

/// Opens a socket for a stream and makes its receiver.
///
/// A camera that cannot be found is no error: its address is then learnt from the stream. The way to a camera
/// that is given by its IP address is asked of the system, and nothing is sent; one that is given otherwise
/// is searched for by discovery, once.
///
/// A group is joined again each few seconds while nothing arrives, on interfaces that have come up since.
///
/// @param network  borrowed: outlives the receiver
/// @return  INVALID_PARAMETER for an address that is none, PORT_IN_USE, NETWORK_ERROR
[[nodiscard]] VxExpected<OpenedReceiver> OpenReceiver(CameraNetwork& network, const ReceiverRequest& request);
