#pragma once

#include "VxBase/VxResult.h"

#include <cstddef>
#include <cstdint>
#include <span>

namespace genapi {

/// The register space of a camera: all that a node map sees of the outside world.
///
/// Addresses and lengths come from the camera's description and may be odd: splitting into what the link can
/// carry and aligning is the port's work. A description of a result names the camera and what the link said;
/// the node map puts the names of the feature and the register in front of it.
///
/// Owner:  borrowed by the NodeMap, outlives it.
/// Thread: called under the map's lock, so by one thread at a time for one map, by whichever thread uses a
/// feature.
///         An implementation must return in bounded time and must not use the map from another thread
///         meanwhile.
class IRegisterPort {
public:
    IRegisterPort() = default;
    IRegisterPort(const IRegisterPort&) = delete;
    IRegisterPort& operator=(const IRegisterPort&) = delete;
    virtual ~IRegisterPort() = default;

    /// Whether it still leads to a camera. Asked at each use of a feature, of one whose value is kept as
    /// well, so it must cost next to nothing.
    [[nodiscard]] virtual bool IsOpen() const { return true; }

    /// @return  why it leads to no camera any more; OK while it does
    [[nodiscard]] virtual VxResult CloseReason() const { return VxResult::Ok(); }

    /// Fills `bytes` with the registers from `address` on, in the order of the camera's memory.
    /// @param bytes  never empty; address + size never exceeds 2^64. Content is unspecified on failure.
    [[nodiscard]] virtual VxResult Read(std::uint64_t address, std::span<std::byte> bytes) = 0;

    /// Writes all of `bytes`; after a failure some of them may have been written.
    [[nodiscard]] virtual VxResult Write(std::uint64_t address, std::span<const std::byte> bytes) = 0;
};

} // namespace genapi
