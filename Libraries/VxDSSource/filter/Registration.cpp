#include "VxDSSource/filter/Registration.h"

#include "BaseClasses/ModuleRegistration.h"
#include "BaseClasses/VxComPtr.h"
#include "VxDSSource/filter/Identifiers.h"

#include <uuids.h>

#include <functional>
#include <tuple>

namespace vxds {

namespace {

const AMOVIESETUP_MEDIATYPE kOutputType = {&MEDIATYPE_Video, &GUID_NULL}; // any subtype

wchar_t g_pinName[] = L"Output"; // not constant only because the platform's structure is not

const AMOVIESETUP_PIN kOutputPin = {
    g_pinName,
    FALSE, // is not rendered
    TRUE,  // is an output
    FALSE, // cannot be absent
    FALSE, // exists once
    &CLSID_NULL, nullptr, 1, &kOutputType,
};

/// One call of the platform's filter mapper, with COM around it.
HRESULT WithMapper(IVxFilterMapperFactory& mappers, const std::function<HRESULT(IFilterMapper2&)>& step)
{
    const HRESULT initialised = ::CoInitialize(nullptr);
    VxComPtr<IFilterMapper2> mapper;
    HRESULT result = mappers.CreateMapper2(mapper.Put());
    if (SUCCEEDED(result))
        result = step(*mapper.Get());
    mapper.Reset();
    ::CoFreeUnusedLibraries();
    if (SUCCEEDED(initialised)) // Docs/decisions/0012
        ::CoUninitialize();
    return result;
}

HRESULT EnterAsCaptureDevice(IFilterMapper2& mapper)
{
    REGFILTER2 filter{};
    filter.dwVersion = 1;
    filter.dwMerit = MERIT_DO_NOT_USE;
    filter.cPins = 1;
    filter.rgPins = &kOutputPin;
    VxComPtr<IMoniker> moniker; // of no further use
    return mapper.RegisterFilter(CLSID_VxDSSource, kFilterName, moniker.Put(),
                                 &CLSID_VideoInputDeviceCategory, nullptr, &filter);
}

HRESULT LeaveCaptureDevices(IFilterMapper2& mapper)
{
    return mapper.UnregisterFilter(&CLSID_VideoInputDeviceCategory, nullptr, CLSID_VxDSSource);
}

} // namespace

const AMOVIESETUP_FILTER kFilterSetup = {&CLSID_VxDSSource, kFilterName, MERIT_DO_NOT_USE, 1, &kOutputPin};

HRESULT RegisterModule(IVxFilterMapperFactory& mappers)
{
    const HRESULT result = AMovieDllRegisterServer2(TRUE, mappers);
    if (FAILED(result))
        return result;
    const HRESULT entered = WithMapper(mappers, EnterAsCaptureDevice);
    return FAILED(entered) ? entered : S_OK;
}

HRESULT UnregisterModule(IVxFilterMapperFactory& mappers)
{
    const HRESULT left = WithMapper(mappers, LeaveCaptureDevices);
    if (FAILED(left))
        return left;
    const HRESULT result = AMovieDllRegisterServer2(FALSE, mappers);
    return FAILED(result) ? result : S_OK;
}

} // namespace vxds
