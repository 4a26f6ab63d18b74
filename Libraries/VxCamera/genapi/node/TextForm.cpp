#include "VxCamera/genapi/node/TextForm.h"

#include <array>
#include <charconv>
#include <cmath>

#include "VxCamera/genapi/xml/NumberText.h"

namespace genapi {

namespace {

constexpr int kHexadecimal = 16;
constexpr int kDecimal = 10;
constexpr unsigned kBitsPerByte = 8;
constexpr std::size_t kIpv4Bytes = 4;
constexpr std::size_t kMacBytes = 6;

// Chosen: between them a number without exponent is easier to read than one with.
constexpr double kSmallestFixed = 1e-5;
constexpr double kLargestFixed = 1e15;

std::string Hexadecimal(std::uint64_t value)
{
    std::array<char, 2 * sizeof(value)> digits{};
    const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), value, kHexadecimal).ptr;
    return std::string(digits.data(), end);
}

void AppendHexByte(std::string& text, unsigned byte)
{
    constexpr std::string_view kDigits = "0123456789abcdef";
    text.push_back(kDigits[byte >> 4 & 0xF]);
    text.push_back(kDigits[byte & 0xF]);
}

unsigned ByteOf(std::int64_t value, std::size_t fromLeast)
{
    return static_cast<unsigned>(static_cast<std::uint64_t>(value) >> (kBitsPerByte * fromLeast)) & 0xFFu;
}

std::string Dotted(std::int64_t value)
{
    std::string text;
    for (std::size_t i = kIpv4Bytes; i > 0; --i) {
        text += std::to_string(ByteOf(value, i - 1));
        if (i > 1)
            text += '.';
    }
    return text;
}

std::string Colons(std::int64_t value)
{
    std::string text;
    for (std::size_t i = kMacBytes; i > 0; --i) {
        AppendHexByte(text, ByteOf(value, i - 1));
        if (i > 1)
            text += ':';
    }
    return text;
}

/// Exactly `count` numbers up to 255, separated.
std::optional<std::int64_t> Parts(std::string_view text, char separator, std::size_t count, int base)
{
    std::int64_t value = 0;
    for (std::size_t i = 0; i < count; ++i) {
        const std::size_t end = i + 1 < count ? text.find(separator) : text.size();
        if (end == std::string_view::npos || end == 0)
            return std::nullopt;
        unsigned part = 0;
        const auto [last, error] = std::from_chars(text.data(), text.data() + end, part, base);
        if (error != std::errc() || last != text.data() + end || part > 0xFFu)
            return std::nullopt;
        value = (value << kBitsPerByte) | static_cast<std::int64_t>(part);
        text.remove_prefix(i + 1 < count ? end + 1 : end);
    }
    return value;
}

template <typename T>
std::string Shortest(T value, std::chars_format format)
{
    // Enough for 17 digits with sign, point and exponent, and for the fixed form of what kSmallestFixed
    // admits.
    std::array<char, 64> digits{};
    const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), value, format).ptr;
    return std::string(digits.data(), end);
}

} // namespace

std::string IntegerToText(std::int64_t value, Representation representation)
{
    // A value that does not fit the form the camera asks for is better read as a number.
    const auto fits = [&](std::size_t bytes) { return value >= 0 && (value >> (kBitsPerByte * bytes)) == 0; };
    switch (representation) {
    case Representation::HexNumber:
        return "0x" + Hexadecimal(static_cast<std::uint64_t>(value));
    case Representation::Ipv4Address:
        return fits(kIpv4Bytes) ? Dotted(value) : std::to_string(value);
    case Representation::MacAddress:
        return fits(kMacBytes) ? Colons(value) : std::to_string(value);
    default:
        return std::to_string(value);
    }
}

std::optional<std::int64_t> IntegerFromText(std::string_view text)
{
    text = Trim(text);
    if (const auto value = ParseInteger(text))
        return value;
    if (text.find(':') != std::string_view::npos)
        return Parts(text, ':', kMacBytes, kHexadecimal);
    return Parts(text, '.', kIpv4Bytes, kDecimal);
}

std::string FloatToText(double value, FloatDigits digits)
{
    const double size = std::abs(value);
    const bool isFixed = value == 0 || (size >= kSmallestFixed && size < kLargestFixed);
    const auto format = isFixed ? std::chars_format::fixed : std::chars_format::scientific;
    if (digits == FloatDigits::Single)
        return Shortest(static_cast<float>(value), format);
    return Shortest(value, format);
}

std::optional<bool> BooleanFromText(std::string_view text)
{
    const std::string_view trimmed = Trim(text);
    std::string lower(trimmed.substr(0, sizeof("false")));
    for (char& c : lower)
        c = c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    if (lower == "true" || lower == "1")
        return true;
    if (lower == "false" || lower == "0")
        return false;
    return std::nullopt;
}

std::string BytesToText(std::span<const std::byte> bytes)
{
    std::string text;
    text.reserve(2 * bytes.size());
    for (const std::byte byte : bytes)
        AppendHexByte(text, std::to_integer<unsigned>(byte));
    return text;
}

std::optional<std::vector<std::byte>> BytesFromText(std::string_view text)
{
    text = Trim(text);
    if (text.starts_with("0x") || text.starts_with("0X"))
        text.remove_prefix(2);
    if (text.size() % 2 != 0)
        return std::nullopt;
    std::vector<std::byte> bytes;
    bytes.reserve(text.size() / 2);
    for (std::size_t i = 0; i < text.size(); i += 2) {
        std::uint8_t byte = 0;
        const char* const end = text.data() + i + 2;
        const auto [last, error] = std::from_chars(text.data() + i, end, byte, kHexadecimal);
        if (error != std::errc() || last != end)
            return std::nullopt;
        bytes.push_back(static_cast<std::byte>(byte));
    }
    return bytes;
}

} // namespace genapi
