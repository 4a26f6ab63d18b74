#pragma once

#include "VxCamera/genapi/node/NodeTypes.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace genapi {

/// Values as users read and write them; always with a point as decimal mark.

/// Decimal, or as the representation asks: "0x1f", "192.168.0.1", "02:00:00:00:00:01".
[[nodiscard]] std::string IntegerToText(std::int64_t value, Representation representation);

/// Reads any of the forms above.
[[nodiscard]] std::optional<std::int64_t> IntegerFromText(std::string_view text);

enum class FloatDigits : std::uint8_t {
    Double,
    Single, ///< enough for the nearest number of 4 bytes
};

/// The shortest form that reads back the same: "0.1", "100000", "1e+30", "inf".
[[nodiscard]] std::string FloatToText(double value, FloatDigits digits);

/// "true", "false", "1", "0"; case does not matter.
[[nodiscard]] std::optional<bool> BooleanFromText(std::string_view text);

/// Two lower-case hexadecimal digits a byte.
[[nodiscard]] std::string BytesToText(std::span<const std::byte> bytes);

/// Hexadecimal digits in pairs, with or without "0x" before them.
[[nodiscard]] std::optional<std::vector<std::byte>> BytesFromText(std::string_view text);

} // namespace genapi
