#pragma once

#include "BaseClasses/IVxFilterMapperFactory.h"

/// The platform's own filter mappers, by CoCreateInstance.
///
/// Owner:  whoever starts the registration.
/// Thread: any.
class VxFilterMapperFactory final : public IVxFilterMapperFactory {
public:
    HRESULT CreateMapper2(IFilterMapper2** mapper) override;
    HRESULT CreateMapper(IFilterMapper** mapper) override;
};
