#pragma once

#include "VxDSSource/camera/VxGenParameter.h"

/// A truth-value feature.
///
/// Owner and thread: see VxGenParameter.
class VxGenBoolean : public VxGenParameter {
public:
    /// @param[out] value  untouched on failure
    virtual VxResult GetValue(bool& value) const = 0;
    virtual VxResult SetValue(bool value) = 0;
};
