#include "VxBase/VxByteWriter.h"

#include <algorithm>

std::span<std::byte> VxByteWriter::Take(std::size_t size)
{
    if (!m_isOk || size > m_all.size() - m_used) {
        m_isOk = false;
        return {};
    }
    const auto field = m_all.subspan(m_used, size);
    m_used += size;
    return field;
}

void VxByteWriter::Bytes(std::span<const std::byte> bytes)
{
    const auto field = Take(bytes.size());
    if (m_isOk)
        std::ranges::copy(bytes, field.begin());
}

void VxByteWriter::Zeros(std::size_t count)
{
    std::ranges::fill(Take(count), std::byte{0});
}

void VxByteWriter::Text(std::string_view text, std::size_t size)
{
    const auto field = Take(size);
    std::ranges::fill(field, std::byte{0});
    const std::size_t used = std::min(text.size(), field.size());
    std::ranges::copy(std::as_bytes(std::span(text.data(), used)), field.begin());
}
