#pragma once

#include "BaseClasses/CAutoLock.h"
#include "BaseClasses/CBaseFilter.h"

class CSourceStream;

/// A filter whose pins are all source streams, each with a thread of its own.
///
/// A pin adds itself to the filter in its constructor and leaves in its destructor. The id of pin n is n,
/// from 1.
///
/// Owner:  its references. Destroys its pins.
/// Thread: any; the state lock guards the pins.
class CSource : public CBaseFilter {
public:
    CSource(LPCTSTR objectName, LPUNKNOWN outer, CLSID clsid);
    CSource(LPCSTR objectName, LPUNKNOWN outer, CLSID clsid);
    /// @param phr  never touched
    CSource(LPCTSTR objectName, LPUNKNOWN outer, CLSID clsid, HRESULT* phr);
    CSource(LPCSTR objectName, LPUNKNOWN outer, CLSID clsid, HRESULT* phr);
    /// Destroys the pins, the last one first.
    ~CSource() override;

    int GetPinCount() override;
    CBasePin* GetPin(int n) override;

    CCritSec* pStateLock() { return &m_cStateLock; }

    /// Puts a pin at the end of a new, longer array; the old array is deleted.
    HRESULT AddPin(CSourceStream* stream);
    /// @return  S_OK; S_FALSE when the pin is not there
    HRESULT RemovePin(CSourceStream* stream);

    STDMETHODIMP FindPin(LPCWSTR id, IPin** pin) override;
    /// @return  number of a pin, from 0; -1 when it is not there
    int FindPinNumber(IPin* pin);

protected:
    int m_iPins = 0;
    CSourceStream** m_paStreams = nullptr; // owned (new[]), the pins in it as well
    CCritSec m_cStateLock;                 // the filter's and its pins' lock
};
