#pragma once

#include "BaseClasses/CMediaType.h"
#include "BaseClasses/VxComPtr.h"
#include "support/directshow/Gate.h"
#include "support/directshow/OfferedTypes.h"
#include "support/directshow/TestObject.h"

#include <strmif.h>
#include <vfwmsgs.h>

#include <functional>
#include <string>
#include <vector>

/// The pin at the other end of a connection: does what the test says, and records what is done to it.
///
/// Owner:  the test.
/// Thread: any; what it shall do is set before it is connected.
class SinkPin final : public TestObject<IPin, IMemInputPin> {
public:
    explicit SinkPin(IBaseFilter* filter = nullptr) : m_filter(filter) {}
    ~SinkPin() override { EXPECT_EQ(m_connected.Get(), nullptr) << "the sink's pin is still connected"; }

    // What it shall do.
    PIN_DIRECTION direction = PINDIR_INPUT;
    bool takesSamples = true; // has IMemInputPin
    std::vector<CMediaType> offers;
    HRESULT enumerating = S_OK;
    HRESULT resetting = S_OK;
    std::function<HRESULT(IPin*, const AM_MEDIA_TYPE*)> onReceiveConnection =
        [](IPin*, const AM_MEDIA_TYPE*) { return S_OK; };
    std::function<HRESULT(IMediaSample*)> onReceive = [](IMediaSample*) { return S_OK; };
    VxComPtr<IMemAllocator> allocator; // null = VFW_E_NO_ALLOCATOR
    ALLOCATOR_PROPERTIES requirements = {};
    HRESULT requiring = E_NOTIMPL;
    std::function<void()> onLastRelease; // called while the last holder lets go
    std::function<HRESULT(IMemAllocator*, BOOL)> onNotifyAllocator = [](IMemAllocator*, BOOL) {
        return S_OK;
    };

    // What was done to it.
    int disconnects = 0;
    Gate samples;
    Gate ends;
    std::vector<std::string> events; // flushes and segments, in order

    IPin* Connected() const { return m_connected.Get(); }

    // IPin
    STDMETHODIMP Connect(IPin* /*peer*/, const AM_MEDIA_TYPE* /*type*/) override { return E_UNEXPECTED; }
    STDMETHODIMP ReceiveConnection(IPin* connector, const AM_MEDIA_TYPE* type) override
    {
        if (m_connected)
            return VFW_E_ALREADY_CONNECTED;
        const HRESULT hr = onReceiveConnection(connector, type);
        if (SUCCEEDED(hr)) {
            m_connected = VxComPtr<IPin>(connector);
            m_type.Set(*type);
        }
        return hr;
    }
    STDMETHODIMP Disconnect() override
    {
        ++disconnects;
        if (!m_connected)
            return S_FALSE;
        m_connected.Reset();
        return S_OK;
    }
    STDMETHODIMP ConnectedTo(IPin** peer) override
    {
        *peer = VxComPtr<IPin>(m_connected).Detach();
        return *peer != nullptr ? S_OK : VFW_E_NOT_CONNECTED;
    }
    STDMETHODIMP ConnectionMediaType(AM_MEDIA_TYPE* type) override
    {
        return m_connected ? CopyMediaType(type, &m_type) : VFW_E_NOT_CONNECTED;
    }
    STDMETHODIMP QueryPinInfo(PIN_INFO* info) override
    {
        *info = PIN_INFO{VxComPtr<IBaseFilter>(m_filter).Detach(), direction, L"In"};
        return S_OK;
    }
    STDMETHODIMP QueryDirection(PIN_DIRECTION* result) override
    {
        *result = direction;
        return S_OK;
    }
    STDMETHODIMP QueryId(LPWSTR* /*id*/) override { return E_NOTIMPL; }
    STDMETHODIMP QueryAccept(const AM_MEDIA_TYPE* /*type*/) override { return S_OK; }
    STDMETHODIMP EnumMediaTypes(IEnumMediaTypes** enumerator) override
    {
        *enumerator = nullptr;
        if (FAILED(enumerating))
            return enumerating;
        *enumerator = new OfferedTypes(offers, resetting);
        (*enumerator)->AddRef();
        return S_OK;
    }
    STDMETHODIMP QueryInternalConnections(IPin** /*pins*/, ULONG* /*count*/) override { return E_NOTIMPL; }
    STDMETHODIMP EndOfStream() override
    {
        ends.Pass();
        return S_OK;
    }
    STDMETHODIMP BeginFlush() override
    {
        events.emplace_back("begin flush");
        return S_OK;
    }
    STDMETHODIMP EndFlush() override
    {
        events.emplace_back("end flush");
        return S_OK;
    }
    STDMETHODIMP NewSegment(REFERENCE_TIME /*start*/, REFERENCE_TIME /*stop*/, double /*rate*/) override
    {
        events.emplace_back("segment");
        return S_OK;
    }

    // IMemInputPin
    STDMETHODIMP GetAllocator(IMemAllocator** result) override
    {
        *result = VxComPtr<IMemAllocator>(allocator).Detach();
        return *result != nullptr ? S_OK : VFW_E_NO_ALLOCATOR;
    }
    STDMETHODIMP NotifyAllocator(IMemAllocator* result, BOOL readOnly) override
    {
        return onNotifyAllocator(result, readOnly);
    }
    STDMETHODIMP GetAllocatorRequirements(ALLOCATOR_PROPERTIES* properties) override
    {
        if (SUCCEEDED(requiring))
            *properties = requirements;
        return requiring;
    }
    STDMETHODIMP Receive(IMediaSample* sample) override
    {
        const HRESULT hr = onReceive(sample);
        samples.Pass();
        return hr;
    }
    STDMETHODIMP ReceiveMultiple(IMediaSample** received, long count, long* processed) override
    {
        for (*processed = 0; *processed < count; ++*processed) {
            const HRESULT hr = Receive(received[*processed]);
            if (hr != S_OK)
                return hr;
        }
        return S_OK;
    }
    STDMETHODIMP ReceiveCanBlock() override { return S_OK; }

private:
    void OnLastRelease() override
    {
        if (onLastRelease)
            onLastRelease();
    }
    bool Hides(REFIID riid) const override { return riid == IID_IMemInputPin && !takesSamples; }

    IBaseFilter* const m_filter; // borrowed: the filter that has the pin; null = none
    VxComPtr<IPin> m_connected;
    CMediaType m_type;
};
