#pragma once

#include "BaseClasses/IVxFilterMapperFactory.h"

/// Registers (TRUE) or unregisters the classes of the module's table, for all users of the machine.
STDAPI AMovieDllRegisterServer2(BOOL registering);

/// The same, with the filter mapper from somewhere else.
HRESULT AMovieDllRegisterServer2(BOOL registering, IVxFilterMapperFactory& mappers);
