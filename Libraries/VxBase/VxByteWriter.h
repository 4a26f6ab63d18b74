#pragma once

#include "VxBase/VxByteOrder.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

/// Writes values into bytes without ever leaving them; the first write past the end makes every later one
/// fail.
///
/// Owner:  a serialiser, for one call. Borrows the bytes.
/// Thread: one.
class VxByteWriter {
public:
    explicit VxByteWriter(std::span<std::byte> bytes) : m_all(bytes) {}

    void U8(std::uint8_t value) { Store(value); }
    void U16be(std::uint16_t value) { Store(value); }
    void U32be(std::uint32_t value) { Store(value); }
    void U64be(std::uint64_t value) { Store(value); }
    void Bytes(std::span<const std::byte> bytes);
    void Zeros(std::size_t count);

    /// Writes the text into a field of `size` bytes, cut or filled with NULs.
    void Text(std::string_view text, std::size_t size);

    /// What has been written so far.
    [[nodiscard]] std::span<const std::byte> Written() const { return m_all.first(m_used); }

    /// False once a write did not fit; nothing was written since then.
    [[nodiscard]] bool Ok() const { return m_isOk; }

private:
    template <typename T>
    void Store(T value)
    {
        if (const auto field = Take(sizeof(T)); !field.empty())
            VxStoreBe<T>(field.template first<sizeof(T)>(), value);
    }
    [[nodiscard]] std::span<std::byte> Take(std::size_t size);

    std::span<std::byte> m_all;
    std::size_t m_used = 0;
    bool m_isOk = true;
};
