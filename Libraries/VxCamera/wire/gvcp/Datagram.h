#pragma once

#include "VxBase/VxByteWriter.h"

#include "VxCamera/wire/gvcp/Command.h"

#include <array>
#include <cstddef>
#include <span>

namespace gvcp {

/// The bytes of one whole control datagram: a header and what follows it. Never allocates.
///
/// Owner:  anybody, by value.
/// Thread: like std::array.
class Datagram {
public:
    Datagram() = default;

    /// @param bytes  longer than a datagram can be: cut
    explicit Datagram(std::span<const std::byte> bytes);

    /// @return  a writer over the whole capacity; follow it with Close
    [[nodiscard]] VxByteWriter Open() { return VxByteWriter(m_bytes); }

    /// Sets the size to what was written.
    void Close(const VxByteWriter& writer) { m_size = writer.Written().size(); }

    [[nodiscard]] std::span<const std::byte> Bytes() const { return std::span(m_bytes).first(m_size); }

private:
    std::array<std::byte, kMaxDatagramBytes> m_bytes{};
    std::size_t m_size = 0;
};

} // namespace gvcp
