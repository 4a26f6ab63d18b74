#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace receive {

/// Which packets of a block have been received. Memory is kept from block to block.
///
/// Owner:  OpenBlock, by value.
/// Thread: one.
class PacketBitmap {
public:
    /// Forgets everything.
    /// @param packets  ids 0 to this - 1 can be set
    void Reset(std::size_t packets);

    [[nodiscard]] std::size_t Size() const { return m_size; }

    /// Makes room for more ids; those that are set stay set.
    void Grow(std::size_t packets);

    /// @param packetId  below Size()
    /// @return  false when it was set already
    bool Set(std::size_t packetId);
    [[nodiscard]] bool IsSet(std::size_t packetId) const;
    void Clear(std::size_t packetId);

private:
    std::vector<std::uint64_t> m_words;
    std::size_t m_size = 0;
};

} // namespace receive
