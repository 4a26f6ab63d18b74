#include "BaseClasses/ModuleRegistration.h"

#include "BaseClasses/ModuleGlobals.h"
#include "BaseClasses/ServerRegistration.h"
#include "BaseClasses/VxFilterMapperFactory.h"

STDAPI AMovieDllRegisterServer2(BOOL registering)
{
    VxFilterMapperFactory mappers;
    return AMovieDllRegisterServer2(registering, mappers);
}

HRESULT AMovieDllRegisterServer2(BOOL registering, IVxFilterMapperFactory& mappers)
{
    const VxServerRegistration registration = {
        {g_Templates, static_cast<std::size_t>(g_cTemplates)}, g_hInst, HKEY_CLASSES_ROOT, mappers};
    return registering ? VxRegisterServer(registration) : VxUnregisterServer(registration);
}
