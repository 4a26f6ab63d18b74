// What the module shows to the world: its classes and its entry points. Nobody includes this file.

#include "BaseClasses/AtComEdge.h"
#include "BaseClasses/CFactoryTemplate.h"
#include "BaseClasses/ModuleEntryPoints.h"
#include "BaseClasses/VxFilterMapperFactory.h"
#include "VxDSSource/filter/Identifiers.h"
#include "VxDSSource/filter/Registration.h"
#include "VxDSSource/filter/VxDSSource.h"
#include "VxDSSource/pages/AboutPage.h"
#include "VxDSSource/pages/BrowserPage.h"
#include "VxDSSource/pages/ParametersPage.h"

CFactoryTemplate g_Templates[] = {
    {kFilterName, &CLSID_VxDSSource, VxDSSource::CreateInstance, nullptr, &vxds::kFilterSetup},
    {L"Vexa DirectShow Source Parameters", &CLSID_ParametersPage, pages::CreatePage<ParametersPage>},
    {L"Vexa DirectShow Source Browser", &CLSID_BrowserPage, pages::CreatePage<BrowserPage>},
    {L"Vexa DirectShow Source About", &CLSID_AboutPage, pages::CreatePage<AboutPage>},
};
int g_cTemplates = static_cast<int>(sizeof(g_Templates) / sizeof(g_Templates[0]));

extern "C" BOOL WINAPI DllMain(HINSTANCE instance, DWORD reason, LPVOID reserved)
{
    return DllEntryPoint(instance, reason, reserved);
}

STDAPI DllRegisterServer()
{
    return AtComEdge([] {
        VxFilterMapperFactory mappers;
        return vxds::RegisterModule(mappers);
    });
}

STDAPI DllUnregisterServer()
{
    return AtComEdge([] {
        VxFilterMapperFactory mappers;
        return vxds::UnregisterModule(mappers);
    });
}
