#pragma once

#include "BaseClasses/CCritSec.h"
#include "BaseClasses/CRefTime.h"
#include "BaseClasses/CUnknown.h"
#include "BaseClasses/MovieSetup.h"

class CBasePin;

/// A filter: state, clock, graph, name. The derived class has the pins.
///
/// There is no transition that takes time: Pause returns with the pins active, and GetState never waits.
///
/// Beyond the platform's contract: the clock has a small lock of its own, so GetSyncSource and StreamTime do
/// not take the filter's state lock. A worker thread may therefore ask for the clock while a Stop that waits
/// for that worker holds the state lock.
///
/// Owner:  its references.
/// Thread: any. Lock order: state lock (m_pLock), then the clock's.
class CBaseFilter : public CUnknown, public IBaseFilter, public IAMovieSetup {
public:
    DECLARE_IUNKNOWN

    /// @param lock  the state lock, borrowed from the derived class; neither constructor nor destructor uses
    ///              it, because it is built later and destroyed earlier
    CBaseFilter(LPCTSTR objectName, LPUNKNOWN outer, CCritSec* lock, REFCLSID clsid);
    CBaseFilter(LPCSTR objectName, LPUNKNOWN outer, CCritSec* lock, REFCLSID clsid);
    /// @param phr  never touched
    CBaseFilter(LPCTSTR objectName, LPUNKNOWN outer, CCritSec* lock, REFCLSID clsid, HRESULT* phr);
    CBaseFilter(LPCSTR objectName, LPUNKNOWN outer, CCritSec* lock, REFCLSID clsid, HRESULT* phr);
    ~CBaseFilter() override;

    STDMETHODIMP NonDelegatingQueryInterface(REFIID riid, void** object) override;

    // IPersist
    STDMETHODIMP GetClassID(CLSID* clsid) override;

    // IMediaFilter
    STDMETHODIMP GetState(DWORD timeoutMs, FILTER_STATE* state) override;
    STDMETHODIMP SetSyncSource(IReferenceClock* clock) override;
    STDMETHODIMP GetSyncSource(IReferenceClock** clock) override;
    /// Makes every connected pin inactive; the first failure is returned, and the filter is stopped all the
    /// same.
    STDMETHODIMP Stop() override;
    /// From Stopped: makes every connected pin active; the first failure ends it and the filter stays
    /// stopped.
    STDMETHODIMP Pause() override;
    STDMETHODIMP Run(REFERENCE_TIME start) override;

    // IBaseFilter
    STDMETHODIMP EnumPins(IEnumPins** enumerator) override;
    STDMETHODIMP FindPin(LPCWSTR id, IPin** pin) override;
    STDMETHODIMP QueryFilterInfo(FILTER_INFO* info) override;
    STDMETHODIMP JoinFilterGraph(IFilterGraph* graph, LPCWSTR name) override;
    STDMETHODIMP QueryVendorInfo(LPWSTR* info) override;

    // IAMovieSetup
    STDMETHODIMP Register() override;
    STDMETHODIMP Unregister() override;

    /// Time since Run, by the filter's clock; VFW_E_NO_CLOCK without one.
    virtual HRESULT StreamTime(CRefTime& streamTime);

    BOOL IsActive();
    BOOL IsStopped();

    /// Number of pins.
    virtual int GetPinCount() = 0;
    /// @return  pin n, from 0, without a reference; null past the last
    virtual CBasePin* GetPin(int n) = 0;

    /// Raised whenever pins come or go, so that enumerators notice.
    virtual LONG GetPinVersion();
    void IncrementPinVersion();

    /// Sends an event to the graph; for EC_COMPLETE the second parameter becomes this filter.
    /// @return  E_NOTIMPL without a graph that takes events
    HRESULT NotifyEvent(long eventCode, LONG_PTR param1, LONG_PTR param2);

    /// Asks the graph to break and make a pin's connection again.
    /// @param type  to be used for it; null = whatever both agree on
    /// @return  E_NOINTERFACE without a graph
    HRESULT ReconnectPin(IPin* pin, const AM_MEDIA_TYPE* type);

    /// @return  the graph, without a reference; null when the filter is in none
    IFilterGraph* GetFilterGraph() { return m_pGraph; }

    /// @return  what IAMovieSetup registers; null = nothing
    virtual LPAMOVIESETUP_FILTER GetSetupData();

protected:
    friend class CBasePin;

    FILTER_STATE m_State = State_Stopped; // written under m_pLock
    IReferenceClock* m_pClock = nullptr;  // held; written under m_pLock and m_ClockLock
    CRefTime m_tStart;                    // clock time at which stream time is 0; as m_pClock
    CLSID m_clsid;
    CCritSec* m_pLock;                  // borrowed from the derived class
    WCHAR* m_pName = nullptr;           // owned (new[]); null = no name
    IFilterGraph* m_pGraph = nullptr;   // borrowed: the graph holds the filter, and says when it lets go
    IMediaEventSink* m_pSink = nullptr; // borrowed: part of m_pGraph
    LONG m_PinVersion = 1;              // interlocked

private:
    CCritSec m_ClockLock;
};
