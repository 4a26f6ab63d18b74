#pragma once

#include "VxBase/VxClock.h"
#include "VxBase/VxExpected.h"
#include "VxCamera/control/StreamChannel.h"
#include "VxCamera/transport/ISocketFactory.h"
#include "VxCamera/transport/NetworkInterface.h"

#include <cstdint>

namespace control {

/// Finds the largest stream packet that comes from a camera to this machine in one piece, by asking the
/// camera for test packets. Only a packet that has arrived proves a size: what lies between two interfaces
/// can carry less than both of them.
///
/// Owner:  the device, for a call. Borrows all it is given.
/// Thread: one; the channel must not be in use meanwhile, and is closed afterwards.
class PacketSizeFinder {
public:
    struct Network {
        transport::ISocketFactory& sockets;
        const IVxClock& clock;
        const transport::NetworkInterface& via; ///< through which the camera is reached
        transport::Ipv4Address camera;
    };

    PacketSizeFinder(StreamChannel& channel, const Network& network) : m_channel(channel), m_network(network)
    {
    }

    /// Sets the largest size and tells it. From a camera without test packets the interface's largest is
    /// taken.
    ///
    /// Takes a few milliseconds when the interface's largest packet gets through, and below a second
    /// when the largest has to be searched for.
    ///
    /// @return  as the camera has rounded it; or what the camera or the system refused: the size is then as
    ///          it was
    [[nodiscard]] VxExpected<std::uint32_t> Find();

    /// @return  largest size that makes sense on an interface
    [[nodiscard]] static std::uint32_t LargestOn(const transport::NetworkInterface& described);

private:
    [[nodiscard]] VxExpected<std::uint32_t> Search();
    [[nodiscard]] VxExpected<std::uint32_t> SearchBetween(std::uint32_t passed, std::uint32_t failed);
    [[nodiscard]] VxExpected<bool> GetsThrough(std::uint32_t bytes);
    [[nodiscard]] bool HasArrived(std::uint32_t bytes);

    StreamChannel& m_channel; // borrowed: outlives this
    const Network m_network;
    std::unique_ptr<transport::IUdpSocket> m_socket; // while Find runs
};

} // namespace control
