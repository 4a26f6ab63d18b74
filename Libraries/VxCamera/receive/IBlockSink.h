#pragma once

#include "VxCamera/receive/BlockBuffer.h"

#include <cstddef>

namespace receive {

/// Where the receiver takes buffers from and brings filled ones.
///
/// Owner:  borrowed by the receiver; outlives its thread.
/// Thread: called by the receiver's thread. An implementation must not wait for a consumer.
class IBlockSink {
public:
    IBlockSink() = default;
    IBlockSink(const IBlockSink&) = delete;
    IBlockSink& operator=(const IBlockSink&) = delete;
    virtual ~IBlockSink() = default;

    /// @param wantedBytes  size of the block's payload; 0 = not known
    /// @return  a buffer, if possible of that size; null when none is free
    [[nodiscard]] virtual BlockBuffer* TakeFree(std::size_t wantedBytes) = 0;

    /// A finished block, in the order of block ids.
    virtual void Deliver(BlockBuffer& buffer) = 0;

    /// A buffer that was taken and is not needed: no block filled it, or one went on in a larger one.
    virtual void GiveBack(BlockBuffer& buffer) = 0;
};

} // namespace receive
