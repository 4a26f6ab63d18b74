#pragma once

#include "VxDSSource/filter/IVxDSSource.h"

#include <ocidl.h>
#include <strmif.h>

#include <vector>

/// A filter, through all the interfaces it adds to those of every filter; borrowed from a fixture.
struct FilterUnderTest {
    IVxDSSource& control;
    IAMDroppedFrames& frames;
    ISpecifyPropertyPages& pages;
    IPersistStream& persist;
};

/// Whether an operation may run beside a frame in production.
enum class Beside {
    Frame, ///< reads or stores one thing
    None,  ///< waits until the frame is done: it changes what frames are made of, or needs all of it at once
};

/// One call that a client can make, with arguments that succeed while the scripted camera is connected; what
/// it returns is freed.
struct FilterOperation {
    const char* name;
    Beside beside;
    HRESULT (*call)(FilterUnderTest&);
};

/// Every method, in the order of the interfaces' tables.
[[nodiscard]] const std::vector<FilterOperation>& FilterOperations();

/// Adds the features that the operations name to the scripted camera.
void AddFeaturesOfOperations();
