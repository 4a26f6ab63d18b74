#include "BaseClasses/CEnumPins.h"

#include "BaseClasses/AtComEdge.h"
#include "BaseClasses/CBaseFilter.h"
#include "BaseClasses/CBasePin.h"

#include <vfwmsgs.h>

#include <algorithm>

CEnumPins::CEnumPins(CBaseFilter* filter, CEnumPins* copyFrom)
    : CBaseObject(NAME("pin enumerator")), m_pFilter(filter)
{
    if (copyFrom != nullptr) {
        m_Version = copyFrom->m_Version;
        m_PinCount = copyFrom->m_PinCount;
        m_Position = copyFrom->m_Position;
        m_Returned = copyFrom->m_Returned;
    } else {
        Restart();
    }
    m_pFilter->AddRef();
}

CEnumPins::~CEnumPins()
{
    m_pFilter->Release();
}

STDMETHODIMP CEnumPins::QueryInterface(REFIID riid, void** object)
{
    if (object == nullptr)
        return E_POINTER;
    if (riid == IID_IEnumPins || riid == IID_IUnknown) {
        AddRef();
        *object = static_cast<IEnumPins*>(this);
        return S_OK;
    }
    *object = nullptr;
    return E_NOINTERFACE;
}

STDMETHODIMP_(ULONG) CEnumPins::AddRef()
{
    return static_cast<ULONG>(::InterlockedIncrement(&m_cRef));
}

STDMETHODIMP_(ULONG) CEnumPins::Release()
{
    const LONG count = ::InterlockedDecrement(&m_cRef);
    if (count == 0)
        delete this;
    return static_cast<ULONG>(count);
}

STDMETHODIMP CEnumPins::Next(ULONG count, IPin** pins, ULONG* fetched)
{
    if (pins == nullptr)
        return E_POINTER;
    if (fetched != nullptr)
        *fetched = 0;
    else if (count > 1)
        return E_INVALIDARG;

    return AtComEdge([&]() -> HRESULT {
        if (IsOutOfSync())
            Restart(); // pins already returned stay so
        ULONG returned = 0;
        const HRESULT hr = Fetch(count, pins, returned);
        if (fetched != nullptr)
            *fetched = returned;
        return hr;
    });
}

/// @param fetched  receives the number of pins stored; 0 on failure, and then the place is unchanged
HRESULT CEnumPins::Fetch(ULONG count, IPin** pins, ULONG& fetched)
{
    std::vector<CBasePin*> found;
    int position = m_Position;
    while (found.size() < count && position < m_PinCount) {
        CBasePin* const pin = m_pFilter->GetPin(position++);
        if (pin == nullptr)
            return VFW_E_ENUM_OUT_OF_SYNC;
        if (std::find(m_Returned.begin(), m_Returned.end(), pin) == m_Returned.end())
            found.push_back(pin);
    }

    m_Returned.insert(m_Returned.end(), found.begin(), found.end());
    m_Position = position;
    for (CBasePin* const pin : found) {
        pin->AddRef();
        pins[fetched++] = pin;
    }
    return fetched == count ? S_OK : S_FALSE;
}

STDMETHODIMP CEnumPins::Skip(ULONG count)
{
    if (IsOutOfSync())
        return VFW_E_ENUM_OUT_OF_SYNC;
    if (count > static_cast<ULONG>(m_PinCount - m_Position))
        return S_FALSE;
    m_Position += static_cast<int>(count); // fits: at most m_PinCount
    return S_OK;
}

STDMETHODIMP CEnumPins::Reset()
{
    return AtComEdge([&]() -> HRESULT {
        Restart();
        m_Returned.clear();
        return S_OK;
    });
}

STDMETHODIMP CEnumPins::Clone(IEnumPins** copy)
{
    if (copy == nullptr)
        return E_POINTER;

    *copy = nullptr;
    if (IsOutOfSync())
        return VFW_E_ENUM_OUT_OF_SYNC;
    return AtComEdge([&]() -> HRESULT {
        *copy = new CEnumPins(m_pFilter, this);
        return S_OK;
    });
}

bool CEnumPins::IsOutOfSync() const
{
    return m_pFilter->GetPinVersion() != m_Version;
}

void CEnumPins::Restart()
{
    m_Version = m_pFilter->GetPinVersion();
    m_PinCount = m_pFilter->GetPinCount();
    m_Position = 0;
}
