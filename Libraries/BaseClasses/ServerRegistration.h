#pragma once

#include "BaseClasses/CFactoryTemplate.h"
#include "BaseClasses/IVxFilterMapperFactory.h"

#include <span>

/// What is registered, and where.
struct VxServerRegistration {
    std::span<const CFactoryTemplate> classes; // borrowed for the call
    HINSTANCE module;                          // whose path the classes get
    HKEY classesRoot;                          // below it: CLSID\{...}
    IVxFilterMapperFactory& mappers;           // borrowed for the call
};

/// Registers every class as an in-process server, then those with set-up data as filters.
/// @return  S_OK; the first failure: what follows it is left undone, what precedes it stays
HRESULT VxRegisterServer(const VxServerRegistration& registration);

/// Unregisters the filters, and only if that succeeded the classes.
HRESULT VxUnregisterServer(const VxServerRegistration& registration);

/// Registers or unregisters the filter with one mapper of the factory, in the platform's general category.
/// @return  S_OK, also when there was nothing to unregister
HRESULT VxRegisterFilters(const VxServerRegistration& registration, BOOL registering);

/// Registers (TRUE) or unregisters the classes of the module's table.
STDAPI AMovieDllRegisterServer2(BOOL registering);

/// The same, with the mapper from somewhere else.
HRESULT AMovieDllRegisterServer2(BOOL registering, IVxFilterMapperFactory& mappers);
