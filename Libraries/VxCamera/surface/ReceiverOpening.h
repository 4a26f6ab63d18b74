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
    VxString localIpAddress; ///< empty = that of the interface through which the camera is reached
    std::optional<transport::Ipv4Address> group; ///< none = unicast
    std::uint32_t mostOpenBlocks = 0;            ///< how many are filled at the same time; 0 = no wish
};

/// A receiver, and the own address at which the camera reaches it: that of its socket, or for a group the one
/// on which it was joined.
struct OpenedReceiver {
    std::unique_ptr<receive::StreamReceiver> receiver;
    transport::Ipv4Address reachedAt;
};

/// Opens a socket for a stream and makes its receiver.
///
/// A camera that cannot be found is no error: its address is then learnt from the stream.
///
/// @return  INVALID_PARAMETER for an address that is none, PORT_IN_USE, NETWORK_ERROR
[[nodiscard]] VxExpected<OpenedReceiver> OpenReceiver(CameraNetwork& network, const ReceiverRequest& request);
