#include "BaseClasses/CClassFactory.h"

#include "BaseClasses/AtComEdge.h"

namespace {

volatile LONG g_serverLocks = 0; // interlocked: LockServer may come from any thread

} // namespace

CClassFactory::CClassFactory(const CFactoryTemplate* row)
    : CBaseObject(NAME("class factory")), m_pTemplate(row)
{
}

CClassFactory::~CClassFactory() = default;

STDMETHODIMP CClassFactory::QueryInterface(REFIID riid, void** object)
{
    if (object == nullptr)
        return E_POINTER;
    if (riid == IID_IUnknown || riid == IID_IClassFactory) {
        AddRef();
        *object = static_cast<IClassFactory*>(this);
        return S_OK;
    }
    *object = nullptr;
    return E_NOINTERFACE;
}

STDMETHODIMP_(ULONG) CClassFactory::AddRef()
{
    return static_cast<ULONG>(::InterlockedIncrement(&m_cRef));
}

STDMETHODIMP_(ULONG) CClassFactory::Release()
{
    const LONG count = ::InterlockedDecrement(&m_cRef);
    if (count == 0)
        delete this;
    return static_cast<ULONG>(count);
}

STDMETHODIMP CClassFactory::CreateInstance(LPUNKNOWN outer, REFIID riid, void** object)
{
    if (object == nullptr)
        return E_POINTER;
    *object = nullptr;
    if (outer != nullptr && riid != IID_IUnknown)
        return E_NOINTERFACE;

    CUnknown* created = nullptr;
    HRESULT hr = S_OK;
    const HRESULT thrown = AtComEdge([&]() -> HRESULT {
        created = m_pTemplate->CreateInstance(outer, &hr);
        return S_OK;
    });
    if (FAILED(thrown))
        return thrown;
    if (created == nullptr)
        return FAILED(hr) ? hr : E_OUTOFMEMORY;
    if (FAILED(hr)) {
        delete created;
        return hr;
    }

    created->NonDelegatingAddRef();
    hr = created->NonDelegatingQueryInterface(riid, object);
    created->NonDelegatingRelease(); // ends the object when it does not have the interface
    return hr;
}

STDMETHODIMP CClassFactory::LockServer(BOOL lock)
{
    if (lock)
        ::InterlockedIncrement(&g_serverLocks);
    else
        ::InterlockedDecrement(&g_serverLocks);
    return S_OK;
}

bool CClassFactory::IsLocked()
{
    return g_serverLocks > 0;
}
