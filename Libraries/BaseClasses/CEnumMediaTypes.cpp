#include "BaseClasses/CEnumMediaTypes.h"

#include "BaseClasses/AtComEdge.h"
#include "BaseClasses/CBasePin.h"
#include "BaseClasses/CMediaType.h"

#include <vfwmsgs.h>

#include <limits>

CEnumMediaTypes::CEnumMediaTypes(CBasePin* pin, CEnumMediaTypes* copyFrom)
    : CBaseObject(NAME("media type enumerator")), m_pPin(pin)
{
    if (copyFrom != nullptr) {
        m_Version = copyFrom->m_Version;
        m_Position = copyFrom->m_Position;
    } else {
        m_Version = m_pPin->GetMediaTypeVersion();
    }
    m_pPin->AddRef();
}

CEnumMediaTypes::~CEnumMediaTypes()
{
    m_pPin->Release();
}

STDMETHODIMP CEnumMediaTypes::QueryInterface(REFIID riid, void** object)
{
    if (object == nullptr)
        return E_POINTER;
    if (riid == IID_IEnumMediaTypes || riid == IID_IUnknown) {
        AddRef();
        *object = static_cast<IEnumMediaTypes*>(this);
        return S_OK;
    }
    *object = nullptr;
    return E_NOINTERFACE;
}

STDMETHODIMP_(ULONG) CEnumMediaTypes::AddRef()
{
    return static_cast<ULONG>(::InterlockedIncrement(&m_cRef));
}

STDMETHODIMP_(ULONG) CEnumMediaTypes::Release()
{
    const LONG count = ::InterlockedDecrement(&m_cRef);
    if (count == 0)
        delete this;
    return static_cast<ULONG>(count);
}

STDMETHODIMP CEnumMediaTypes::Next(ULONG count, AM_MEDIA_TYPE** types, ULONG* fetched)
{
    if (types == nullptr)
        return E_POINTER;
    if (IsOutOfSync())
        return VFW_E_ENUM_OUT_OF_SYNC;
    if (fetched != nullptr)
        *fetched = 0;
    else if (count > 1)
        return E_INVALIDARG;

    ULONG returned = 0;
    const HRESULT hr = AtComEdge([&]() -> HRESULT {
        while (returned < count) {
            CMediaType type;
            const int position = m_Position;
            Advance(1); // also past the end
            if (m_pPin->GetMediaType(position, &type) != S_OK)
                return S_FALSE;
            types[returned] = CreateMediaType(&type);
            if (types[returned] == nullptr)
                return E_OUTOFMEMORY;
            ++returned;
        }
        return S_OK;
    });

    if (FAILED(hr)) { // then nothing is returned
        while (returned > 0)
            DeleteMediaType(types[--returned]);
    }
    if (fetched != nullptr)
        *fetched = returned;
    return hr;
}

STDMETHODIMP CEnumMediaTypes::Skip(ULONG count)
{
    if (count == 0)
        return S_OK;
    if (IsOutOfSync())
        return VFW_E_ENUM_OUT_OF_SYNC;

    Advance(count);
    return AtComEdge([&]() -> HRESULT {
        CMediaType last;
        return m_pPin->GetMediaType(m_Position - 1, &last) == S_OK ? S_OK : S_FALSE;
    });
}

STDMETHODIMP CEnumMediaTypes::Reset()
{
    m_Position = 0;
    m_Version = m_pPin->GetMediaTypeVersion();
    return S_OK;
}

STDMETHODIMP CEnumMediaTypes::Clone(IEnumMediaTypes** copy)
{
    if (copy == nullptr)
        return E_POINTER;

    *copy = nullptr;
    if (IsOutOfSync())
        return VFW_E_ENUM_OUT_OF_SYNC;
    return AtComEdge([&]() -> HRESULT {
        *copy = new CEnumMediaTypes(m_pPin, this);
        return S_OK;
    });
}

bool CEnumMediaTypes::IsOutOfSync() const
{
    return m_pPin->GetMediaTypeVersion() != m_Version;
}

/// Stops at the largest position instead of wrapping round to the first type.
void CEnumMediaTypes::Advance(ULONG count)
{
    constexpr int kLast = std::numeric_limits<int>::max();
    const auto room = static_cast<ULONG>(kLast - m_Position);
    m_Position = count < room ? m_Position + static_cast<int>(count) : kLast;
}
