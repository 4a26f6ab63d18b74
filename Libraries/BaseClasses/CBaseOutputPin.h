#pragma once

#include "BaseClasses/CBasePin.h"

/// An output pin: agrees with its peer on an allocator, and delivers samples.
///
/// Owner:  the filter.
/// Thread: any; samples are delivered by one thread at a time.
class CBaseOutputPin : public CBasePin {
public:
    CBaseOutputPin(LPCTSTR objectName, CBaseFilter* filter, CCritSec* lock, HRESULT* phr, LPCWSTR name);
    CBaseOutputPin(LPCSTR objectName, CBaseFilter* filter, CCritSec* lock, HRESULT* phr, LPCWSTR name);
    ~CBaseOutputPin() override;

    /// Also asks the peer for IMemInputPin.
    HRESULT CheckConnect(IPin* peer) override;
    HRESULT CompleteConnect(IPin* peer) override;
    /// A failure of the allocator's Decommit is returned, and the pin keeps what it holds.
    HRESULT BreakConnect() override;

    HRESULT Active() override;
    HRESULT Inactive() override;

    // IPin, of use on input pins only: E_UNEXPECTED.
    STDMETHODIMP EndOfStream() override;
    STDMETHODIMP BeginFlush() override;
    STDMETHODIMP EndFlush() override;

    /// The peer's allocator if both can use it, else one of our own. The samples are never read-only.
    /// @param allocator  receives it, with a reference
    virtual HRESULT DecideAllocator(IMemInputPin* peer, IMemAllocator** allocator);
    /// Sets count and size of the allocator's buffers and checks what came of it.
    /// @param wanted  what the peer asked for; its alignment is at least 1
    virtual HRESULT DecideBufferSize(IMemAllocator* allocator, ALLOCATOR_PROPERTIES* wanted) = 0;
    /// Creates an allocator of our own.
    virtual HRESULT InitAllocator(IMemAllocator** allocator);

    /// Waits for an empty sample; fails when the allocator is decommitted meanwhile.
    virtual HRESULT GetDeliveryBuffer(IMediaSample** sample, REFERENCE_TIME* start, REFERENCE_TIME* stop,
                                      DWORD flags);
    /// Hands a sample to the peer. The caller keeps its reference.
    virtual HRESULT Deliver(IMediaSample* sample);

    // The stream's events, to the peer: VFW_E_NOT_CONNECTED without one.
    virtual HRESULT DeliverEndOfStream();
    virtual HRESULT DeliverBeginFlush();
    virtual HRESULT DeliverEndFlush();
    virtual HRESULT DeliverNewSegment(REFERENCE_TIME start, REFERENCE_TIME stop, double rate);

protected:
    IMemAllocator* m_pAllocator = nullptr; // held while connected
    IMemInputPin* m_pInputPin = nullptr;   // held while connected

private:
    HRESULT UseAllocator(IMemInputPin* peer, IMemAllocator* allocator, ALLOCATOR_PROPERTIES* properties);
};
