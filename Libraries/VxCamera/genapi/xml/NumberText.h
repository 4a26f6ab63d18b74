#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace genapi {

/// Numbers as descriptions and users write them; nothing may follow the number.

/// Decimal, or hexadecimal after "0x": a pattern of 64 bits, so 0xFFFFFFFFFFFFFFFF is -1. Decimals up to 2^64
/// - 1 are taken as such a pattern, too, and a decimal with a fraction of zeros ("10.0", "1e3") as the
/// integer it is.
[[nodiscard]] std::optional<std::int64_t> ParseInteger(std::string_view text);

/// Hexadecimal digits with or without "0x".
[[nodiscard]] std::optional<std::uint64_t> ParseHexadecimal(std::string_view text);

/// Decimal with a point whatever the locale, "INF", "-INF", "NaN", or an integer in hexadecimal.
[[nodiscard]] std::optional<double> ParseFloat(std::string_view text);

/// Removes blanks, tabs and line breaks on both sides.
[[nodiscard]] std::string_view Trim(std::string_view text);

} // namespace genapi
