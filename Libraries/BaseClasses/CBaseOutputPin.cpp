#include "BaseClasses/CBaseOutputPin.h"

#include "BaseClasses/MemoryAllocator.h"
#include "BaseClasses/VxComPtr.h"

#include <vfwmsgs.h>

#include <tuple>

CBaseOutputPin::CBaseOutputPin(LPCTSTR objectName, CBaseFilter* filter, CCritSec* lock, HRESULT* phr,
                               LPCWSTR name)
    : CBasePin(objectName, filter, lock, phr, name, PINDIR_OUTPUT)
{
}

CBaseOutputPin::CBaseOutputPin(LPCSTR objectName, CBaseFilter* filter, CCritSec* lock, HRESULT* phr,
                               LPCWSTR name)
    : CBasePin(objectName, filter, lock, phr, name, PINDIR_OUTPUT)
{
}

CBaseOutputPin::~CBaseOutputPin()
{
    std::ignore = CBaseOutputPin::BreakConnect(); // as in CBasePin's
}

HRESULT CBaseOutputPin::CheckConnect(IPin* peer)
{
    const HRESULT hr = CBasePin::CheckConnect(peer);
    if (FAILED(hr))
        return hr;
    return peer->QueryInterface(IID_IMemInputPin, reinterpret_cast<void**>(&m_pInputPin));
}

HRESULT CBaseOutputPin::CompleteConnect(IPin* /*peer*/)
{
    return DecideAllocator(m_pInputPin, &m_pAllocator);
}

HRESULT CBaseOutputPin::BreakConnect()
{
    if (m_pAllocator != nullptr) {
        const HRESULT hr = m_pAllocator->Decommit();
        if (FAILED(hr))
            return hr;
        m_pAllocator->Release();
        m_pAllocator = nullptr;
    }
    if (m_pInputPin != nullptr) {
        m_pInputPin->Release();
        m_pInputPin = nullptr;
    }
    return S_OK;
}

HRESULT CBaseOutputPin::Active()
{
    return m_pAllocator != nullptr ? m_pAllocator->Commit() : VFW_E_NO_ALLOCATOR;
}

HRESULT CBaseOutputPin::Inactive()
{
    m_bRunTimeError = false;
    return m_pAllocator != nullptr ? m_pAllocator->Decommit() : VFW_E_NO_ALLOCATOR;
}

STDMETHODIMP CBaseOutputPin::EndOfStream()
{
    return E_UNEXPECTED;
}

STDMETHODIMP CBaseOutputPin::BeginFlush()
{
    return E_UNEXPECTED;
}

STDMETHODIMP CBaseOutputPin::EndFlush()
{
    return E_UNEXPECTED;
}

HRESULT CBaseOutputPin::DecideAllocator(IMemInputPin* peer, IMemAllocator** allocator)
{
    *allocator = nullptr;
    ALLOCATOR_PROPERTIES properties = {};
    std::ignore = peer->GetAllocatorRequirements(&properties); // most peers have none
    if (properties.cbAlign == 0)
        properties.cbAlign = 1;

    VxComPtr<IMemAllocator> candidate;
    HRESULT hr = peer->GetAllocator(candidate.Put());
    if (SUCCEEDED(hr))
        hr = UseAllocator(peer, candidate.Get(), &properties);
    if (FAILED(hr)) {
        hr = InitAllocator(candidate.Put());
        if (SUCCEEDED(hr))
            hr = UseAllocator(peer, candidate.Get(), &properties);
    }
    if (FAILED(hr))
        return hr;

    *allocator = candidate.Detach();
    return S_OK;
}

HRESULT CBaseOutputPin::UseAllocator(IMemInputPin* peer, IMemAllocator* allocator,
                                     ALLOCATOR_PROPERTIES* properties)
{
    if (allocator == nullptr) // a peer that says yes and gives nothing
        return VFW_E_NO_ALLOCATOR;
    const HRESULT hr = DecideBufferSize(allocator, properties);
    return FAILED(hr) ? hr : peer->NotifyAllocator(allocator, FALSE);
}

HRESULT CBaseOutputPin::InitAllocator(IMemAllocator** allocator)
{
    return CreateMemoryAllocator(allocator);
}

HRESULT CBaseOutputPin::GetDeliveryBuffer(IMediaSample** sample, REFERENCE_TIME* start, REFERENCE_TIME* stop,
                                          DWORD flags)
{
    return m_pAllocator != nullptr ? m_pAllocator->GetBuffer(sample, start, stop, flags) : E_NOINTERFACE;
}

HRESULT CBaseOutputPin::Deliver(IMediaSample* sample)
{
    return m_pInputPin != nullptr ? m_pInputPin->Receive(sample) : VFW_E_NOT_CONNECTED;
}

HRESULT CBaseOutputPin::DeliverEndOfStream()
{
    return m_Connected != nullptr ? m_Connected->EndOfStream() : VFW_E_NOT_CONNECTED;
}

HRESULT CBaseOutputPin::DeliverBeginFlush()
{
    return m_Connected != nullptr ? m_Connected->BeginFlush() : VFW_E_NOT_CONNECTED;
}

HRESULT CBaseOutputPin::DeliverEndFlush()
{
    return m_Connected != nullptr ? m_Connected->EndFlush() : VFW_E_NOT_CONNECTED;
}

HRESULT CBaseOutputPin::DeliverNewSegment(REFERENCE_TIME start, REFERENCE_TIME stop, double rate)
{
    return m_Connected != nullptr ? m_Connected->NewSegment(start, stop, rate) : VFW_E_NOT_CONNECTED;
}
