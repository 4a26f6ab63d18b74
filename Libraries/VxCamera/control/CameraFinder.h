#pragma once

#include "VxBase/VxClock.h"
#include "VxBase/VxExpected.h"
#include "VxCamera/control/ConnectionId.h"
#include "VxCamera/control/FoundCamera.h"
#include "VxCamera/transport/IInterfaceList.h"
#include "VxCamera/transport/IUdpSocketGroup.h"

#include <chrono>
#include <cstddef>
#include <functional>
#include <optional>
#include <vector>

namespace control {

class InterfaceMemory;
class InterfaceScans;

/// Finds cameras on the network.
///
/// Owner:  whoever searches, for a call. Borrows all it is given.
/// Thread: one.
class CameraFinder {
public:
    struct Network {
        transport::ISocketGroupFactory& sockets;
        transport::IInterfaceList& interfaces;
        const IVxClock& clock;
        InterfaceMemory* memory = nullptr; ///< null: nothing is remembered from one search to the next
    };

    explicit CameraFinder(const Network& network) : m_network(network) {}

    /// Asks on every interface at once and collects answers for the time given.
    /// @return  every interface in the order of the system's numbers, also those without a camera. An
    ///          interface that cannot be used is left out.
    [[nodiscard]] VxExpected<std::vector<ScannedInterface>> FindAll(std::chrono::milliseconds timeout);

    /// Tells of a camera that has just answered how much longer the search goes on; none = as long as before.
    using Enough = std::function<std::optional<std::chrono::milliseconds>(const FoundCamera&)>;

    /// The same, but a camera can bring the end forward.
    [[nodiscard]] VxExpected<std::vector<ScannedInterface>> FindUntil(std::chrono::milliseconds timeout,
                                                                      const Enough& enough);

    /// Finds one camera and ends as soon as it has answered. For an IP address in the subnet of an interface
    /// only that address is asked; the interface on which it answers is the one to use. Where it is in the
    /// subnets of several, another camera with this address has a moment to show itself. Without an answer in
    /// half of the time everybody is asked as well: the camera may be connected to another interface.
    /// @return  NOT_FOUND, AMBIGUOUS (several cameras have this name), INVALID_CONFIGURATION,
    ///          INVALID_PARAMETER for an empty id
    [[nodiscard]] VxExpected<FoundCamera> Find(const ConnectionId& id, std::chrono::milliseconds timeout);

    /// @return  the interface on which a camera with this address answered last; for an unknown one that
    ///          whose subnet the address is in, or else the one to which the system's routes lead
    [[nodiscard]] VxExpected<transport::NetworkInterface> InterfaceTowards(transport::Ipv4Address remote);

private:
    [[nodiscard]] VxExpected<std::vector<transport::NetworkInterface>> Interfaces();
    void Remember(const FoundCamera& found);
    /// What an answer means for the search.
    struct Verdict {
        bool isWanted;                                 ///< kept, however many others answer
        std::optional<std::chrono::milliseconds> rest; ///< see Enough
    };
    using Judge = std::function<Verdict(const FoundCamera&)>;
    [[nodiscard]] VxExpected<std::vector<ScannedInterface>> Search(std::chrono::milliseconds timeout,
                                                                   const Judge& judge);
    [[nodiscard]] static std::size_t AddLocal(const std::vector<transport::NetworkInterface>& interfaces,
                                              transport::Ipv4Address camera, InterfaceScans& scans);
    void AddRouted(transport::Ipv4Address camera, InterfaceScans& scans);
    [[nodiscard]] VxExpected<FoundCamera> FindByAddress(const ConnectionId& id,
                                                        std::chrono::milliseconds timeout);
    [[nodiscard]] VxExpected<FoundCamera> FindByScan(const ConnectionId& id,
                                                     std::chrono::milliseconds timeout);

    const Network m_network;
};

} // namespace control
