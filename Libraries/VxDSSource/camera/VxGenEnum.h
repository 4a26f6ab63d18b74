#pragma once

#include "VxDSSource/camera/VxGenEnumEntry.h"
#include "VxDSSource/camera/VxGenParameter.h"

#include <cstdint>

/// An enumeration feature.
///
/// Owner and thread: see VxGenParameter.
class VxGenEnum : public VxGenParameter {
public:
    /// @param[out] count  number of entries the camera's description lists, available or not
    virtual VxResult GetEntriesCount(std::int64_t& count) const = 0;

    /// @param index  from 0, in the order of the camera's description
    /// @param[out] entry  borrowed from this feature; untouched on failure
    /// @return  OUT_OF_RANGE for an index without an entry
    virtual VxResult GetEntryByIndex(std::int64_t index, const VxGenEnumEntry** entry) const = 0;

    /// @param[out] name  name of the entry in force; untouched on failure
    virtual VxResult GetValue(VxString& name) const = 0;

    /// @param name  an entry's name
    virtual VxResult SetValue(const VxString& name) = 0;
};
