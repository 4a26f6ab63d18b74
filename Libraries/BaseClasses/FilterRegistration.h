#pragma once

#include "BaseClasses/IVxFilterMapperFactory.h"
#include "BaseClasses/MovieSetup.h"

#include <span>

/// What becomes of the filters.
enum class VxRegistrationStep {
    Register,
    Unregister,
};

/// Registers or unregisters filters in the platform's general category, with one mapper of the factory: the
/// newer one, or the older where there is none. An entry that is already there is replaced.
/// @return  S_OK, also when there was nothing to unregister; the first failure, which ends it
HRESULT VxRegisterFilters(std::span<const AMOVIESETUP_FILTER* const> filters, VxRegistrationStep step,
                          IVxFilterMapperFactory& mappers);
