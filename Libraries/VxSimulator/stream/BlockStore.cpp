#include "VxSimulator/stream/BlockStore.h"

#include <algorithm>
#include <utility>

namespace simulator {

void BlockStore::Add(std::shared_ptr<Block> block, Time now)
{
    m_blocks.push_back({std::move(block), now});
    while (m_blocks.size() > kBlocks &&
           (m_blocks.size() > kMostBlocks || now - m_blocks.front().since > kKept)) {
        m_retired = std::move(m_blocks.front().block);
        m_blocks.pop_front();
    }
}

std::shared_ptr<const Block> BlockStore::Find(std::uint64_t blockId, gvsp::IdMode mode) const
{
    const auto found = std::find_if(m_blocks.rbegin(), m_blocks.rend(), [&](const Kept& kept) {
        return kept.block->Order().blockId == blockId && kept.block->Order().idMode == mode;
    });
    return found != m_blocks.rend() ? found->block : nullptr;
}

std::vector<std::byte> BlockStore::TakeMemory()
{
    const auto retired = std::exchange(m_retired, nullptr);
    return retired && retired.use_count() == 1 ? retired->TakePicture() : std::vector<std::byte>();
}

} // namespace simulator
