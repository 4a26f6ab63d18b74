#include "BaseClasses/CUnknown.h"

#include "BaseClasses/VxComPtr.h"
#include "VxBase/VxProcessEnd.h"

#include <algorithm>

namespace {

/// The object's own table, in IUnknown's place. Never inlined: the compiler knows that no IUnknown stands
/// there, and must not draw conclusions from it.
[[gnu::noipa]] LPUNKNOWN AsUnknown(INonDelegatingUnknown* object)
{
    return reinterpret_cast<LPUNKNOWN>(object);
}

} // namespace

CUnknown::CUnknown(LPCTSTR objectName, LPUNKNOWN outer)
    : CBaseObject(objectName), m_pUnknown(outer != nullptr ? outer : AsUnknown(this))
{
}

CUnknown::CUnknown(LPCSTR objectName, LPUNKNOWN outer)
    : CBaseObject(objectName), m_pUnknown(outer != nullptr ? outer : AsUnknown(this))
{
}

CUnknown::CUnknown(LPCTSTR objectName, LPUNKNOWN outer, HRESULT* /*phr*/) : CUnknown(objectName, outer) {}

CUnknown::CUnknown(LPCSTR objectName, LPUNKNOWN outer, HRESULT* /*phr*/) : CUnknown(objectName, outer) {}

CUnknown::~CUnknown() = default;

STDMETHODIMP CUnknown::NonDelegatingQueryInterface(REFIID riid, void** object)
{
    if (object == nullptr)
        return E_POINTER;

    if (riid == IID_IUnknown)
        return GetInterface(AsUnknown(this), object);
    *object = nullptr;
    return E_NOINTERFACE;
}

STDMETHODIMP_(ULONG) CUnknown::NonDelegatingAddRef()
{
    const LONG count = ::InterlockedIncrement(&m_cRef);
    return static_cast<ULONG>(std::max<LONG>(count, 1));
}

STDMETHODIMP_(ULONG) CUnknown::NonDelegatingRelease()
{
    const LONG count = ::InterlockedDecrement(&m_cRef);
    if (count != 0)
        return static_cast<ULONG>(std::max<LONG>(count, 1));

    if (VxProcessEnd::HasBegun())
        return 0; // threads that shared the object may have been ended half-way: the system takes its memory

    m_cRef = 1;
    delete this;
    return 0;
}

STDMETHODIMP GetInterface(LPUNKNOWN pUnk, void** ppv)
{
    if (ppv == nullptr)
        return E_POINTER;

    *ppv = pUnk;
    pUnk->AddRef();
    return S_OK;
}

BOOL WINAPI IsEqualObject(IUnknown* first, IUnknown* second)
{
    if (first == second)
        return TRUE;
    if (first == nullptr || second == nullptr)
        return FALSE;

    VxComPtr<IUnknown> firstIdentity;
    VxComPtr<IUnknown> secondIdentity;
    if (FAILED(first->QueryInterface(IID_IUnknown, firstIdentity.PutVoid())) ||
        FAILED(second->QueryInterface(IID_IUnknown, secondIdentity.PutVoid())))
        return FALSE;
    return firstIdentity.Get() == secondIdentity.Get();
}
