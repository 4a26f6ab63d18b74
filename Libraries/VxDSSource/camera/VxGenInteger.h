#pragma once

#include "VxDSSource/camera/VxGenParameter.h"

#include <cstdint>

/// An integer feature.
///
/// Owner and thread: see VxGenParameter.
class VxGenInteger : public VxGenParameter {
public:
    /// @param[out] value  untouched on failure
    virtual VxResult GetValue(std::int64_t& value) const = 0;
    virtual VxResult SetValue(std::int64_t value) = 0;
    virtual VxResult GetMin(std::int64_t& minimum) const = 0;
    virtual VxResult GetMax(std::int64_t& maximum) const = 0;
    virtual VxResult GetIncrement(std::int64_t& increment) const = 0;

    /// @param[out] unit  for people: "ms", "Mbit/s"; "" for a number without one
    virtual VxResult GetUnit(VxString& unit) const
    {
        unit = VxString();
        return VxResult::Ok();
    }
};
