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
