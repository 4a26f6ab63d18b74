#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace genapi {

/// Handle of a node in its map: its index in the description.
enum class NodeId : std::uint32_t {};

/// What a client can do with a node.
enum class ValueType : std::uint8_t {
    None, ///< no value: "Node", groups, kinds of other buses
    Integer,
    Float,
    Boolean,
    Command,
    Enumeration,
    String,
    Register,
    Category,
    Port,
};

/// Whether a node can be read and written at the moment.
enum class AccessMode : std::uint8_t {
    NotImplemented,
    NotAvailable,
    WriteOnly,
    ReadOnly,
    ReadWrite,
};

[[nodiscard]] constexpr bool IsReadable(AccessMode mode)
{
    return mode == AccessMode::ReadOnly || mode == AccessMode::ReadWrite;
}

[[nodiscard]] constexpr bool IsWritable(AccessMode mode)
{
    return mode == AccessMode::WriteOnly || mode == AccessMode::ReadWrite;
}

[[nodiscard]] constexpr bool IsAvailable(AccessMode mode)
{
    return IsReadable(mode) || IsWritable(mode);
}

/// The access that remains when both conditions hold; read-only together with write-only leaves nothing.
[[nodiscard]] constexpr AccessMode Combine(AccessMode a, AccessMode b)
{
    if (a == AccessMode::NotImplemented || b == AccessMode::NotImplemented)
        return AccessMode::NotImplemented;
    const bool canRead = IsReadable(a) && IsReadable(b);
    const bool canWrite = IsWritable(a) && IsWritable(b);
    if (canRead)
        return canWrite ? AccessMode::ReadWrite : AccessMode::ReadOnly;
    return canWrite ? AccessMode::WriteOnly : AccessMode::NotAvailable;
}

enum class Visibility : std::uint8_t { Beginner = 0, Expert = 1, Guru = 2, Invisible = 3 };

enum class Representation : std::uint8_t {
    Unspecified,
    Linear,
    Logarithmic,
    Boolean,
    PureNumber,
    HexNumber,
    Ipv4Address,
    MacAddress,
};

/// What is kept of a register's value: nothing; what was read or written; what was read. Numbered as formulas
/// see it.
enum class CachingMode : std::uint8_t { NoCache = 0, WriteThrough = 1, WriteAround = 2 };

/// How a float is best shown.
enum class DisplayNotation : std::uint8_t { Automatic, Fixed, Scientific };

/// What does not change while the map lives. The texts are borrowed from the description.
struct NodeInfo {
    std::string_view name;
    std::string_view displayName;
    std::string_view toolTip;
    std::string_view description;
    std::string_view docuUrl;
    std::string_view unit;
    ValueType type = ValueType::None;
    Visibility visibility = Visibility::Beginner;
    Representation representation = Representation::Unspecified;
    bool isStreamable = false;
    bool isDeprecated = false;
    std::optional<DisplayNotation> displayNotation{}; ///< empty: Automatic
    std::optional<std::int64_t> displayPrecision{};   ///< digits; empty: 6
};

struct IntegerLimits {
    std::int64_t minimum = INT64_MIN;
    std::int64_t maximum = INT64_MAX;
    std::int64_t increment = 1;
};

struct FloatLimits {
    double minimum = 0;
    double maximum = 0;
    double increment = 0; ///< 0: any value between the limits
};

} // namespace genapi
