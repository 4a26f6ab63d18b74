#pragma once

#include "VxBase/VxResult.h"
#include "VxCamera/control/DeviceSession.h"
#include "VxCamera/control/FoundCamera.h"
#include "VxCamera/genapi/map/NodeMap.h"
#include "VxCamera/surface/ParameterList.h"

#include <cstdint>
#include <functional>

/// How the size of stream packets is chosen.
enum class PacketSizeMode {
    Automatic, ///< the largest that gets through
    Camera,    ///< the camera's own choice
    Fixed,     ///< what the user says
};

/// What a user can set about stream packets.
struct PacketSizeSetting {
    PacketSizeMode mode = PacketSizeMode::Automatic;
    std::uint32_t fixedBytes = 1500; ///< for Fixed; every network carries this many
};

/// How the packet size setting is read and changed; thread-safe. Reading waits for nothing that takes time.
struct PacketSizeAccess {
    using Change = std::function<void(PacketSizeSetting&)>;

    std::function<PacketSizeSetting()> get;
    std::function<VxResult(const Change&)> update; ///< what the camera says to it, when it is streaming to
                                                   ///< somebody; no other change gets lost
    std::function<std::uint32_t()> inForce;        ///< as the camera has taken it; as set until it was asked
};

/// @return  the camera's features, borrowed for the call; null before they are loaded
using NodeMapAccess = std::function<genapi::NodeMap*()>;

/// Lists what can be known and set of the link to a camera, in the categories Camera, Host, Control and
/// Stream of "root\\Communication".
/// @param session  outlives the list
void ListLinkParameters(const control::FoundCamera& camera, control::DeviceSession& session,
                        const PacketSizeAccess& packetSize, const NodeMapAccess& map, ParameterList& list);
