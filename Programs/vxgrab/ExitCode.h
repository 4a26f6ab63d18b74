#pragma once

#include "VxBase/VxResult.h"

namespace vxgrab {

/// How the program ends; the numbers are documented in the help text.
enum class ExitCode : int {
    Ok = 0,
    NoPicture = 1, ///< frames may have come, but no picture
    Usage = 2,     ///< the command line is wrong
    System = 3,    ///< COM, the filter, the camera or the disk refused
};

/// @return  the exit code that stands for a result
[[nodiscard]] inline ExitCode ExitCodeFor(const VxResult& result)
{
    switch (result.Code()) {
    case VxError::Ok:
        return ExitCode::Ok;
    case VxError::Timeout:
        return ExitCode::NoPicture;
    case VxError::InvalidParameter:
        return ExitCode::Usage;
    default:
        return ExitCode::System;
    }
}

} // namespace vxgrab
