#pragma once

#include "BaseClasses/CBaseObject.h"

#include <strmif.h>

class CBasePin;

/// Enumerates a pin's media types, each as a structure of its own in task memory.
///
/// Owner:  its references; holds the pin, hence the filter.
/// Thread: any one at a time; takes no lock.
class CEnumMediaTypes : public IEnumMediaTypes, public CBaseObject {
public:
    /// @param pin       of which a reference is held
    /// @param copyFrom  another enumerator whose place is taken over; null = from the start
    CEnumMediaTypes(CBasePin* pin, CEnumMediaTypes* copyFrom);
    virtual ~CEnumMediaTypes();

    // IUnknown
    STDMETHODIMP QueryInterface(REFIID riid, void** object) override;
    STDMETHODIMP_(ULONG) AddRef() override;
    STDMETHODIMP_(ULONG) Release() override;

    // IEnumMediaTypes
    STDMETHODIMP Next(ULONG count, AM_MEDIA_TYPE** types, ULONG* fetched) override;
    STDMETHODIMP Skip(ULONG count) override;
    STDMETHODIMP Reset() override;
    STDMETHODIMP Clone(IEnumMediaTypes** copy) override;

private:
    bool IsOutOfSync() const;
    void Advance(ULONG count);

    LONG m_cRef = 1;    // interlocked
    CBasePin* m_pPin;   // held
    LONG m_Version = 0; // of the pin's list, when the enumeration began
    int m_Position = 0;
};
