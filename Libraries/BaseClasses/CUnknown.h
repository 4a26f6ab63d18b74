#pragma once

#include "BaseClasses/CBaseObject.h"
#include "BaseClasses/INonDelegatingUnknown.h"

/// Base of every COM object here: reference count, interface lookup, aggregation.
///
/// The count starts at 0 and stays there during construction: whoever creates the object takes the first
/// reference (CClassFactory does). So a constructor must hand neither the object nor one of its pins to
/// anything that takes and gives back a reference: that would end the half-built object.
///
/// Owner:  its references.
/// Thread: any; the count is interlocked.
class CUnknown : public INonDelegatingUnknown, public CBaseObject {
public:
    /// @param outer  aggregating object, borrowed: it outlives what it aggregates; null = none
    CUnknown(LPCTSTR objectName, LPUNKNOWN outer);
    CUnknown(LPCSTR objectName, LPUNKNOWN outer);
    /// @param phr  never touched
    CUnknown(LPCTSTR objectName, LPUNKNOWN outer, HRESULT* phr);
    CUnknown(LPCSTR objectName, LPUNKNOWN outer, HRESULT* phr);
    virtual ~CUnknown();

    /// @return  the outer object, or this object's own table; without a reference
    LPUNKNOWN GetOwner() const { return m_pUnknown; }

    /// IUnknown only: the own table, with a reference. Everything else: null and E_NOINTERFACE.
    STDMETHODIMP NonDelegatingQueryInterface(REFIID riid, void** object) override;
    STDMETHODIMP_(ULONG) NonDelegatingAddRef() override;
    /// At 0 the count goes back to 1, so that pairs of AddRef and Release in the destructor do not delete
    /// again.
    STDMETHODIMP_(ULONG) NonDelegatingRelease() override;

protected:
    volatile LONG m_cRef = 0; // interlocked

private:
    const LPUNKNOWN m_pUnknown; // borrowed
};

/// Answers a QueryInterface: stores the pointer, with a reference.
/// @param pUnk  already of the type asked for: void** keeps none
/// @return  S_OK; E_POINTER when ppv is null
STDMETHODIMP GetInterface(LPUNKNOWN pUnk, void** ppv);

/// @return  TRUE when both pointers belong to the same COM object
BOOL WINAPI IsEqualObject(IUnknown* first, IUnknown* second);

/// The three methods of IUnknown for a class that carries interfaces: to the outer object, or to itself.
/// To be written once in each class that adds an interface.
#define DECLARE_IUNKNOWN                                                                                     \
    STDMETHODIMP QueryInterface(REFIID riid, void** ppv)                                                     \
    {                                                                                                        \
        return GetOwner()->QueryInterface(riid, ppv);                                                        \
    }                                                                                                        \
    STDMETHODIMP_(ULONG) AddRef()                                                                            \
    {                                                                                                        \
        return GetOwner()->AddRef();                                                                         \
    }                                                                                                        \
    STDMETHODIMP_(ULONG) Release()                                                                           \
    {                                                                                                        \
        return GetOwner()->Release();                                                                        \
    }
