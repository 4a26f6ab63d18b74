#pragma once

#include <windows.h>

#include <strmif.h>

/// Where registration gets the platform's filter mapper from; a test puts its own here.
///
/// Owner:  whoever starts the registration.
/// Thread: that of the registration; COM is initialised.
class IVxFilterMapperFactory {
public:
    IVxFilterMapperFactory() = default;
    virtual ~IVxFilterMapperFactory() = default;
    IVxFilterMapperFactory(const IVxFilterMapperFactory&) = delete;
    IVxFilterMapperFactory& operator=(const IVxFilterMapperFactory&) = delete;

    /// @param mapper  receives it, with a reference; null on failure
    virtual HRESULT CreateMapper2(IFilterMapper2** mapper) = 0;
    /// The older form, asked for when there is no newer one.
    virtual HRESULT CreateMapper(IFilterMapper** mapper) = 0;
};
