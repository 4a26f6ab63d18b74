#pragma once

#include "VxDSSource/camera/VxGenParameter.h"

/// A floating-point feature.
///
/// Owner and thread: see VxGenParameter.
class VxGenFloat : public VxGenParameter {
public:
    /// @param[out] value  untouched on failure
    virtual VxResult GetValue(double& value) const = 0;
    virtual VxResult SetValue(double value) = 0;
    virtual VxResult GetMin(double& minimum) const = 0;
    virtual VxResult GetMax(double& maximum) const = 0;

    /// @param[out] unit  for people: "ms", "Mbit/s"; "" for a number without one
    virtual VxResult GetUnit(VxString& unit) const
    {
        unit = VxString();
        return VxResult::Ok();
    }
};
