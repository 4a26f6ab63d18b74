#pragma once

#include <cstddef>
#include <span>
#include <vector>

namespace simulator {

/// Packets that are due at the same moment and go to the system together: equally long ones, of which the
/// last may be shorter.
///
/// Owner:  StreamSender, by value.
/// Thread: one at a time.
class PacketRun {
public:
    /// @param mostPackets  1: every packet goes alone
    explicit PacketRun(std::size_t mostPackets);

    /// @return  whether the packet can follow those that are here; send them first otherwise
    [[nodiscard]] bool Takes(std::span<const std::byte> packet) const;

    /// @param packet  one that is taken; not empty
    void Add(std::span<const std::byte> packet);

    void Clear();

    [[nodiscard]] std::span<const std::byte> Bytes() const { return std::span(m_memory).first(m_size); }
    [[nodiscard]] std::size_t PacketBytes() const { return m_packetBytes; } ///< of each but the last
    [[nodiscard]] std::size_t Count() const { return m_count; }

private:
    const std::size_t m_mostPackets;
    std::vector<std::byte> m_memory;
    std::size_t m_size = 0;
    std::size_t m_count = 0;
    std::size_t m_packetBytes = 0;
    bool m_isEnded = false; // by a shorter packet
};

} // namespace simulator
