#include "VxCamera/receive/PacketBitmap.h"

#include <algorithm>

namespace receive {

namespace {

constexpr std::size_t kBitsPerWord = 64;

constexpr std::size_t WordsFor(std::size_t bits)
{
    return bits / kBitsPerWord + 1;
}

constexpr std::uint64_t MaskOf(std::size_t bit)
{
    return std::uint64_t{1} << (bit % kBitsPerWord);
}

} // namespace

void PacketBitmap::Reset(std::size_t packets)
{
    const std::size_t words = WordsFor(packets);
    if (m_words.size() < words)
        m_words.resize(words);
    std::fill_n(m_words.begin(), std::max(words, WordsFor(m_size)), 0);
    m_size = packets;
}

void PacketBitmap::Grow(std::size_t packets)
{
    if (m_words.size() < WordsFor(packets))
        m_words.resize(WordsFor(packets));
    m_size = std::max(m_size, packets);
}

bool PacketBitmap::Set(std::size_t packetId)
{
    std::uint64_t& word = m_words[packetId / kBitsPerWord];
    const bool isNew = (word & MaskOf(packetId)) == 0;
    word |= MaskOf(packetId);
    return isNew;
}

bool PacketBitmap::IsSet(std::size_t packetId) const
{
    return (m_words[packetId / kBitsPerWord] & MaskOf(packetId)) != 0;
}

void PacketBitmap::Clear(std::size_t packetId)
{
    m_words[packetId / kBitsPerWord] &= ~MaskOf(packetId);
}

} // namespace receive
