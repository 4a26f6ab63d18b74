#pragma once

#include "VxDSSource/camera/VxGenParameter.h"

/// A feature that is executed.
///
/// Owner and thread: see VxGenParameter.
class VxGenCommand : public VxGenParameter {
public:
    /// Starts the command; does not wait for its end.
    virtual VxResult Execute() = 0;

    /// @param[out] isDone  whether the last execution has ended; untouched on failure
    virtual VxResult IsDone(bool& isDone) const = 0;
};
