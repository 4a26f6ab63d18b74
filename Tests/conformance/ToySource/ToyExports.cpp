#include <streams.h>

#include "ToyIdentifiers.h"
#include "ToyPage.h"
#include "ToySource.h"

const AMOVIESETUP_MEDIATYPE sudTypes[] = {{&MEDIATYPE_Video, &MEDIASUBTYPE_NULL}};

WCHAR g_szPinName[] = L"Toy output";

const AMOVIESETUP_PIN sudPins[] = {{
    g_szPinName, // name
    FALSE,       // is not rendered
    TRUE,        // is an output
    FALSE,       // there is always one
    FALSE,       // and never more
    &CLSID_NULL, // connects to no filter in particular
    NULL,        // nor to a pin
    NUMELMS(sudTypes),
    sudTypes,
}};

const AMOVIESETUP_FILTER sudFilter = {&CLSID_ToySource, L"Toy source", MERIT_DO_NOT_USE, NUMELMS(sudPins),
                                      sudPins};

CFactoryTemplate g_Templates[] = {
    {L"Toy source", &CLSID_ToySource, CToySource::CreateInstance, NULL, &sudFilter},
    {L"Toy page", &CLSID_ToyPage, CToyPage::CreateInstance, NULL, NULL},
};
int g_cTemplates = NUMELMS(g_Templates);

namespace {

/// Enters the filter into the video input category, or removes it.
HRESULT UpdateCategory(BOOL bRegister)
{
    CoInitialize(NULL);
    IFilterMapper2* pMapper = NULL;
    HRESULT hr = CoCreateInstance(CLSID_FilterMapper2, NULL, CLSCTX_INPROC_SERVER, IID_IFilterMapper2,
                                  reinterpret_cast<void**>(&pMapper));
    if (SUCCEEDED(hr)) {
        if (bRegister) {
            REGFILTER2 rf2 = {};
            rf2.dwVersion = 1;
            rf2.dwMerit = MERIT_DO_NOT_USE;
            rf2.cPins = NUMELMS(sudPins);
            rf2.rgPins = sudPins;
            hr = pMapper->RegisterFilter(CLSID_ToySource, L"Toy source", NULL,
                                         &CLSID_VideoInputDeviceCategory, NULL, &rf2);
        } else {
            hr = pMapper->UnregisterFilter(&CLSID_VideoInputDeviceCategory, NULL, CLSID_ToySource);
        }
        pMapper->Release();
    }
    CoFreeUnusedLibraries();
    CoUninitialize();
    return hr;
}

} // namespace

STDAPI DllRegisterServer()
{
    HRESULT hr = AMovieDllRegisterServer2(TRUE);
    return FAILED(hr) ? hr : UpdateCategory(TRUE);
}

STDAPI DllUnregisterServer()
{
    HRESULT hr = UpdateCategory(FALSE);
    return FAILED(hr) ? hr : AMovieDllRegisterServer2(FALSE);
}

extern "C" BOOL WINAPI DllEntryPoint(HINSTANCE, ULONG, LPVOID);

BOOL APIENTRY DllMain(HANDLE hModule, DWORD dwReason, LPVOID lpReserved)
{
    return DllEntryPoint(static_cast<HINSTANCE>(hModule), dwReason, lpReserved);
}
