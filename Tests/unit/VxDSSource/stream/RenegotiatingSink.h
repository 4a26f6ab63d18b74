#pragma once

#include "BaseClasses/CMediaType.h"
#include "support/directshow/SinkPin.h"

#include <atomic>
#include <functional>
#include <vector>

/// A sink that takes another type while it is connected, as a renderer with an allocator of its own does.
///
/// Owner:  the test.
/// Thread: see SinkPin.
class RenegotiatingSink final : public TestObject<IPin, IMemInputPin> {
public:
    /// @param filter  the filter that has the pin, borrowed; none where nobody asks for it
    explicit RenegotiatingSink(IBaseFilter* filter = nullptr) : inner(filter) {}

    SinkPin inner;                        ///< answers everything else
    std::atomic<bool> isActive = false;   ///< its filter is not stopped, so that nothing disconnects it
    HRESULT renegotiating = S_OK;         ///< answer to another type while connected
    std::function<void()> onRenegotiate;  ///< called before that answer
    std::vector<CMediaType> renegotiated; ///< types offered while connected

    // IPin
    STDMETHODIMP Connect(IPin* peer, const AM_MEDIA_TYPE* type) override { return inner.Connect(peer, type); }
    STDMETHODIMP ReceiveConnection(IPin* connector, const AM_MEDIA_TYPE* type) override
    {
        if (inner.Connected() == nullptr)
            return inner.ReceiveConnection(connector, type);
        renegotiated.emplace_back(*type);
        if (onRenegotiate)
            onRenegotiate();
        return renegotiating;
    }
    STDMETHODIMP Disconnect() override { return isActive ? VFW_E_NOT_STOPPED : inner.Disconnect(); }
    STDMETHODIMP ConnectedTo(IPin** peer) override { return inner.ConnectedTo(peer); }
    STDMETHODIMP ConnectionMediaType(AM_MEDIA_TYPE* type) override { return inner.ConnectionMediaType(type); }
    STDMETHODIMP QueryPinInfo(PIN_INFO* info) override { return inner.QueryPinInfo(info); }
    STDMETHODIMP QueryDirection(PIN_DIRECTION* direction) override { return inner.QueryDirection(direction); }
    STDMETHODIMP QueryId(LPWSTR* id) override { return inner.QueryId(id); }
    STDMETHODIMP QueryAccept(const AM_MEDIA_TYPE* type) override { return inner.QueryAccept(type); }
    STDMETHODIMP EnumMediaTypes(IEnumMediaTypes** types) override { return inner.EnumMediaTypes(types); }
    STDMETHODIMP QueryInternalConnections(IPin**, ULONG*) override { return E_NOTIMPL; }
    STDMETHODIMP EndOfStream() override { return inner.EndOfStream(); }
    STDMETHODIMP BeginFlush() override { return inner.BeginFlush(); }
    STDMETHODIMP EndFlush() override { return inner.EndFlush(); }
    STDMETHODIMP NewSegment(REFERENCE_TIME start, REFERENCE_TIME stop, double rate) override
    {
        return inner.NewSegment(start, stop, rate);
    }

    // IMemInputPin
    STDMETHODIMP GetAllocator(IMemAllocator** allocator) override { return inner.GetAllocator(allocator); }
    STDMETHODIMP NotifyAllocator(IMemAllocator* allocator, BOOL readOnly) override
    {
        return inner.NotifyAllocator(allocator, readOnly);
    }
    STDMETHODIMP GetAllocatorRequirements(ALLOCATOR_PROPERTIES* properties) override
    {
        return inner.GetAllocatorRequirements(properties);
    }
    STDMETHODIMP Receive(IMediaSample* sample) override { return inner.Receive(sample); }
    STDMETHODIMP ReceiveMultiple(IMediaSample** samples, long count, long* processed) override
    {
        return inner.ReceiveMultiple(samples, count, processed);
    }
    STDMETHODIMP ReceiveCanBlock() override { return S_OK; }
};
