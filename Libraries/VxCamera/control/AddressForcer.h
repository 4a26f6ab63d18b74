#pragma once

#include "VxBase/VxExpected.h"
#include "VxBase/VxResult.h"
#include "VxCamera/control/CameraFinder.h"
#include "VxCamera/control/ConnectionId.h"
#include "VxCamera/control/FoundCamera.h"
#include "VxCamera/transport/Ipv4Address.h"

#include <chrono>
#include <vector>

namespace control {

/// The IP address that a camera is to have.
struct AddressAssignment {
    transport::Ipv4Address address;
    transport::Ipv4Address mask;
    transport::Ipv4Address gateway; ///< 0.0.0.0 = none
};

/// Gives a camera another IP address, also one that cannot be reached because of the address it has.
///
/// The camera keeps the address until it is switched off.
///
/// Owner:  whoever does it, for a call. Borrows what the network consists of.
/// Thread: one.
class AddressForcer {
public:
    explicit AddressForcer(const CameraFinder::Network& network) : m_network(network), m_finder(network) {}

    /// Looks for the camera on every interface, tells it its new address, and waits until it answers with it.
    ///
    /// @param id       a camera in a wrong subnet is found as well; one of several with the same IP address
    ///                 must be named otherwise
    /// @param timeout  for the search, and once more for the new address to take effect
    /// @return  the camera as it is now, its configuration judged as discovery does; INVALID_PARAMETER for an
    ///          address or mask that no camera can have, or that somebody else has; NOT_FOUND, AMBIGUOUS;
    ///          ACCESS_DENIED (an application controls it), NOT_SUPPORTED or CAMERA_ERROR when it refuses;
    ///          TIMEOUT when it does not come back
    [[nodiscard]] VxExpected<FoundCamera> Force(const ConnectionId& id, const AddressAssignment& wanted,
                                                std::chrono::milliseconds timeout);

private:
    [[nodiscard]] VxResult CheckNobodyHas(const AddressAssignment& wanted, const FoundCamera& camera,
                                          const std::vector<ScannedInterface>& scanned);
    [[nodiscard]] VxResult Tell(const FoundCamera& camera, const AddressAssignment& wanted);
    [[nodiscard]] VxExpected<FoundCamera> Await(const FoundCamera& camera, const AddressAssignment& wanted,
                                                std::chrono::milliseconds timeout);

    const CameraFinder::Network m_network;
    CameraFinder m_finder;
};

} // namespace control
