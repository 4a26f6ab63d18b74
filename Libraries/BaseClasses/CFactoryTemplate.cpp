#include "BaseClasses/CFactoryTemplate.h"

BOOL CFactoryTemplate::IsClassID(REFCLSID clsid) const
{
    return *m_ClsID == clsid;
}

CUnknown* CFactoryTemplate::CreateInstance(LPUNKNOWN outer, HRESULT* phr) const
{
    return phr != nullptr ? m_lpfnNew(outer, phr) : nullptr;
}
