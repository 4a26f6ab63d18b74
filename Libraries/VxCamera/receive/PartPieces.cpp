#include "VxCamera/receive/PartPieces.h"

#include <algorithm>
#include <tuple>

namespace receive {

namespace {

bool IsBefore(const PartPieces::Piece& a, const PartPieces::Piece& b)
{
    return std::tie(a.offset, a.packetId) < std::tie(b.offset, b.packetId);
}

} // namespace

void PartPieces::Clear()
{
    m_pieces.clear();
    m_coveredBytes = 0;
    m_isSorted = true;
}

void PartPieces::Add(const Piece& piece)
{
    m_isSorted = m_isSorted && (m_pieces.empty() || IsBefore(m_pieces.back(), piece));
    m_pieces.push_back(piece);
    if (piece.offset <= m_coveredBytes)
        m_coveredBytes = std::max(m_coveredBytes, piece.End());
}

void PartPieces::Sort() const
{
    if (m_isSorted)
        return;
    std::ranges::sort(m_pieces, IsBefore);
    m_isSorted = true;
    m_coveredBytes = 0;
    for (const Piece& piece : m_pieces) {
        if (piece.offset > m_coveredBytes)
            return;
        m_coveredBytes = std::max(m_coveredBytes, piece.End());
    }
}

bool PartPieces::Cover(std::uint64_t endBytes) const
{
    if (m_coveredBytes < endBytes)
        Sort();
    return m_coveredBytes >= endBytes;
}

const std::vector<PartPieces::Piece>& PartPieces::TakeCut(std::uint64_t endBytes)
{
    Sort();
    m_cut.clear();
    const Piece* reaching = nullptr; // furthest, of those so far
    for (const Piece& piece : m_pieces) {
        const bool isHole = reaching != nullptr && piece.offset > reaching->End();
        if (isHole && reaching->End() < endBytes)
            m_cut.push_back(*reaching);
        if (reaching == nullptr || piece.End() >= reaching->End())
            reaching = &piece;
    }
    if (reaching != nullptr && reaching->End() < endBytes)
        m_cut.push_back(*reaching);
    std::erase_if(m_pieces, [next = m_cut.begin(), end = m_cut.end()](const Piece& piece) mutable {
        const bool isCut = next != end && next->packetId == piece.packetId; // both are in order
        next += isCut ? 1 : 0;
        return isCut;
    });
    m_isSorted = false; // and what is covered is counted anew
    m_coveredBytes = 0;
    return m_cut;
}

} // namespace receive
