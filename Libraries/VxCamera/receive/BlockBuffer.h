#pragma once

#include "VxBase/VxClock.h"
#include "VxBase/VxError.h"
#include "VxCamera/receive/BlockGeometry.h"

#include <cstddef>
#include <cstdint>
#include <span>

namespace receive {

/// What a finished block is.
struct BlockInfo {
    /// Ok, MissingPackets, BufferTooSmall, NotAnImage, CameraError (the camera lost data), InvalidData (its
    /// leader makes no sense), NotSupported (its lines run together, in a way that cannot be read);
    /// NotInitialized: never filled
    VxError code = VxError::NotInitialized;
    std::uint64_t blockId = 0;
    std::uint64_t timestampTicks = 0;
    BlockGeometry geometry; ///< of the leader; of an earlier block when this one's leader is missing
    std::uint64_t packetsMissing = 0; ///< as far as is known
    std::size_t receivedBytes = 0;    ///< of payload, at their places in the memory
    IVxClock::Time::duration took{};  ///< from its first packet to its delivery
};

/// Memory for one block, and what was received into it.
///
/// Owner:  whoever gives it to the receiver through IBlockSink. From TakeFree until Deliver or GiveBack
///         nobody but the receiver touches it.
/// Thread: one at a time.
struct BlockBuffer {
    std::span<std::byte> memory;
    BlockInfo info;
};

} // namespace receive
