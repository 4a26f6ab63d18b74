#pragma once

#include "VxBase/VxClock.h"
#include "VxBase/VxMutex.h"

#include <array>
#include <cstddef>
#include <cstdint>

namespace receive {

/// How many blocks and bits arrive in a second, over the last few seconds.
///
/// Owner:  StreamReceiver, by value.
/// Thread: any.
class RateMeter {
public:
    using Time = IVxClock::Time;

    struct Rates {
        double blocksPerSecond = 0;
        double bitsPerSecond = 0;
    };

    /// @param receivedBytes  of all packets so far
    void OnBlock(Time now, std::uint64_t receivedBytes);

    /// @return  0 for both when the stream has stopped, or before the second block
    [[nodiscard]] Rates Read(Time now) const;

    void Reset();

private:
    struct Block {
        Time time;
        std::uint64_t receivedBytes = 0;
    };
    /// @param back  0 = the latest one; below m_count
    [[nodiscard]] const Block& At(std::size_t back) const VX_REQUIRES(m_mutex);

    // Chosen: a quarter of a second of the fastest cameras, and everything within the window of ordinary
    // ones.
    static constexpr std::size_t kBlocks = 256;

    mutable VxMutex m_mutex; // held for a few instructions only
    std::array<Block, kBlocks> m_blocks VX_GUARDED_BY(m_mutex){};
    std::size_t m_next VX_GUARDED_BY(m_mutex) = 0;
    std::size_t m_count VX_GUARDED_BY(m_mutex) = 0;
};

} // namespace receive
