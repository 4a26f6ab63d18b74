#pragma once

#include "VxBase/VxString.h"
#include "VxDSSource/camera/VxGenTypes.h"

/// What never changes of a feature of this library's own.
struct ParameterFacts {
    VxString name;
    VxString category; ///< as VxGenParameter::GetCategory gives it
    VxGenVisibility visibility = VxGenVisibility::Beginner;
    VxString unit{}; ///< of a number; "" for none
};
