#pragma once

#include "VxBase/VxByteOrder.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

/// Reads values from bytes without ever leaving them; the first read past the end makes every later one fail.
///
/// Owner:  a parser, for one call. Borrows the bytes.
/// Thread: one.
class VxByteReader {
public:
    explicit VxByteReader(std::span<const std::byte> bytes) : m_rest(bytes) {}

    [[nodiscard]] std::uint8_t U8() { return Load<std::uint8_t>(); }
    [[nodiscard]] std::uint16_t U16be() { return Load<std::uint16_t>(); }
    [[nodiscard]] std::uint32_t U32be() { return Load<std::uint32_t>(); }
    [[nodiscard]] std::uint64_t U64be() { return Load<std::uint64_t>(); }
    [[nodiscard]] std::uint16_t U16le() { return LoadLe<std::uint16_t>(); }
    [[nodiscard]] std::uint32_t U32le() { return LoadLe<std::uint32_t>(); }

    /// @return  `size` bytes, or none when there are fewer
    [[nodiscard]] std::span<const std::byte> Bytes(std::size_t size)
    {
        if (size > m_rest.size()) {
            m_isOk = false;
            m_rest = {};
            return {};
        }
        const auto taken = m_rest.first(size);
        m_rest = m_rest.subspan(size);
        return taken;
    }

    /// @return  the text in a field of `size` bytes, up to its first NUL; a field without one is used whole
    [[nodiscard]] std::string Text(std::size_t size);

    void Skip(std::size_t size) { static_cast<void>(Bytes(size)); }

    /// All bytes not read yet.
    [[nodiscard]] std::span<const std::byte> Rest() const { return m_rest; }

    /// False once a read went past the end; values read since then are 0.
    [[nodiscard]] bool Ok() const { return m_isOk; }

private:
    template <typename T>
    T Load()
    {
        const auto bytes = Bytes(sizeof(T));
        return m_isOk ? VxLoadBe<T>(bytes.template first<sizeof(T)>()) : T{0};
    }

    template <typename T>
    T LoadLe()
    {
        const auto bytes = Bytes(sizeof(T));
        return m_isOk ? VxLoadLe<T>(bytes.template first<sizeof(T)>()) : T{0};
    }

    std::span<const std::byte> m_rest;
    bool m_isOk = true;
};
