#pragma once

#include "support/directshow/Gate.h"
#include "support/directshow/TestObject.h"

#include <strmif.h>

#include <functional>
#include <mutex>
#include <vector>

/// The graph as a filter sees it: takes events and requests to reconnect.
class FakeGraph final : public TestObject<IFilterGraph2, IMediaEventSink> {
public:
    struct Event {
        long code;
        LONG_PTR param1;
        LONG_PTR param2;
    };

    bool takesEvents = true;
    bool isNew = true; // has IFilterGraph2

    std::function<HRESULT()> onReconnect = [] { return S_OK; };

    Gate notified;
    int reconnects = 0;
    int reconnectsWithType = 0;

    std::vector<Event> Events()
    {
        const std::lock_guard lock(m_mutex);
        return m_events;
    }

    // IMediaEventSink
    STDMETHODIMP Notify(long code, LONG_PTR param1, LONG_PTR param2) override
    {
        {
            const std::lock_guard lock(m_mutex);
            m_events.push_back({code, param1, param2});
        }
        notified.Pass();
        return S_OK;
    }

    // IFilterGraph, IGraphBuilder, IFilterGraph2
    STDMETHODIMP Reconnect(IPin*) override
    {
        ++reconnects;
        return onReconnect();
    }
    STDMETHODIMP ReconnectEx(IPin*, const AM_MEDIA_TYPE*) override
    {
        ++reconnectsWithType;
        return S_OK;
    }
    STDMETHODIMP AddFilter(IBaseFilter*, LPCWSTR) override { return E_NOTIMPL; }
    STDMETHODIMP RemoveFilter(IBaseFilter*) override { return E_NOTIMPL; }
    STDMETHODIMP EnumFilters(IEnumFilters**) override { return E_NOTIMPL; }
    STDMETHODIMP FindFilterByName(LPCWSTR, IBaseFilter**) override { return E_NOTIMPL; }
    STDMETHODIMP ConnectDirect(IPin*, IPin*, const AM_MEDIA_TYPE*) override { return E_NOTIMPL; }
    STDMETHODIMP Disconnect(IPin*) override { return E_NOTIMPL; }
    STDMETHODIMP SetDefaultSyncSource() override { return E_NOTIMPL; }
    STDMETHODIMP Connect(IPin*, IPin*) override { return E_NOTIMPL; }
    STDMETHODIMP Render(IPin*) override { return E_NOTIMPL; }
    STDMETHODIMP RenderFile(LPCWSTR, LPCWSTR) override { return E_NOTIMPL; }
    STDMETHODIMP AddSourceFilter(LPCWSTR, LPCWSTR, IBaseFilter**) override { return E_NOTIMPL; }
    STDMETHODIMP SetLogFile(DWORD_PTR) override { return E_NOTIMPL; }
    STDMETHODIMP Abort() override { return E_NOTIMPL; }
    STDMETHODIMP ShouldOperationContinue() override { return E_NOTIMPL; }
    STDMETHODIMP AddSourceFilterForMoniker(IMoniker*, IBindCtx*, LPCWSTR, IBaseFilter**) override
    {
        return E_NOTIMPL;
    }
    STDMETHODIMP RenderEx(IPin*, DWORD, DWORD*) override { return E_NOTIMPL; }

private:
    bool Hides(REFIID riid) const override
    {
        return (riid == IID_IMediaEventSink && !takesEvents) || (riid == IID_IFilterGraph2 && !isNew);
    }
    bool IsBase(REFIID riid) const override { return riid == IID_IFilterGraph || riid == IID_IGraphBuilder; }

    std::mutex m_mutex;
    std::vector<Event> m_events; // guarded by m_mutex
};
