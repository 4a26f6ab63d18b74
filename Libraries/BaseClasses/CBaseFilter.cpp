#include "BaseClasses/CBaseFilter.h"

#include "BaseClasses/AtComEdge.h"
#include "BaseClasses/CAutoLock.h"
#include "BaseClasses/CBasePin.h"
#include "BaseClasses/CEnumPins.h"
#include "BaseClasses/FilterRegistration.h"
#include "BaseClasses/VxComPtr.h"
#include "BaseClasses/VxFilterMapperFactory.h"

#include <evcode.h>
#include <vfwmsgs.h>

#include <algorithm>
#include <atomic>
#include <cwchar>
#include <new>

namespace {

/// Calls a function with each connected pin in order; a pin that is missing ends the list.
/// @param act  returns whether to go on
template <typename Act>
void ForEachConnectedPin(CBaseFilter& filter, Act act)
{
    const int count = filter.GetPinCount();
    for (int n = 0; n < count; ++n) {
        CBasePin* const pin = filter.GetPin(n);
        if (pin == nullptr)
            return;
        if (pin->IsConnected() && !act(*pin))
            return;
    }
}

HRESULT RegisterSetup(const AMOVIESETUP_FILTER* setup, VxRegistrationStep step)
{
    if (setup == nullptr)
        return S_FALSE;
    VxFilterMapperFactory mappers;
    return VxRegisterFilters({&setup, 1}, step, mappers);
}

} // namespace

CBaseFilter::CBaseFilter(LPCTSTR objectName, LPUNKNOWN outer, CCritSec* lock, REFCLSID clsid)
    : CUnknown(objectName, outer), m_clsid(clsid), m_pLock(lock)
{
}

CBaseFilter::CBaseFilter(LPCSTR objectName, LPUNKNOWN outer, CCritSec* lock, REFCLSID clsid)
    : CUnknown(objectName, outer), m_clsid(clsid), m_pLock(lock)
{
}

CBaseFilter::CBaseFilter(LPCTSTR objectName, LPUNKNOWN outer, CCritSec* lock, REFCLSID clsid,
                         HRESULT* /*phr*/)
    : CBaseFilter(objectName, outer, lock, clsid)
{
}

CBaseFilter::CBaseFilter(LPCSTR objectName, LPUNKNOWN outer, CCritSec* lock, REFCLSID clsid, HRESULT* /*phr*/)
    : CBaseFilter(objectName, outer, lock, clsid)
{
}

CBaseFilter::~CBaseFilter()
{
    delete[] m_pName;
    if (m_pClock != nullptr)
        m_pClock->Release();
}

STDMETHODIMP CBaseFilter::NonDelegatingQueryInterface(REFIID riid, void** object)
{
    if (riid == IID_IBaseFilter || riid == IID_IMediaFilter || riid == IID_IPersist)
        return GetInterface(static_cast<IBaseFilter*>(this), object);
    if (riid == IID_IAMovieSetup)
        return GetInterface(static_cast<IAMovieSetup*>(this), object);
    return CUnknown::NonDelegatingQueryInterface(riid, object);
}

STDMETHODIMP CBaseFilter::GetClassID(CLSID* clsid)
{
    if (clsid == nullptr)
        return E_POINTER;
    *clsid = m_clsid;
    return S_OK;
}

STDMETHODIMP CBaseFilter::GetState(DWORD /*timeoutMs*/, FILTER_STATE* state)
{
    if (state == nullptr)
        return E_POINTER;
    *state = std::atomic_ref(m_State).load();
    return S_OK;
}

STDMETHODIMP CBaseFilter::SetSyncSource(IReferenceClock* clock)
{
    const CAutoLock lock(m_pLock);
    if (clock != nullptr)
        clock->AddRef();

    IReferenceClock* previous = nullptr;
    {
        const CAutoLock clockLock(&m_ClockLock);
        previous = m_pClock;
        m_pClock = clock;
    }
    if (previous != nullptr)
        previous->Release();
    return S_OK;
}

// Takes the clock's lock only, where the platform's own base class takes the state lock. A worker thread asks
// for the clock when it starts to play; with the state lock it would wait for a Stop that waits for this very
// worker.
STDMETHODIMP CBaseFilter::GetSyncSource(IReferenceClock** clock)
{
    if (clock == nullptr)
        return E_POINTER;

    const CAutoLock clockLock(&m_ClockLock);
    *clock = VxComPtr<IReferenceClock>(m_pClock).Detach();
    return S_OK;
}

STDMETHODIMP CBaseFilter::Stop()
{
    const CAutoLock lock(m_pLock);
    HRESULT result = S_OK;
    if (m_State != State_Stopped) {
        result = AtComEdge([&]() -> HRESULT {
            HRESULT firstFailure = S_OK;
            ForEachConnectedPin(*this, [&](CBasePin& pin) {
                const HRESULT hr = AtComEdge([&] { return pin.Inactive(); });
                if (FAILED(hr) && SUCCEEDED(firstFailure))
                    firstFailure = hr;
                return true;
            });
            return firstFailure;
        });
    }
    std::atomic_ref(m_State).store(State_Stopped);
    return result;
}

STDMETHODIMP CBaseFilter::Pause()
{
    const CAutoLock lock(m_pLock);
    if (m_State == State_Stopped) {
        const HRESULT result = AtComEdge([&]() -> HRESULT {
            HRESULT hr = S_OK;
            ForEachConnectedPin(*this, [&](CBasePin& pin) {
                hr = pin.Active();
                return SUCCEEDED(hr);
            });
            return hr;
        });
        if (FAILED(result))
            return result;
    }
    std::atomic_ref(m_State).store(State_Paused);
    return S_OK;
}

STDMETHODIMP CBaseFilter::Run(REFERENCE_TIME start)
{
    const CAutoLock lock(m_pLock);
    {
        const CAutoLock clockLock(&m_ClockLock);
        m_tStart = start;
    }

    if (m_State == State_Stopped) {
        const HRESULT paused = AtComEdge([&] { return Pause(); });
        if (FAILED(paused))
            return paused;
    }
    if (m_State != State_Running) {
        const HRESULT result = AtComEdge([&]() -> HRESULT {
            HRESULT hr = S_OK;
            ForEachConnectedPin(*this, [&](CBasePin& pin) {
                hr = pin.Run(start);
                return SUCCEEDED(hr);
            });
            return hr;
        });
        if (FAILED(result))
            return result;
    }
    std::atomic_ref(m_State).store(State_Running);
    return S_OK;
}

STDMETHODIMP CBaseFilter::EnumPins(IEnumPins** enumerator)
{
    if (enumerator == nullptr)
        return E_POINTER;

    *enumerator = nullptr;
    return AtComEdge([&]() -> HRESULT {
        *enumerator = new CEnumPins(this, nullptr);
        return S_OK;
    });
}

STDMETHODIMP CBaseFilter::FindPin(LPCWSTR id, IPin** pin)
{
    if (pin == nullptr)
        return E_POINTER;

    *pin = nullptr;
    if (id == nullptr)
        return VFW_E_NOT_FOUND;
    const CAutoLock lock(m_pLock);
    return AtComEdge([&]() -> HRESULT {
        const int count = GetPinCount();
        for (int n = 0; n < count; ++n) {
            CBasePin* const candidate = GetPin(n);
            if (candidate == nullptr)
                break;
            if (candidate->Name() == nullptr || std::wcscmp(candidate->Name(), id) != 0)
                continue;
            *pin = VxComPtr<IPin>(candidate).Detach();
            return S_OK;
        }
        return VFW_E_NOT_FOUND;
    });
}

STDMETHODIMP CBaseFilter::QueryFilterInfo(FILTER_INFO* info)
{
    if (info == nullptr)
        return E_POINTER;

    info->achName[0] = L'\0';
    if (m_pName != nullptr) {
        const std::size_t units = std::min<std::size_t>(std::wcslen(m_pName), ARRAYSIZE(info->achName) - 1);
        std::wmemcpy(info->achName, m_pName, units);
        info->achName[units] = L'\0';
    }
    info->pGraph = VxComPtr<IFilterGraph>(m_pGraph).Detach();
    return S_OK;
}

STDMETHODIMP CBaseFilter::JoinFilterGraph(IFilterGraph* graph, LPCWSTR name)
{
    const CAutoLock lock(m_pLock);
    // Neither pointer is held: the graph holds its filters, and holding it back would keep both alive for
    // ever.
    m_pGraph = graph;
    m_pSink = VxComPtr<IFilterGraph>(graph).As<IMediaEventSink>().Get();

    delete[] m_pName;
    m_pName = nullptr;
    if (name == nullptr)
        return S_OK;

    const std::size_t units = std::wcslen(name) + 1;
    m_pName = new (std::nothrow) WCHAR[units];
    if (m_pName == nullptr)
        return E_OUTOFMEMORY;
    std::wmemcpy(m_pName, name, units);
    return S_OK;
}

STDMETHODIMP CBaseFilter::QueryVendorInfo(LPWSTR* /*info*/)
{
    return E_NOTIMPL;
}

STDMETHODIMP CBaseFilter::Register()
{
    return AtComEdge([&] { return RegisterSetup(GetSetupData(), VxRegistrationStep::Register); });
}

STDMETHODIMP CBaseFilter::Unregister()
{
    return AtComEdge([&] { return RegisterSetup(GetSetupData(), VxRegistrationStep::Unregister); });
}

HRESULT CBaseFilter::StreamTime(CRefTime& streamTime)
{
    VxComPtr<IReferenceClock> clock;
    CRefTime start;
    {
        const CAutoLock clockLock(&m_ClockLock);
        clock = VxComPtr<IReferenceClock>(m_pClock);
        start = m_tStart;
    }
    if (!clock)
        return VFW_E_NO_CLOCK;

    REFERENCE_TIME now = 0;
    const HRESULT hr = clock->GetTime(&now);
    if (FAILED(hr))
        return hr;
    streamTime = CRefTime(now);
    streamTime -= start;
    return S_OK;
}

BOOL CBaseFilter::IsActive()
{
    const CAutoLock lock(m_pLock);
    return m_State == State_Paused || m_State == State_Running;
}

BOOL CBaseFilter::IsStopped()
{
    return std::atomic_ref(m_State).load() == State_Stopped;
}

LONG CBaseFilter::GetPinVersion()
{
    return std::atomic_ref(m_PinVersion).load();
}

void CBaseFilter::IncrementPinVersion()
{
    ::InterlockedIncrement(&m_PinVersion);
}

HRESULT CBaseFilter::NotifyEvent(long eventCode, LONG_PTR param1, LONG_PTR param2)
{
    IMediaEventSink* const sink = m_pSink;
    if (sink == nullptr)
        return E_NOTIMPL;
    if (eventCode == EC_COMPLETE)
        param2 = reinterpret_cast<LONG_PTR>(static_cast<IBaseFilter*>(this));
    return sink->Notify(eventCode, param1, param2);
}

HRESULT CBaseFilter::ReconnectPin(IPin* pin, const AM_MEDIA_TYPE* type)
{
    const VxComPtr<IFilterGraph> graph(m_pGraph);
    if (!graph)
        return E_NOINTERFACE;
    if (const auto newer = graph.As<IFilterGraph2>())
        return newer->ReconnectEx(pin, type);
    return graph->Reconnect(pin);
}

LPAMOVIESETUP_FILTER CBaseFilter::GetSetupData()
{
    return nullptr;
}
