#pragma once

#include "BaseClasses/CBaseObject.h"
#include "BaseClasses/CFactoryTemplate.h"

/// Creates the objects of one row of the module's table.
///
/// The count starts at 0: DllGetClassObject takes the first reference.
///
/// Owner:  its references.
/// Thread: any.
class CClassFactory final : public IClassFactory, public CBaseObject {
public:
    /// @param row  borrowed: static data of the module
    explicit CClassFactory(const CFactoryTemplate* row);
    virtual ~CClassFactory();

    // IUnknown
    STDMETHODIMP QueryInterface(REFIID riid, void** object) override;
    STDMETHODIMP_(ULONG) AddRef() override;
    STDMETHODIMP_(ULONG) Release() override;

    // IClassFactory
    STDMETHODIMP CreateInstance(LPUNKNOWN outer, REFIID riid, void** object) override;
    STDMETHODIMP LockServer(BOOL lock) override;

    /// @return  whether a client keeps the module loaded
    static bool IsLocked();

private:
    const CFactoryTemplate* const m_pTemplate;
    LONG m_cRef = 0; // interlocked
};
