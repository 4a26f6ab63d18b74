#include "BaseClasses/CBaseObject.h"

namespace {

volatile LONG g_objectsActive = 0; // interlocked

} // namespace

CBaseObject::CBaseObject(LPCTSTR /*objectName*/)
{
    ::InterlockedIncrement(&g_objectsActive);
}

CBaseObject::CBaseObject(LPCSTR /*objectName*/)
{
    ::InterlockedIncrement(&g_objectsActive);
}

CBaseObject::~CBaseObject()
{
    ::InterlockedDecrement(&g_objectsActive);
}

LONG CBaseObject::ObjectsActive()
{
    return g_objectsActive;
}
