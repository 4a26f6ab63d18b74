#pragma once

#include "VxDSSource/camera/VxGenParameter.h"

/// A text feature.
///
/// Owner and thread: see VxGenParameter.
class VxGenString : public VxGenParameter {
public:
    /// @param[out] value  untouched on failure
    virtual VxResult GetValue(VxString& value) const = 0;
    virtual VxResult SetValue(const VxString& value) = 0;
};
