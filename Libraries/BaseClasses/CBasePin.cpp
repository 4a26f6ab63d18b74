#include "BaseClasses/CBasePin.h"

#include "BaseClasses/AtComEdge.h"
#include "BaseClasses/CAutoLock.h"
#include "BaseClasses/CEnumMediaTypes.h"
#include "BaseClasses/VxComPtr.h"
#include "BaseClasses/WideStrings.h"

#include <vfwmsgs.h>

#include <algorithm>
#include <cwchar>
#include <new>
#include <tuple>
#include <utility>

namespace {

/// Strangers' types are looked at through the class: it adds nothing to the structure.
const CMediaType* AsMediaType(const AM_MEDIA_TYPE* type)
{
    return static_cast<const CMediaType*>(type);
}

/// Whether a failure says more than "not this type".
bool IsSpecific(HRESULT hr)
{
    return FAILED(hr) && hr != E_FAIL && hr != E_INVALIDARG && hr != VFW_E_TYPE_NOT_ACCEPTED;
}

/// What a refusal by CheckMediaType becomes: a success code (S_FALSE), too, is one.
HRESULT AsRefusal(HRESULT hr)
{
    return IsSpecific(hr) ? hr : VFW_E_TYPE_NOT_ACCEPTED;
}

WCHAR* CopyName(LPCWSTR name)
{
    if (name == nullptr)
        return nullptr;
    const std::size_t units = std::wcslen(name) + 1;
    auto* const copy = new (std::nothrow) WCHAR[units];
    if (copy != nullptr)
        std::wmemcpy(copy, name, units);
    return copy;
}

} // namespace

CBasePin::CBasePin(LPCTSTR objectName, CBaseFilter* filter, CCritSec* lock, HRESULT* /*phr*/, LPCWSTR name,
                   PIN_DIRECTION direction)
    : CUnknown(objectName, nullptr),
      m_pName(CopyName(name)),
      m_dir(direction),
      m_pLock(lock),
      m_pFilter(filter)
{
}

CBasePin::CBasePin(LPCSTR objectName, CBaseFilter* filter, CCritSec* lock, HRESULT* /*phr*/, LPCWSTR name,
                   PIN_DIRECTION direction)
    : CUnknown(objectName, nullptr),
      m_pName(CopyName(name)),
      m_dir(direction),
      m_pLock(lock),
      m_pFilter(filter)
{
}

CBasePin::~CBasePin()
{
    LetGoOfPeer(); // only a filter that was let go without a disconnect still has one
    delete[] m_pName;
}

STDMETHODIMP CBasePin::NonDelegatingQueryInterface(REFIID riid, void** object)
{
    if (riid == IID_IPin)
        return GetInterface(static_cast<IPin*>(this), object);
    if (riid == IID_IQualityControl)
        return GetInterface(static_cast<IQualityControl*>(this), object);
    return CUnknown::NonDelegatingQueryInterface(riid, object);
}

STDMETHODIMP_(ULONG) CBasePin::NonDelegatingAddRef()
{
    return m_pFilter->AddRef();
}

STDMETHODIMP_(ULONG) CBasePin::NonDelegatingRelease()
{
    return m_pFilter->Release();
}

STDMETHODIMP CBasePin::Connect(IPin* peer, const AM_MEDIA_TYPE* type)
{
    if (peer == nullptr)
        return E_POINTER;

    const CAutoLock lock(m_pLock);
    if (m_Connected != nullptr)
        return VFW_E_ALREADY_CONNECTED;
    if (!IsStopped() && !m_bCanReconnectWhenActive)
        return VFW_E_NOT_STOPPED;

    const HRESULT hr = AtComEdge([&] { return AgreeMediaType(peer, AsMediaType(type)); });
    if (FAILED(hr)) {
        std::ignore =
            AtComEdge([&] { return BreakConnect(); }); // the connection's own failure is the one to report
        return hr;
    }
    return S_OK;
}

STDMETHODIMP CBasePin::ReceiveConnection(IPin* connector, const AM_MEDIA_TYPE* type)
{
    if (connector == nullptr || type == nullptr)
        return E_POINTER;

    const CAutoLock lock(m_pLock);
    if (m_Connected != nullptr)
        return VFW_E_ALREADY_CONNECTED;
    if (!IsStopped() && !m_bCanReconnectWhenActive)
        return VFW_E_NOT_STOPPED;

    const HRESULT hr = AcceptConnection(connector, AsMediaType(type));
    if (FAILED(hr)) {
        LetGoOfPeer();
        std::ignore = AtComEdge([&] { return BreakConnect(); }); // as in Connect
        return hr;
    }
    return S_OK;
}

HRESULT CBasePin::AcceptConnection(IPin* connector, const CMediaType* type)
{
    const HRESULT suits = AtComEdge([&] { return CheckConnect(connector); });
    if (FAILED(suits))
        return suits;
    const HRESULT accepted = AtComEdge([&] { return CheckMediaType(type); });
    if (accepted != S_OK)
        return AsRefusal(accepted);

    m_Connected = VxComPtr<IPin>(connector).Detach();
    return AtComEdge([&]() -> HRESULT {
        const HRESULT set = SetMediaType(type);
        return FAILED(set) ? set : CompleteConnect(connector);
    });
}

STDMETHODIMP CBasePin::Disconnect()
{
    const CAutoLock lock(m_pLock);
    if (!IsStopped())
        return VFW_E_NOT_STOPPED;
    return DisconnectInternal();
}

HRESULT CBasePin::DisconnectInternal()
{
    if (m_Connected == nullptr)
        return S_FALSE;

    const HRESULT hr = AtComEdge([&] { return BreakConnect(); });
    if (FAILED(hr))
        return hr;
    LetGoOfPeer();
    return S_OK;
}

void CBasePin::LetGoOfPeer()
{
    // In this order: the last release may end the peer, which may ask this pin what it is connected to.
    if (IPin* const peer = std::exchange(m_Connected, nullptr))
        peer->Release();
}

STDMETHODIMP CBasePin::ConnectedTo(IPin** peer)
{
    if (peer == nullptr)
        return E_POINTER;

    *peer = VxComPtr<IPin>(m_Connected).Detach();
    return *peer != nullptr ? S_OK : VFW_E_NOT_CONNECTED;
}

STDMETHODIMP CBasePin::ConnectionMediaType(AM_MEDIA_TYPE* type)
{
    if (type == nullptr)
        return E_POINTER;

    const CAutoLock lock(m_pLock);
    if (IsConnected())
        return CopyMediaType(type, &m_mt);
    std::ignore =
        CopyMediaType(type, &static_cast<const AM_MEDIA_TYPE&>(CMediaType())); // has no block: cannot fail
    return VFW_E_NOT_CONNECTED;
}

STDMETHODIMP CBasePin::QueryPinInfo(PIN_INFO* info)
{
    if (info == nullptr)
        return E_POINTER;

    info->pFilter = VxComPtr<IBaseFilter>(m_pFilter).Detach();
    info->dir = m_dir;
    info->achName[0] = L'\0';
    if (m_pName != nullptr) {
        const std::size_t units = std::min<std::size_t>(std::wcslen(m_pName), ARRAYSIZE(info->achName) - 1);
        std::wmemcpy(info->achName, m_pName, units);
        info->achName[units] = L'\0';
    }
    return S_OK;
}

STDMETHODIMP CBasePin::QueryDirection(PIN_DIRECTION* direction)
{
    if (direction == nullptr)
        return E_POINTER;
    *direction = m_dir;
    return S_OK;
}

STDMETHODIMP CBasePin::QueryId(LPWSTR* id)
{
    return AMGetWideString(m_pName, id);
}

STDMETHODIMP CBasePin::QueryAccept(const AM_MEDIA_TYPE* type)
{
    if (type == nullptr)
        return E_POINTER;
    const HRESULT hr = AtComEdge([&] { return CheckMediaType(AsMediaType(type)); });
    return FAILED(hr) ? S_FALSE : hr;
}

STDMETHODIMP CBasePin::EnumMediaTypes(IEnumMediaTypes** enumerator)
{
    if (enumerator == nullptr)
        return E_POINTER;

    *enumerator = nullptr;
    return AtComEdge([&]() -> HRESULT {
        *enumerator = new CEnumMediaTypes(this, nullptr);
        return S_OK;
    });
}

STDMETHODIMP CBasePin::QueryInternalConnections(IPin** /*pins*/, ULONG* /*count*/)
{
    return E_NOTIMPL; // by the interface's contract: every input is joined to every output
}

STDMETHODIMP CBasePin::EndOfStream()
{
    return S_OK;
}

STDMETHODIMP CBasePin::NewSegment(REFERENCE_TIME start, REFERENCE_TIME stop, double rate)
{
    m_tStart = start;
    m_tStop = stop;
    m_dRate = rate;
    return S_OK;
}

STDMETHODIMP CBasePin::Notify(IBaseFilter* /*sender*/, Quality /*quality*/)
{
    return E_NOTIMPL;
}

STDMETHODIMP CBasePin::SetSink(IQualityControl* sink)
{
    const CAutoLock lock(m_pLock);
    m_pQSink = sink;
    return S_OK;
}

LONG CBasePin::GetMediaTypeVersion()
{
    return ::InterlockedCompareExchange(&m_TypeVersion, 0, 0);
}

void CBasePin::IncrementTypeVersion()
{
    ::InterlockedIncrement(&m_TypeVersion);
}

HRESULT CBasePin::SetMediaType(const CMediaType* type)
{
    return m_mt.Set(*type);
}

HRESULT CBasePin::CheckConnect(IPin* peer)
{
    PIN_DIRECTION peerDirection = PINDIR_INPUT;
    const HRESULT hr = peer->QueryDirection(&peerDirection);
    if (FAILED(hr))
        return hr;
    return peerDirection == m_dir ? VFW_E_INVALID_DIRECTION : S_OK;
}

HRESULT CBasePin::BreakConnect()
{
    return S_OK;
}

HRESULT CBasePin::CompleteConnect(IPin* /*peer*/)
{
    return S_OK;
}

HRESULT CBasePin::GetMediaType(int /*position*/, CMediaType* /*type*/)
{
    return E_UNEXPECTED;
}

HRESULT CBasePin::Active()
{
    return S_OK;
}

HRESULT CBasePin::Run(REFERENCE_TIME /*start*/)
{
    return S_OK;
}

HRESULT CBasePin::Inactive()
{
    m_bRunTimeError = false;
    return S_OK;
}

HRESULT CBasePin::AgreeMediaType(IPin* peer, const CMediaType* type)
{
    if (type != nullptr && !type->IsPartiallySpecified())
        return AttemptConnection(peer, type);

    HRESULT failure = VFW_E_NO_ACCEPTABLE_TYPES;
    IPin* const owners[] = {m_bTryMyTypesFirst ? this : peer, m_bTryMyTypesFirst ? peer : this};
    for (IPin* const owner : owners) {
        const HRESULT hr = TryListOf(owner, peer, type);
        if (SUCCEEDED(hr))
            return S_OK;
        if (IsSpecific(hr) && hr != VFW_E_NO_ACCEPTABLE_TYPES)
            failure = hr;
    }
    return failure;
}

/// One round: the types that one of the two pins offers. A pin that has no list has no types.
HRESULT CBasePin::TryListOf(IPin* owner, IPin* peer, const CMediaType* type)
{
    VxComPtr<IEnumMediaTypes> types;
    if (FAILED(owner->EnumMediaTypes(types.Put())) || !types)
        return VFW_E_NO_ACCEPTABLE_TYPES;
    return TryMediaTypes(peer, type, types.Get());
}

HRESULT CBasePin::TryMediaTypes(IPin* peer, const CMediaType* type, IEnumMediaTypes* enumerator)
{
    const HRESULT reset = enumerator->Reset();
    if (FAILED(reset))
        return reset;

    HRESULT failure = VFW_E_NO_ACCEPTABLE_TYPES;
    for (;;) {
        AM_MEDIA_TYPE* offered = nullptr;
        ULONG fetched = 0;
        if (enumerator->Next(1, &offered, &fetched) != S_OK || offered == nullptr)
            return failure;

        HRESULT hr = VFW_E_TYPE_NOT_ACCEPTED;
        if (type == nullptr || AsMediaType(offered)->MatchesPartial(type))
            hr = AttemptConnection(peer, AsMediaType(offered));
        DeleteMediaType(offered);
        if (hr == S_OK)
            return S_OK;
        if (failure == VFW_E_NO_ACCEPTABLE_TYPES && IsSpecific(hr))
            failure = hr;
    }
}

HRESULT CBasePin::AttemptConnection(IPin* peer, const CMediaType* type)
{
    HRESULT hr = AtComEdge([&] { return CheckConnect(peer); });
    if (SUCCEEDED(hr))
        hr = ConnectTo(peer, type);
    if (SUCCEEDED(hr))
        return hr;

    std::ignore =
        AtComEdge([&] { return BreakConnect(); }); // the connection's own failure is the one to report
    LetGoOfPeer();
    return hr;
}

HRESULT CBasePin::ConnectTo(IPin* peer, const CMediaType* type)
{
    const HRESULT accepted = AtComEdge([&] { return CheckMediaType(type); });
    if (accepted != S_OK)
        return AsRefusal(accepted);

    m_Connected = VxComPtr<IPin>(peer).Detach(); // before the peer is asked: it may ask back
    const HRESULT received = AtComEdge([&]() -> HRESULT {
        const HRESULT set = SetMediaType(type);
        return FAILED(set) ? set : peer->ReceiveConnection(this, type);
    });
    if (FAILED(received))
        return received;

    const HRESULT completed = AtComEdge([&] { return CompleteConnect(peer); });
    if (FAILED(completed))
        std::ignore = peer->Disconnect(); // nothing left to undo there
    return completed;
}
