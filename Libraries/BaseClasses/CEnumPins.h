#pragma once

#include "BaseClasses/CBaseObject.h"

#include <strmif.h>

#include <vector>

class CBaseFilter;
class CBasePin;

/// Enumerates a filter's pins. A change of the pins between two calls of Next is taken up without returning a
/// pin twice; Skip and Clone report it.
///
/// Owner:  its references; holds the filter.
/// Thread: any one at a time; takes no lock.
class CEnumPins : public IEnumPins, public CBaseObject {
public:
    /// @param filter    of which a reference is held
    /// @param copyFrom  another enumerator whose place is taken over; null = from the start
    CEnumPins(CBaseFilter* filter, CEnumPins* copyFrom);
    virtual ~CEnumPins();

    // IUnknown
    STDMETHODIMP QueryInterface(REFIID riid, void** object) override;
    STDMETHODIMP_(ULONG) AddRef() override;
    STDMETHODIMP_(ULONG) Release() override;

    // IEnumPins
    STDMETHODIMP Next(ULONG count, IPin** pins, ULONG* fetched) override;
    STDMETHODIMP Skip(ULONG count) override;
    STDMETHODIMP Reset() override;
    STDMETHODIMP Clone(IEnumPins** copy) override;

private:
    bool IsOutOfSync() const;
    void Restart();
    HRESULT Fetch(ULONG count, IPin** pins, ULONG& fetched);

    LONG m_cRef = 1;        // interlocked
    CBaseFilter* m_pFilter; // held
    LONG m_Version = 0;     // of the filter's pins, when they were counted
    int m_PinCount = 0;
    int m_Position = 0;
    std::vector<CBasePin*> m_Returned; // already returned; borrowed: the filter is held, only compared
};
