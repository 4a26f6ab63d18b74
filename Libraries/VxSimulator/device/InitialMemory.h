#pragma once

#include "VxSimulator/VxSimulatorOptions.h"
#include "VxSimulator/device/DeviceMemory.h"

#include <array>
#include <cstdint>

namespace simulator {

/// What the camera finds out about its network when it starts.
struct NetworkFacts {
    transport::Ipv4Address subnetMask{255, 0, 0, 0};
    std::uint32_t mtuBytes = 65536;     ///< largest IP packet
    std::uint16_t streamSourcePort = 0; ///< port from which frames are sent
};

/// @return  the camera's memory as it is when it is switched on
[[nodiscard]] DeviceMemory MakeInitialMemory(const VxSimulatorOptions& options, const NetworkFacts& network);

/// Sets the features that UserSetLoad sets.
void StoreDefaultFeatures(DeviceMemory& memory, const VxSimulatorOptions& options);

/// @return  the option's MAC, or one that is locally administered and contains the address
[[nodiscard]] std::array<std::uint8_t, 6> MacOf(const VxSimulatorOptions& options);

/// @return  largest packet size that the camera offers on this network
[[nodiscard]] std::uint32_t LargestPacketSize(const NetworkFacts& network);

} // namespace simulator
