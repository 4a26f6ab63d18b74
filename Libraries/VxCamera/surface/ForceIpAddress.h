#pragma once

#include "VxBase/VxResult.h"
#include "VxBase/VxString.h"

#include <cstdint>

/// Which camera is to have which address.
struct ForcedIpAddress {
    VxString connectionId; ///< as for VxDevice::CreateAndConnect; a camera in a wrong subnet is found as well
    VxString ipAddress;    ///< dotted
    VxString subnetMask;   ///< dotted
    VxString gateway{};    ///< dotted; empty = none
};

/// Gives a camera another IP address until it is switched off, also one that cannot be connected because it
/// is in a wrong subnet, has no address, or shares its address with another camera.
///
/// @param timeoutMs  how long cameras have to answer, and then how long the new address may take; at least a
///                   second is good for real cameras
/// @return  OK when the camera answers with its new address; INVALID_PARAMETER for a text that is no address,
///          and for an address that no camera can have or that somebody else has; NOT_FOUND; AMBIGUOUS;
///          ACCESS_DENIED when an application controls the camera; NOT_SUPPORTED or CAMERA_ERROR when it
///          refuses; TIMEOUT when it does not come back; NETWORK_ERROR. The description says which camera and
///          why.
[[nodiscard]] VxResult ForceIpAddress(const ForcedIpAddress& wanted, std::uint32_t timeoutMs);
