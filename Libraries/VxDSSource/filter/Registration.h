#pragma once

#include "BaseClasses/IVxFilterMapperFactory.h"
#include "BaseClasses/MovieSetup.h"

namespace vxds {

/// What the filter says about itself in the class table.
extern const AMOVIESETUP_FILTER kFilterSetup;

/// Registers the module's classes and its filter, then enters the filter as a video capture device.
/// @return  the first failure; what precedes it stays
[[nodiscard]] HRESULT RegisterModule(IVxFilterMapperFactory& mappers);

/// Takes the filter out of the capture devices, and only if that succeeded unregisters filter and classes.
[[nodiscard]] HRESULT UnregisterModule(IVxFilterMapperFactory& mappers);

} // namespace vxds
