#pragma once

#include <windows.h>

#include <span>

namespace vxds {

/// A public identifier and its public name.
struct NamedGuid {
    const GUID* id; ///< a constant of the program
    const char* name;
};

// The tables, each identifier once.
[[nodiscard]] std::span<const NamedGuid> MajorTypeNames();
[[nodiscard]] std::span<const NamedGuid> SubtypeNames();
[[nodiscard]] std::span<const NamedGuid> FormatTypeNames();

/// @return  the name in that table; null when the identifier is not in it
[[nodiscard]] const char* NameIn(std::span<const NamedGuid> table, const GUID& id);

} // namespace vxds
