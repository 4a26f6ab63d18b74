#pragma once

#include "BaseClasses/CBaseFilter.h"
#include "BaseClasses/CMediaType.h"

/// A pin: connection, agreement on a media type. Its references count on the filter, its identity is its own.
///
/// Lock: m_pLock, the filter's state lock.
///
/// Owner:  the filter.
/// Thread: any.
class CBasePin : public CUnknown, public IPin, public IQualityControl {
public:
    DECLARE_IUNKNOWN

    /// @param filter  borrowed: it owns the pin. May be half-built: it is only stored.
    /// @param phr     never touched
    CBasePin(LPCTSTR objectName, CBaseFilter* filter, CCritSec* lock, HRESULT* phr, LPCWSTR name,
             PIN_DIRECTION direction);
    CBasePin(LPCSTR objectName, CBaseFilter* filter, CCritSec* lock, HRESULT* phr, LPCWSTR name,
             PIN_DIRECTION direction);
    /// The pin must not be connected.
    ~CBasePin() override;

    STDMETHODIMP NonDelegatingQueryInterface(REFIID riid, void** object) override;
    STDMETHODIMP_(ULONG) NonDelegatingAddRef() override;
    STDMETHODIMP_(ULONG) NonDelegatingRelease() override;

    // IPin
    STDMETHODIMP Connect(IPin* peer, const AM_MEDIA_TYPE* type) override;
    STDMETHODIMP ReceiveConnection(IPin* connector, const AM_MEDIA_TYPE* type) override;
    STDMETHODIMP Disconnect() override;
    STDMETHODIMP ConnectedTo(IPin** peer) override;
    STDMETHODIMP ConnectionMediaType(AM_MEDIA_TYPE* type) override;
    STDMETHODIMP QueryPinInfo(PIN_INFO* info) override;
    STDMETHODIMP QueryDirection(PIN_DIRECTION* direction) override;
    STDMETHODIMP QueryId(LPWSTR* id) override;
    STDMETHODIMP QueryAccept(const AM_MEDIA_TYPE* type) override;
    STDMETHODIMP EnumMediaTypes(IEnumMediaTypes** enumerator) override;
    STDMETHODIMP QueryInternalConnections(IPin** pins, ULONG* count) override;
    STDMETHODIMP EndOfStream() override;
    STDMETHODIMP NewSegment(REFERENCE_TIME start, REFERENCE_TIME stop, double rate) override;

    // IQualityControl
    /// E_NOTIMPL: a pin that can adapt overrides it.
    STDMETHODIMP Notify(IBaseFilter* sender, Quality quality) override;
    STDMETHODIMP SetSink(IQualityControl* sink) override;

    BOOL IsConnected() { return m_Connected != nullptr; }
    /// @return  the peer, without a reference
    IPin* GetConnected() { return m_Connected; }
    /// Whether the filter is stopped; no lock.
    BOOL IsStopped() { return m_pFilter->IsStopped(); }
    LPWSTR Name() { return m_pName; }

    REFERENCE_TIME CurrentStartTime() { return m_tStart; }
    REFERENCE_TIME CurrentStopTime() { return m_tStop; }
    double CurrentRate() { return m_dRate; }

    void SetReconnectWhenActive(bool canReconnect) { m_bCanReconnectWhenActive = canReconnect; }
    bool CanReconnectWhenActive() { return m_bCanReconnectWhenActive; }

    /// Raised whenever the list of types changes, so that enumerators notice.
    virtual LONG GetMediaTypeVersion();
    void IncrementTypeVersion();

    /// Whether the pin takes a type. Only exactly S_OK means yes. Types come from strangers: the block may be
    /// missing or too short.
    virtual HRESULT CheckMediaType(const CMediaType* type) = 0;
    /// Makes a type the pin's own.
    virtual HRESULT SetMediaType(const CMediaType* type);
    /// Refuses a peer of the same direction (VFW_E_INVALID_DIRECTION).
    virtual HRESULT CheckConnect(IPin* peer);
    /// Undoes CheckConnect and CompleteConnect.
    virtual HRESULT BreakConnect();
    /// Last step of a connection. Must return S_OK or a failure: any other success leaves the pin connected
    /// while the search for a type goes on.
    virtual HRESULT CompleteConnect(IPin* peer);
    /// Type number position, from 0, in order of preference.
    /// @return  S_OK, or VFW_S_NO_MORE_ITEMS (any other code ends the list as well)
    virtual HRESULT GetMediaType(int position, CMediaType* type);

    /// The filter leaves Stopped, runs, or goes back to Stopped. The state lock is held.
    virtual HRESULT Active();
    virtual HRESULT Run(REFERENCE_TIME start);
    virtual HRESULT Inactive();

protected:
    /// Disconnect without the test of the filter's state. The lock is held.
    HRESULT DisconnectInternal();
    /// Finds a type and connects. The lock is held.
    HRESULT AgreeMediaType(IPin* peer, const CMediaType* type);
    /// Connects with the first type of a list that works.
    HRESULT TryMediaTypes(IPin* peer, const CMediaType* type, IEnumMediaTypes* enumerator);
    /// Connects with one type. The lock is held.
    HRESULT AttemptConnection(IPin* peer, const CMediaType* type);

    WCHAR* m_pName = nullptr;    // owned (new[]); null when there was no memory for it
    IPin* m_Connected = nullptr; // held
    PIN_DIRECTION m_dir;
    CCritSec* m_pLock; // borrowed: the filter's state lock
    bool m_bRunTimeError = false;
    bool m_bCanReconnectWhenActive = false;
    bool m_bTryMyTypesFirst = false;
    CBaseFilter* m_pFilter;              // borrowed: it owns the pin
    IQualityControl* m_pQSink = nullptr; // borrowed, as the interface says
    LONG m_TypeVersion = 1;              // interlocked
    CMediaType m_mt;                     // type of the connection; kept after it ends
    REFERENCE_TIME m_tStart = 0;
    REFERENCE_TIME m_tStop = MAX_TIME;
    double m_dRate = 1.0;

private:
    HRESULT ConnectTo(IPin* peer, const CMediaType* type);
    HRESULT AcceptConnection(IPin* connector, const CMediaType* type);
    HRESULT TryListOf(IPin* owner, IPin* peer, const CMediaType* type);
    void LetGoOfPeer();
};
