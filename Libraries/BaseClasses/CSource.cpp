#include "BaseClasses/CSource.h"

#include "BaseClasses/CSourceStream.h"
#include "BaseClasses/VxComPtr.h"
#include "BaseClasses/WideStrings.h"

#include <vfwmsgs.h>

#include <algorithm>
#include <new>

CSource::CSource(LPCTSTR objectName, LPUNKNOWN outer, CLSID clsid)
    : CBaseFilter(objectName, outer, &m_cStateLock, clsid)
{
}

CSource::CSource(LPCSTR objectName, LPUNKNOWN outer, CLSID clsid)
    : CBaseFilter(objectName, outer, &m_cStateLock, clsid)
{
}

CSource::CSource(LPCTSTR objectName, LPUNKNOWN outer, CLSID clsid, HRESULT* /*phr*/)
    : CSource(objectName, outer, clsid)
{
}

CSource::CSource(LPCSTR objectName, LPUNKNOWN outer, CLSID clsid, HRESULT* /*phr*/)
    : CSource(objectName, outer, clsid)
{
}

CSource::~CSource()
{
    while (m_iPins != 0) {
        CSourceStream* const last = m_paStreams[m_iPins - 1];
        if (last != nullptr)
            delete last; // calls RemovePin, which lowers the count
        else
            --m_iPins;
    }
    // An array made in advance stays when its pin could not be created.
    delete[] m_paStreams;
}

int CSource::GetPinCount()
{
    const CAutoLock lock(&m_cStateLock);
    return m_iPins;
}

CBasePin* CSource::GetPin(int n)
{
    const CAutoLock lock(&m_cStateLock);
    return n >= 0 && n < m_iPins ? m_paStreams[n] : nullptr;
}

HRESULT CSource::AddPin(CSourceStream* stream)
{
    const CAutoLock lock(&m_cStateLock);
    auto** const streams = new (std::nothrow) CSourceStream*[static_cast<std::size_t>(m_iPins) + 1];
    if (streams == nullptr)
        return E_OUTOFMEMORY;

    if (m_paStreams != nullptr)
        std::copy(m_paStreams, m_paStreams + m_iPins, streams);
    delete[] m_paStreams; // also one that the derived class made in advance
    m_paStreams = streams;
    m_paStreams[m_iPins++] = stream;
    return S_OK;
}

HRESULT CSource::RemovePin(CSourceStream* stream)
{
    CSourceStream** const end = m_paStreams + m_iPins;
    CSourceStream** const place = std::find(m_paStreams, end, stream);
    if (place == end)
        return S_FALSE;

    std::copy(place + 1, end, place);
    if (--m_iPins == 0) {
        delete[] m_paStreams;
        m_paStreams = nullptr;
    }
    return S_OK;
}

STDMETHODIMP CSource::FindPin(LPCWSTR id, IPin** pin)
{
    if (pin == nullptr)
        return E_POINTER;

    *pin = nullptr;
    const int number = id != nullptr ? WstrToInt(id) : 0;
    if (number >= 1)
        *pin = VxComPtr<IPin>(GetPin(number - 1)).Detach();
    return *pin != nullptr ? S_OK : VFW_E_NOT_FOUND;
}

int CSource::FindPinNumber(IPin* pin)
{
    for (int n = 0; n < m_iPins; ++n) {
        if (static_cast<IPin*>(m_paStreams[n]) == pin)
            return n;
    }
    return -1;
}
