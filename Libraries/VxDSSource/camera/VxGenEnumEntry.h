#pragma once

#include "VxBase/VxResult.h"
#include "VxBase/VxString.h"

#include <cstdint>

/// One entry of an enumeration feature.
///
/// Owner:  its VxGenEnum.
/// Thread: see VxGenParameter.
class VxGenEnumEntry {
public:
    VxGenEnumEntry(const VxGenEnumEntry&) = delete;
    VxGenEnumEntry& operator=(const VxGenEnumEntry&) = delete;
    virtual ~VxGenEnumEntry() = default;

    /// @param[out] name  the entry's symbolic name, for instance "Continuous"
    virtual VxResult GetName(VxString& name) const = 0;

    /// @param[out] value  the number the camera stores for it
    virtual VxResult GetValue(std::int64_t& value) const = 0;

    /// Whether the camera offers the entry in its present state.
    [[nodiscard]] virtual bool IsAvailable() const = 0;

protected:
    VxGenEnumEntry() = default;
};
