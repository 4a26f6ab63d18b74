#include "VxCamera/receive/PartPieces.h"

#include <algorithm>
#include <tuple>

namespace receive {

bool PartPieces::IsBefore(const Run& a, const Run& b)
{
    return std::tie(a.begin, a.last.packetId) < std::tie(b.begin, b.last.packetId);
}

void PartPieces::Clear()
{
    m_runs.clear();
    m_isSorted = true;
}

void PartPieces::Add(const Piece& piece)
{
    const std::uint64_t end = piece.offset + piece.bytes;
    if (!m_runs.empty() && m_runs.back().end == piece.offset) {
        m_runs.back().end = end;
        m_runs.back().last = piece;
        return;
    }
    const Run run{piece.offset, end, piece};
    m_isSorted = m_isSorted && (m_runs.empty() || IsBefore(m_runs.back(), run));
    m_runs.push_back(run);
}

void PartPieces::Sort() const
{
    if (!m_isSorted)
        std::ranges::sort(m_runs, IsBefore);
    m_isSorted = true;
}

bool PartPieces::Cover(std::uint64_t endBytes) const
{
    Sort();
    std::uint64_t covered = 0;
    for (const Run& run : m_runs) {
        if (run.begin > covered)
            break;
        covered = std::max(covered, run.end);
    }
    return covered >= endBytes;
}

void PartPieces::TakeLast(Run& run)
{
    if (run.last.packetId == 0)
        return; // it was taken before, and came again at another place
    m_cut.push_back(run.last);
    run.end = run.last.offset;
    run.last = {};
}

const std::vector<PartPieces::Piece>& PartPieces::TakeCut(std::uint64_t endBytes)
{
    Sort();
    m_cut.clear();
    Run* reaching = nullptr; // furthest, of those so far
    for (Run& run : m_runs) {
        if (reaching != nullptr && run.begin > reaching->end && reaching->end < endBytes)
            TakeLast(*reaching);
        if (reaching == nullptr || run.end >= reaching->end)
            reaching = &run;
    }
    if (reaching != nullptr && reaching->end < endBytes)
        TakeLast(*reaching);
    std::erase_if(m_runs, [](const Run& run) { return run.begin == run.end; });
    return m_cut;
}

} // namespace receive
