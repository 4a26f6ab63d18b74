#include "VxCamera/transport/Ipv4Address.h"

#include <charconv>

namespace transport {

namespace {

constexpr int kParts = 4; // fixed by the dotted form
constexpr unsigned kLargestPart = 255;
constexpr std::size_t kMostDigits = 3;

/// Takes one decimal number off the front of the text.
std::optional<std::uint32_t> TakePart(std::string_view& text)
{
    unsigned value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    const auto digits = static_cast<std::size_t>(end - text.data()); // not negative
    if (error != std::errc{} || digits > kMostDigits || value > kLargestPart)
        return std::nullopt;
    text.remove_prefix(digits);
    return value;
}

} // namespace

std::optional<Ipv4Address> Ipv4Address::Parse(std::string_view text)
{
    std::uint32_t value = 0;
    for (int i = 0; i < kParts; ++i) {
        if (i > 0) {
            if (!text.starts_with('.'))
                return std::nullopt;
            text.remove_prefix(1);
        }
        const auto part = TakePart(text);
        if (!part)
            return std::nullopt;
        value = value << 8 | *part;
    }
    return text.empty() ? std::optional(Ipv4Address(value)) : std::nullopt;
}

std::string Ipv4Address::ToString() const
{
    std::string text;
    for (int shift = 24; shift >= 0; shift -= 8) {
        text += std::to_string(m_value >> shift & 0xFF);
        if (shift > 0)
            text += '.';
    }
    return text;
}

} // namespace transport
