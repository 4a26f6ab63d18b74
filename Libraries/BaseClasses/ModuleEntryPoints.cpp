#include "BaseClasses/ModuleEntryPoints.h"

#include "BaseClasses/CClassFactory.h"
#include "BaseClasses/CFactoryTemplate.h"
#include "VxBase/VxProcessEnd.h"
#include "VxBase/VxRunningThread.h"

#include <algorithm>
#include <new>
#include <span>

namespace {

std::span<const CFactoryTemplate> Classes()
{
    return {g_Templates, static_cast<std::size_t>(g_cTemplates)};
}

void TellClasses(BOOL loading)
{
    for (const CFactoryTemplate& row : Classes()) {
        if (row.m_lpfnInit != nullptr)
            row.m_lpfnInit(loading, row.m_ClsID);
    }
}

} // namespace

STDAPI DllGetClassObject(REFCLSID clsid, REFIID riid, void** object)
{
    if (object == nullptr)
        return E_POINTER;
    *object = nullptr;
    if (riid != IID_IUnknown && riid != IID_IClassFactory)
        return E_NOINTERFACE;

    const auto classes = Classes();
    const auto row = std::find_if(classes.begin(), classes.end(), [&](const CFactoryTemplate& candidate) {
        return candidate.IsClassID(clsid);
    });
    if (row == classes.end())
        return CLASS_E_CLASSNOTAVAILABLE;

    auto* const factory = new (std::nothrow) CClassFactory(&*row);
    if (factory == nullptr)
        return E_OUTOFMEMORY;
    factory->AddRef();
    *object = static_cast<IClassFactory*>(factory);
    return S_OK;
}

STDAPI DllCanUnloadNow()
{
    const bool isUsed =
        CClassFactory::IsLocked() || CBaseObject::ObjectsActive() > 0 || VxRunningThread::Count() > 0;
    return isUsed ? S_FALSE : S_OK;
}

// Runs under the loader's lock: no COM, no threads, no other modules.
extern "C" BOOL WINAPI DllEntryPoint(HINSTANCE instance, ULONG reason, LPVOID reserved)
{
    switch (reason) {
    case DLL_PROCESS_ATTACH:
        // Refused for a module with thread-local data, which a statically linked one may have: harmless.
        ::DisableThreadLibraryCalls(instance);
        g_osInfo.dwOSVersionInfoSize = sizeof(g_osInfo);
        if (::GetVersionExW(&g_osInfo))
            g_amPlatform = g_osInfo.dwPlatformId;
        g_hInst = instance;
        TellClasses(TRUE);
        break;
    case DLL_PROCESS_DETACH:
        if (reserved != nullptr) // not unloaded: the process ends
            VxProcessEnd::Begin();
        TellClasses(FALSE);
        break;
    default:
        break;
    }
    return TRUE;
}
