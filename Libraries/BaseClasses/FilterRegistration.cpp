#include "BaseClasses/FilterRegistration.h"

#include "BaseClasses/VxComPtr.h"

#include <objbase.h>

#include <tuple>

namespace {

using Filters = std::span<const AMOVIESETUP_FILTER* const>;

// Fixed by the interface: REGFILTER2 with pins as REGFILTERPINS.
constexpr DWORD kRegFilterVersion = 1;

// What the mapper says of an entry that is not there.
constexpr HRESULT kNoEntry = HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND);

/// COM for one scope, also in a thread that has it already in another apartment.
class ComScope final {
public:
    ComScope() : m_result(::CoInitialize(nullptr)) {}
    ~ComScope()
    {
        ::CoFreeUnusedLibraries();
        if (SUCCEEDED(m_result))
            ::CoUninitialize();
    }
    ComScope(const ComScope&) = delete;
    ComScope& operator=(const ComScope&) = delete;

private:
    const HRESULT m_result;
};

HRESULT UnregisterFilter(IFilterMapper2& mapper, const AMOVIESETUP_FILTER& filter)
{
    return mapper.UnregisterFilter(nullptr, nullptr, *filter.clsID);
}

HRESULT UnregisterFilter(IFilterMapper& mapper, const AMOVIESETUP_FILTER& filter)
{
    return mapper.UnregisterFilter(*filter.clsID);
}

HRESULT RegisterFilter(IFilterMapper2& mapper, const AMOVIESETUP_FILTER& filter)
{
    REGFILTER2 description = {};
    description.dwVersion = kRegFilterVersion;
    description.dwMerit = filter.dwMerit;
    description.cPins = filter.nPins;
    description.rgPins = filter.lpPin;
    return mapper.RegisterFilter(*filter.clsID, filter.strName, nullptr, nullptr, nullptr, &description);
}

HRESULT RegisterPin(IFilterMapper& mapper, REFCLSID filter, const AMOVIESETUP_PIN& pin)
{
    const CLSID peer = pin.clsConnectsToFilter != nullptr ? *pin.clsConnectsToFilter : CLSID_NULL;
    const HRESULT hr = mapper.RegisterPin(filter, pin.strName, pin.bRendered, pin.bOutput, pin.bZero,
                                          pin.bMany, peer, pin.strConnectsToPin);
    if (FAILED(hr))
        return hr;
    for (const AMOVIESETUP_MEDIATYPE& type : std::span(pin.lpMediaType, pin.nMediaTypes)) {
        const HRESULT typed =
            mapper.RegisterPinType(filter, pin.strName, *type.clsMajorType, *type.clsMinorType);
        if (FAILED(typed))
            return typed;
    }
    return S_OK;
}

HRESULT RegisterFilter(IFilterMapper& mapper, const AMOVIESETUP_FILTER& filter)
{
    HRESULT hr = mapper.RegisterFilter(*filter.clsID, filter.strName, filter.dwMerit);
    for (const AMOVIESETUP_PIN& pin : std::span(filter.lpPin, filter.nPins)) {
        if (FAILED(hr))
            return hr;
        hr = RegisterPin(mapper, *filter.clsID, pin);
    }
    return hr;
}

template <typename Mapper>
HRESULT UpdateAll(Mapper& mapper, Filters filters, VxRegistrationStep step)
{
    for (const AMOVIESETUP_FILTER* const filter : filters) {
        HRESULT hr = UnregisterFilter(mapper, *filter);
        if (step == VxRegistrationStep::Register)
            hr = RegisterFilter(mapper, *filter); // an old entry, if there was one, is gone
        if (FAILED(hr) && hr != kNoEntry)
            return hr;
    }
    return S_OK;
}

} // namespace

HRESULT VxRegisterFilters(Filters filters, VxRegistrationStep step, IVxFilterMapperFactory& mappers)
{
    const ComScope com;
    VxComPtr<IFilterMapper2> mapper2;
    if (SUCCEEDED(mappers.CreateMapper2(mapper2.Put())) && mapper2)
        return UpdateAll(*mapper2.Get(), filters, step);

    VxComPtr<IFilterMapper> mapper;
    const HRESULT created = mappers.CreateMapper(mapper.Put());
    if (FAILED(created))
        return created;
    return mapper ? UpdateAll(*mapper.Get(), filters, step) : E_NOINTERFACE;
}
