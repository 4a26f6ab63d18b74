#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace receive {

/// Which bytes of a part of a multi-part block are here, and which packet brought them.
///
/// Packets of such a block tell their place themselves and may have any length. So a packet that was cut
/// shows only by the hole behind what it brought. Memory is kept from block to block.
///
/// Owner:  OpenBlock, by value.
/// Thread: one.
class PartPieces {
public:
    /// What one packet brought; nothing, when all of its data were cut off.
    struct Piece {
        std::uint32_t packetId = 0;
        std::uint64_t offset = 0; ///< 48 bits
        std::size_t bytes = 0;
    };

    void Clear();
    void Add(const Piece& piece);

    /// @return  whether every byte from the beginning up to there is here
    [[nodiscard]] bool Cover(std::uint64_t endBytes) const;

    /// Takes out what ends where a hole begins.
    /// @param endBytes  of the part, as far as it matters
    /// @return  valid until the next call
    [[nodiscard]] const std::vector<Piece>& TakeCut(std::uint64_t endBytes);

private:
    /// Pieces side by side, as packets bring them that come in order. Only behind the last one there can be a
    /// hole, so no other one was cut.
    struct Run {
        std::uint64_t begin = 0;
        std::uint64_t end = 0;
        Piece last; ///< id 0: it was taken out
    };

    [[nodiscard]] static bool IsBefore(const Run& a, const Run& b);
    void Sort() const;
    void TakeLast(Run& run);

    // By place. Sorted only when somebody asks, and mostly is by then.
    mutable std::vector<Run> m_runs;
    mutable bool m_isSorted = true;
    std::vector<Piece> m_cut;
};

} // namespace receive
