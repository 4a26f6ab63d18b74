#pragma once

#include <compare>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace transport {

/// An IPv4 address as a number in host order: 127.0.0.1 is 0x7F000001.
///
/// Owner:  anybody, by value.
/// Thread: like an integer.
class Ipv4Address {
public:
    /// 0.0.0.0: no address, or every interface.
    constexpr Ipv4Address() = default;
    constexpr explicit Ipv4Address(std::uint32_t value) : m_value(value) {}
    constexpr Ipv4Address(std::uint8_t a, std::uint8_t b, std::uint8_t c, std::uint8_t d)
        : m_value(std::uint32_t{a} << 24 | std::uint32_t{b} << 16 | std::uint32_t{c} << 8 | d)
    {
    }

    static constexpr Ipv4Address Loopback() { return {127, 0, 0, 1}; }
    static constexpr Ipv4Address LimitedBroadcast() { return {255, 255, 255, 255}; }

    /// @param text  four decimal numbers from 0 to 255 with dots between, nothing else
    /// @return  none for any other text
    [[nodiscard]] static std::optional<Ipv4Address> Parse(std::string_view text);

    [[nodiscard]] constexpr std::uint32_t Value() const { return m_value; }
    [[nodiscard]] std::string ToString() const;

    [[nodiscard]] constexpr bool IsUnspecified() const { return m_value == 0; }
    [[nodiscard]] constexpr bool IsLoopback() const { return m_value >> 24 == 127; }  // 127.0.0.0/8
    [[nodiscard]] constexpr bool IsMulticast() const { return m_value >> 28 == 0xE; } // 224.0.0.0/4

    /// Whether both addresses lie in one subnet of this mask.
    [[nodiscard]] constexpr bool IsSameSubnet(Ipv4Address other, Ipv4Address mask) const
    {
        return ((m_value ^ other.m_value) & mask.m_value) == 0;
    }

    friend constexpr auto operator<=>(const Ipv4Address&, const Ipv4Address&) = default;

private:
    std::uint32_t m_value = 0;
};

} // namespace transport
