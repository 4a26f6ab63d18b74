#include "VxCamera/receive/MissingRanges.h"

#include <algorithm>

namespace receive {

namespace {

// Chosen: as many holes as blocks usually have on a bad network, so that memory seldom grows.
constexpr std::size_t kUsualRanges = 64;

} // namespace

MissingRanges::MissingRanges()
{
    m_ranges.reserve(kUsualRanges);
}

void MissingRanges::Clear()
{
    m_ranges.clear();
    m_next = 0;
    m_isOverfull = false;
}

/// @return  the first range that ends at the packet or behind it
MissingRanges::Iterator MissingRanges::Find(std::uint32_t packetId)
{
    return std::ranges::lower_bound(m_ranges, packetId, {}, &MissingRange::last);
}

bool MissingRanges::IsMissing(std::uint32_t packetId) const
{
    const auto found = std::ranges::lower_bound(m_ranges, packetId, {}, &MissingRange::last);
    return found != m_ranges.end() && found->first <= packetId;
}

bool MissingRanges::IsAnyAskedForUpTo(std::uint32_t packetId) const
{
    return std::ranges::any_of(
        m_ranges, [&](const MissingRange& range) { return range.first <= packetId && range.asks > 0; });
}

void MissingRanges::Insert(Iterator place, const MissingRange& range)
{
    if (m_ranges.size() >= kMostRanges) {
        m_isOverfull = true;
        return;
    }
    m_ranges.insert(place, range);
}

std::optional<MissingRange> MissingRanges::Arrived(std::uint32_t packetId, Time now)
{
    if (packetId >= m_next) {
        if (packetId > m_next)
            Insert(m_ranges.end(), {static_cast<std::uint32_t>(m_next), packetId - 1, now}); // below an id
        m_next = std::uint64_t{packetId} + 1;
        return std::nullopt;
    }
    const auto found = Find(packetId);
    if (found == m_ranges.end() || found->first > packetId)
        return std::nullopt;
    const MissingRange before = *found;
    if (before.first == before.last) {
        m_ranges.erase(found);
    } else if (packetId == before.first) {
        ++found->first;
    } else if (packetId == before.last) {
        --found->last;
    } else {
        found->last = packetId - 1;
        MissingRange behind = before;
        behind.first = packetId + 1;
        Insert(found + 1, behind);
    }
    return before;
}

void MissingRanges::Lost(std::uint32_t packetId, Time now)
{
    if (packetId < m_next && !IsMissing(packetId))
        Insert(Find(packetId), {packetId, packetId, now});
}

void MissingRanges::ExpectUpTo(std::uint32_t packetId, Time now)
{
    if (packetId < m_next)
        return;
    Insert(m_ranges.end(), {static_cast<std::uint32_t>(m_next), packetId, now}); // not above an id
    m_next = std::uint64_t{packetId} + 1;
}

void MissingRanges::EndAt(std::uint32_t packetId)
{
    auto found = Find(packetId);
    if (found != m_ranges.end() && found->first < packetId) {
        found->last = packetId - 1;
        ++found;
    }
    m_ranges.erase(found, m_ranges.end());
}

} // namespace receive
