#pragma once

#include "VxSimulator/stream/Block.h"

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
    // Chosen: at 25 frames a second 160 ms, longer than a receiver waits for a packet before it gives a frame
    // up.
    static constexpr std::size_t kBlocks = 4;

    void Add(std::shared_ptr<Block> block);

    /// @return  the youngest block with this id and kind of id, or null
    [[nodiscard]] std::shared_ptr<const Block> Find(std::uint64_t blockId, gvsp::IdMode mode) const;

    /// @return  memory of a block that is stored no more and that nobody uses; perhaps empty
    [[nodiscard]] std::vector<std::byte> TakeMemory();

private:
    std::deque<std::shared_ptr<Block>> m_blocks; // shared with the threads that send; the oldest first
    std::shared_ptr<Block> m_retired;
};

} // namespace simulator
