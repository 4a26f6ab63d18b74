#pragma once

#include "VxBase/VxClock.h"

#include "VxSimulator/stream/Block.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <memory>
#include <vector>

namespace simulator {

/// The last few blocks, for those who ask for packets again.
///
/// Owner:  VxSimulatedCamera, by value.
/// Thread: one at a time; the blocks it hands out may be used by others.
class BlockStore {
public:
    using Time = IVxClock::Time;

    // Chosen: at 25 frames a second 160 ms, longer than a receiver waits for a packet before it gives a frame
    // up. At higher rates there are more, for as long a time.
    static constexpr std::size_t kBlocks = 4;
    static constexpr std::size_t kMostBlocks = 64;
    static constexpr std::chrono::milliseconds kKept{160};

    void Add(std::shared_ptr<Block> block, Time now);

    /// @return  the youngest block with this id and kind of id, or null
    [[nodiscard]] std::shared_ptr<const Block> Find(std::uint64_t blockId, gvsp::IdMode mode) const;

    /// @return  memory of a block that is stored no more and that nobody uses; perhaps empty
    [[nodiscard]] std::vector<std::byte> TakeMemory();

private:
    struct Kept {
        std::shared_ptr<Block> block; // shared with the threads that send
        Time since;
    };
    std::deque<Kept> m_blocks; // the oldest first
    std::shared_ptr<Block> m_retired;
};

} // namespace simulator
