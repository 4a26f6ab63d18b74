#pragma once

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <span>

/// Single integers in a given byte order, from and to bytes; the extent is part of the type.

template <std::unsigned_integral T>
[[nodiscard]] constexpr T VxLoadBe(std::span<const std::byte, sizeof(T)> bytes)
{
    std::uint64_t value = 0;
    for (const std::byte byte : bytes)
        value = (value << 8) | static_cast<std::uint64_t>(byte);
    return static_cast<T>(value); // sizeof(T) bytes were read
}

template <std::unsigned_integral T>
[[nodiscard]] constexpr T VxLoadLe(std::span<const std::byte, sizeof(T)> bytes)
{
    std::uint64_t value = 0;
    for (std::size_t i = sizeof(T); i > 0; --i)
        value = (value << 8) | static_cast<std::uint64_t>(bytes[i - 1]);
    return static_cast<T>(value); // sizeof(T) bytes were read
}

template <std::unsigned_integral T>
constexpr void VxStoreBe(std::span<std::byte, sizeof(T)> bytes, T value)
{
    for (std::size_t i = 0; i < sizeof(T); ++i)
        bytes[i] = static_cast<std::byte>(static_cast<std::uint64_t>(value) >> (8 * (sizeof(T) - 1 - i)));
}

template <std::unsigned_integral T>
constexpr void VxStoreLe(std::span<std::byte, sizeof(T)> bytes, T value)
{
    for (std::size_t i = 0; i < sizeof(T); ++i)
        bytes[i] = static_cast<std::byte>(static_cast<std::uint64_t>(value) >> (8 * i));
}
