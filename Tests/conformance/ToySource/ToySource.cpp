#include "ToySource.h"

#include "ToyIdentifiers.h"
#include "ToyStream.h"

CUnknown* WINAPI CToySource::CreateInstance(LPUNKNOWN pUnk, HRESULT* phr)
{
    ASSERT(phr);
    CUnknown* punk = new CToySource(pUnk, phr);
    if (punk == NULL && phr != NULL)
        *phr = E_OUTOFMEMORY;
    return punk;
}

CToySource::CToySource(LPUNKNOWN pUnk, HRESULT* phr)
    : CSource(NAME("Toy source"), pUnk, CLSID_ToySource), CPersistStream(pUnk, phr)
{
    CAutoLock cAutoLock(&m_cStateLock);
    m_paStreams = new CSourceStream*[1];
    m_paStreams[0] = new CToyStream(phr, this);
}

STDMETHODIMP CToySource::NonDelegatingQueryInterface(REFIID riid, void** ppv)
{
    CheckPointer(ppv, E_POINTER);
    if (riid == IID_ISpecifyPropertyPages)
        return GetInterface(static_cast<ISpecifyPropertyPages*>(this), ppv);
    if (riid == IID_IPersistStream)
        return GetInterface(static_cast<IPersistStream*>(this), ppv);
    return CSource::NonDelegatingQueryInterface(riid, ppv);
}

STDMETHODIMP CToySource::GetClassID(CLSID* pClsID)
{
    return CBaseFilter::GetClassID(pClsID);
}

STDMETHODIMP CToySource::GetPages(CAUUID* pPages)
{
    CheckPointer(pPages, E_POINTER);
    pPages->cElems = 1;
    pPages->pElems = static_cast<GUID*>(CoTaskMemAlloc(sizeof(GUID)));
    if (pPages->pElems == NULL)
        return E_OUTOFMEMORY;
    *pPages->pElems = CLSID_ToyPage;
    return S_OK;
}

int CToySource::SizeMax()
{
    return sizeof(m_dwNumber);
}

HRESULT CToySource::WriteToStream(IStream* pStream)
{
    return pStream->Write(&m_dwNumber, sizeof(m_dwNumber), NULL);
}

HRESULT CToySource::ReadFromStream(IStream* pStream)
{
    DWORD dwNumber = 0;
    ULONG cbRead = 0;
    HRESULT hr = pStream->Read(&dwNumber, sizeof(dwNumber), &cbRead);
    if (FAILED(hr))
        return hr;
    if (cbRead != sizeof(dwNumber))
        return VFW_E_INVALID_FILE_FORMAT;
    m_dwNumber = dwNumber;
    SetDirty(TRUE);
    return S_OK;
}
