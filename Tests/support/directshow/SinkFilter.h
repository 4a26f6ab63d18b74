#pragma once

#include "support/directshow/OfferedPins.h"
#include "support/directshow/SinkPin.h"
#include "support/directshow/TestObject.h"

#include <strmif.h>

#include <atomic>
#include <string>

/// The filter at the other end of a real graph: one input pin, which does what the test says.
///
/// Owner:  the test; the graph must be gone before it.
/// Thread: any, as the graph calls it.
class SinkFilter final : public TestObject<IBaseFilter> {
public:
    SinkPin pin{this};
    IPin* shown = &pin; ///< the pin that others see, borrowed: one around `pin`, or in its place

    // IPersist
    STDMETHODIMP GetClassID(CLSID* id) override
    {
        *id = CLSID_NULL;
        return S_OK;
    }
    // IMediaFilter
    STDMETHODIMP Stop() override { return Enter(State_Stopped); }
    STDMETHODIMP Pause() override { return Enter(State_Paused); }
    STDMETHODIMP Run(REFERENCE_TIME /*start*/) override { return Enter(State_Running); }
    STDMETHODIMP GetState(DWORD /*timeoutMs*/, FILTER_STATE* state) override
    {
        *state = m_state;
        return S_OK;
    }
    STDMETHODIMP SetSyncSource(IReferenceClock* clock) override
    {
        m_clock = VxComPtr<IReferenceClock>(clock);
        return S_OK;
    }
    STDMETHODIMP GetSyncSource(IReferenceClock** clock) override
    {
        *clock = VxComPtr<IReferenceClock>(m_clock).Detach();
        return S_OK;
    }
    // IBaseFilter
    STDMETHODIMP EnumPins(IEnumPins** pins) override
    {
        *pins = new OfferedPins(VxComPtr<IPin>(shown));
        (*pins)->AddRef();
        return S_OK;
    }
    STDMETHODIMP FindPin(LPCWSTR /*id*/, IPin** found) override
    {
        *found = nullptr;
        return VFW_E_NOT_FOUND;
    }
    STDMETHODIMP QueryFilterInfo(FILTER_INFO* info) override
    {
        *info = {};
        m_name.copy(info->achName, std::size(info->achName) - 1);
        info->pGraph = VxComPtr<IFilterGraph>(m_graph).Detach();
        return S_OK;
    }
    STDMETHODIMP JoinFilterGraph(IFilterGraph* graph, LPCWSTR name) override
    {
        m_graph = graph;
        m_name = name != nullptr ? name : L"";
        return S_OK;
    }
    STDMETHODIMP QueryVendorInfo(LPWSTR* /*info*/) override { return E_NOTIMPL; }

private:
    bool IsBase(REFIID riid) const override { return riid == IID_IPersist || riid == IID_IMediaFilter; }
    HRESULT Enter(FILTER_STATE state)
    {
        m_state = state;
        return S_OK;
    }

    std::atomic<FILTER_STATE> m_state = State_Stopped;
    VxComPtr<IReferenceClock> m_clock;
    IFilterGraph* m_graph = nullptr; // borrowed, as the contract wants it: the graph holds the filter
    std::wstring m_name;
};
