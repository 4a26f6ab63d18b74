#pragma once

#include "VxBase/VxClock.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace receive {

/// Packets that are missing side by side, and what was done about them.
struct MissingRange {
    std::uint32_t first = 0;
    std::uint32_t last = 0;        ///< included
    IVxClock::Time since;          ///< when it showed that they are missing
    IVxClock::Time firstAskedAt{}; ///< when they were asked for the first time; only when asks > 0
    IVxClock::Time askedAt{};      ///< when they were last asked for; only when asks > 0
    unsigned asks = 0;             ///< how often they were asked for

    [[nodiscard]] std::uint64_t Packets() const { return std::uint64_t{last} - first + 1; }
};

/// Which packets of a block have not come although later ones have, or should have.
///
/// Memory is kept from block to block. Ranges are ordered by packet id and do not touch.
///
/// Owner:  OpenBlock, by value.
/// Thread: one.
class MissingRanges {
public:
    using Time = IVxClock::Time;

    // Chosen: a block with more holes than this is beyond help, and one packet must not cost a long search.
    static constexpr std::size_t kMostRanges = 1024;

    MissingRanges();

    void Clear();

    /// A packet arrived, the first time.
    /// @return  what was known of it when it was missing; none when it came in its turn
    std::optional<MissingRange> Arrived(std::uint32_t packetId, Time now);

    /// A packet that had arrived turned out to be useless.
    void Lost(std::uint32_t packetId, Time now);

    /// Every packet up to this one should have come.
    void ExpectUpTo(std::uint32_t packetId, Time now);

    /// There are no packets from this one on.
    void EndAt(std::uint32_t packetId);

    /// Whether the packet is known to be missing.
    [[nodiscard]] bool IsMissing(std::uint32_t packetId) const;
    /// Whether this packet or one before it is, and has been asked for.
    [[nodiscard]] bool IsAnyAskedForUpTo(std::uint32_t packetId) const;

    [[nodiscard]] std::span<MissingRange> All() { return m_ranges; }
    [[nodiscard]] std::span<const MissingRange> All() const { return m_ranges; }
    [[nodiscard]] bool IsEmpty() const { return m_ranges.empty(); }

    /// There were so many holes that not all of them are known.
    [[nodiscard]] bool IsOverfull() const { return m_isOverfull; }

    /// The id after the highest one that came or should have come.
    [[nodiscard]] std::uint64_t Next() const { return m_next; }

private:
    using Iterator = std::vector<MissingRange>::iterator;

    [[nodiscard]] Iterator Find(std::uint32_t packetId);
    void Insert(Iterator place, const MissingRange& range);

    std::vector<MissingRange> m_ranges;
    std::uint64_t m_next = 0;
    bool m_isOverfull = false;
};

} // namespace receive
