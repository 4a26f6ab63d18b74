#pragma once

#include "VxCamera/receive/IBlockSink.h"

#include <algorithm>
#include <cstddef>
#include <deque>
#include <memory>
#include <vector>

namespace receive {

/// A few buffers, each of exactly its size on the heap, so that a sanitizer sees any byte written beside one.
///
/// Owner:  the test.
/// Thread: the receiver's.
class FakeSink final : public IBlockSink {
public:
    struct Delivered {
        BlockInfo info;
        std::vector<std::byte> memory; ///< copy of the whole buffer
    };

    FakeSink(std::size_t count, std::size_t bytes)
    {
        for (std::size_t i = 0; i < count; ++i) {
            m_memory.push_back(std::make_unique<std::byte[]>(bytes));
            m_buffers.push_back({{m_memory.back().get(), bytes}, {}});
        }
        for (BlockBuffer& buffer : m_buffers)
            m_free.push_back(&buffer);
    }

    BlockBuffer* TakeFree(std::size_t wantedBytes) override
    {
        wanted.push_back(wantedBytes);
        if (m_free.empty())
            return nullptr;
        auto chosen = m_free.begin();
        if (isGrowing) {
            const auto fits = [&](const BlockBuffer* each) { return each->memory.size() >= wantedBytes; };
            const auto found = std::ranges::find_if(m_free, fits);
            chosen = found != m_free.end() ? found : chosen;
            Grow(**chosen, wantedBytes);
        }
        BlockBuffer* const buffer = *chosen;
        m_free.erase(chosen);
        return buffer;
    }
    void Deliver(BlockBuffer& buffer) override
    {
        delivered.push_back({buffer.info, {buffer.memory.begin(), buffer.memory.end()}});
        if (isKeeping)
            return;
        m_free.push_back(&buffer);
    }
    void GiveBack(BlockBuffer& buffer) override
    {
        ++givenBack;
        m_free.push_back(&buffer);
    }

    [[nodiscard]] std::size_t FreeCount() const { return m_free.size(); }

    std::vector<Delivered> delivered;
    std::vector<std::size_t> wanted; ///< of each TakeFree
    int givenBack = 0;
    bool isKeeping = false; ///< the consumer releases nothing
    bool isGrowing = false; ///< buffers become as large as is wanted
    int grown = 0;          ///< how often one did

private:
    void Grow(BlockBuffer& buffer, std::size_t bytes)
    {
        constexpr std::size_t kMostBytes = 1 << 20; // leaders that announce more are not believed
        if (buffer.memory.size() >= bytes || bytes > kMostBytes)
            return;
        ++grown;
        std::size_t index = 0;
        while (&m_buffers[index] != &buffer)
            ++index;
        m_memory[index] = std::make_unique<std::byte[]>(bytes);
        buffer.memory = {m_memory[index].get(), bytes};
    }

    std::vector<std::unique_ptr<std::byte[]>> m_memory;
    std::deque<BlockBuffer> m_buffers; // borrowed by everybody, so never moved
    std::deque<BlockBuffer*> m_free;
};

} // namespace receive
