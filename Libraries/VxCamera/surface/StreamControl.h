#pragma once

#include "VxCamera/control/DeviceSession.h"
#include "VxCamera/receive/BlockGeometry.h"
#include "VxCamera/receive/StreamLink.h"
#include "VxCamera/surface/SmallerPackets.h"
#include "VxCamera/transport/ISocketFactory.h"
#include "VxCamera/transport/NetworkInterface.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>

/// What a device in control does for the receiver of its stream: tells it whom to ask for lost packets and
/// where to open a firewall, and sends smaller packets when large ones do not come through.
///
/// Owner:  GevDevice, by value.
/// Thread: Connect and Disconnect from one at a time.
class StreamControl {
public:
    struct Camera {
        control::DeviceSession& session;
        transport::ISocketFactory& sockets;
        const transport::NetworkInterface& via; ///< through which the camera is reached
    };

    StreamControl() = default;
    ~StreamControl();
    StreamControl(const StreamControl&) = delete;
    StreamControl& operator=(const StreamControl&) = delete;

    /// The camera sends a channel, which is open, to a receiver; if that is in this process, it is told of
    /// the camera.
    /// @param stepDown  makes packets smaller; called from a thread of its own until Disconnect
    void Connect(const Camera& camera, const transport::Ipv4Endpoint& receiver, std::uint32_t channel,
                 std::function<void()> stepDown);

    /// Tells the receiver what the camera's pictures are like, for payloads whose leader does not. Harmless
    /// when there is none. As Connect: from one thread at a time.
    void TellPicture(const std::optional<receive::PictureShape>& picture);

    /// The receiver is on its own again. Harmless when there is none.
    void Disconnect();

private:
    std::shared_ptr<const receive::StreamLink> m_link; // shared with the receiver
    std::shared_ptr<SmallerPackets> m_smaller;         // shared with the link
};
