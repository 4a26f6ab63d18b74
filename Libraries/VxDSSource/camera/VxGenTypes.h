#pragma once

#include <cstdint>

/// Kinds of a GenICam feature as the module names them.
enum class VxGenType : std::uint32_t {
    Integer = 0,
    Enum = 1,
    Boolean = 2,
    String = 3,
    Command = 4,
    Float = 5,
    Register = 6,
    Unknown = 0xFFFFFFFF, ///< a node without a value (category, port)
};

/// Who a feature is meant for; numbered as GenICam orders the levels.
enum class VxGenVisibility : std::uint32_t {
    Beginner = 0,
    Expert = 1,
    Guru = 2,
    Invisible = 3,
};
