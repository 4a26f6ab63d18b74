#include "ToyStream.h"

namespace {

const int kWidth = 64;
const int kHeight = 48;
const WORD kBits[] = {24, 32}; // by position
const int kTypes = NUMELMS(kBits);
const REFERENCE_TIME kFrameTime = UNITS / 30;

} // namespace

CToyStream::CToyStream(HRESULT* phr, CSource* pFilter)
    : CSourceStream(NAME("Toy stream"), phr, pFilter, L"Toy output")
{
    CMediaType mt;
    GetMediaType(0, &mt);
    SetMediaType(&mt);
}

STDMETHODIMP CToyStream::NonDelegatingQueryInterface(REFIID riid, void** ppv)
{
    CheckPointer(ppv, E_POINTER);
    ValidateReadWritePtr(ppv, sizeof(void*));
    if (riid == IID_IAMStreamConfig)
        return GetInterface(static_cast<IAMStreamConfig*>(this), ppv);
    if (riid == IID_IKsPropertySet)
        return GetInterface(static_cast<IKsPropertySet*>(this), ppv);
    return CSourceStream::NonDelegatingQueryInterface(riid, ppv);
}

STDMETHODIMP CToyStream::Notify(IBaseFilter*, Quality)
{
    return S_OK; // nothing to adapt
}

HRESULT CToyStream::GetMediaType(int iPosition, CMediaType* pmt)
{
    CheckPointer(pmt, E_POINTER);
    CAutoLock cAutoLock(m_pFilter->pStateLock());
    if (iPosition < 0)
        return E_INVALIDARG;
    if (iPosition >= kTypes)
        return VFW_S_NO_MORE_ITEMS;

    BYTE* const pBlock = pmt->AllocFormatBuffer(sizeof(VIDEOINFOHEADER));
    if (pBlock == NULL)
        return E_OUTOFMEMORY;
    ZeroMemory(pBlock, sizeof(VIDEOINFOHEADER));
    reinterpret_cast<VIDEOINFOHEADER*>(pBlock)->AvgTimePerFrame = kFrameTime;
    BITMAPINFOHEADER* const pHeader = HEADER(pBlock);
    pHeader->biSize = sizeof(BITMAPINFOHEADER);
    pHeader->biWidth = kWidth;
    pHeader->biHeight = kHeight;
    pHeader->biPlanes = 1;
    pHeader->biBitCount = kBits[iPosition];
    pHeader->biCompression = BI_RGB;
    pHeader->biSizeImage = GetBitmapSize(pHeader);

    pmt->SetType(&MEDIATYPE_Video);
    pmt->SetSubtype(iPosition == 0 ? &MEDIASUBTYPE_RGB24 : &MEDIASUBTYPE_RGB32);
    pmt->SetFormatType(&FORMAT_VideoInfo);
    pmt->SetTemporalCompression(FALSE);
    pmt->SetSampleSize(pHeader->biSizeImage);
    return S_OK;
}

HRESULT CToyStream::CheckMediaType(const CMediaType* pMediaType)
{
    CheckPointer(pMediaType, E_POINTER);
    for (int i = 0; i < kTypes; i++) {
        CMediaType mt;
        GetMediaType(i, &mt);
        if (*pMediaType == mt)
            return S_OK;
    }
    return E_FAIL;
}

HRESULT CToyStream::DecideBufferSize(IMemAllocator* pAlloc, ALLOCATOR_PROPERTIES* pRequest)
{
    CheckPointer(pAlloc, E_POINTER);
    CheckPointer(pRequest, E_POINTER);
    CAutoLock cAutoLock(m_pFilter->pStateLock());
    ASSERT(m_mt.IsValid());

    pRequest->cBuffers = 2;
    pRequest->cbBuffer = static_cast<long>(HEADER(m_mt.Format())->biSizeImage);
    ALLOCATOR_PROPERTIES Actual;
    HRESULT hr = pAlloc->SetProperties(pRequest, &Actual);
    if (FAILED(hr))
        return hr;
    return Actual.cbBuffer < pRequest->cbBuffer ? E_FAIL : S_OK;
}

HRESULT CToyStream::OnThreadStartPlay()
{
    DbgLog((LOG_TRACE, 1, TEXT("the toy plays")));
    m_iFrame = 0;
    return S_OK;
}

HRESULT CToyStream::FillBuffer(IMediaSample* pSample)
{
    BYTE* pData = NULL;
    HRESULT hr = pSample->GetPointer(&pData);
    if (FAILED(hr))
        return hr;
    FillMemory(pData, static_cast<SIZE_T>(pSample->GetSize()), static_cast<BYTE>(m_iFrame + 1));
    pSample->SetActualDataLength(pSample->GetSize());

    CRefTime rtStart(m_iFrame * kFrameTime);
    CRefTime rtStop = rtStart;
    rtStop += kFrameTime;
    pSample->SetTime(&rtStart.m_time, &rtStop.m_time);
    LONGLONG llStart = m_iFrame++;
    LONGLONG llStop = m_iFrame;
    pSample->SetMediaTime(&llStart, &llStop);
    pSample->SetSyncPoint(TRUE);
    return S_OK;
}

STDMETHODIMP CToyStream::SetFormat(AM_MEDIA_TYPE* pmt)
{
    CheckPointer(pmt, E_POINTER);
    CAutoLock cAutoLock(m_pFilter->pStateLock());
    if (IsConnected())
        return VFW_E_ALREADY_CONNECTED;
    CMediaType mt(*pmt);
    HRESULT hr = CheckMediaType(&mt);
    return FAILED(hr) ? hr : SetMediaType(&mt);
}

STDMETHODIMP CToyStream::GetFormat(AM_MEDIA_TYPE** ppmt)
{
    CheckPointer(ppmt, E_POINTER);
    CAutoLock cAutoLock(m_pFilter->pStateLock());
    *ppmt = CreateMediaType(&m_mt);
    return *ppmt != NULL ? S_OK : E_OUTOFMEMORY;
}

STDMETHODIMP CToyStream::GetNumberOfCapabilities(int* piCount, int* piSize)
{
    CheckPointer(piCount, E_POINTER);
    CheckPointer(piSize, E_POINTER);
    *piCount = kTypes;
    *piSize = sizeof(VIDEO_STREAM_CONFIG_CAPS);
    return S_OK;
}

STDMETHODIMP CToyStream::GetStreamCaps(int iIndex, AM_MEDIA_TYPE** ppmt, BYTE* pSCC)
{
    CheckPointer(ppmt, E_POINTER);
    CheckPointer(pSCC, E_POINTER);
    if (iIndex < 0)
        return E_INVALIDARG;
    if (iIndex >= kTypes)
        return S_FALSE;

    CMediaType mt;
    HRESULT hr = GetMediaType(iIndex, &mt);
    if (FAILED(hr))
        return hr;
    *ppmt = CreateMediaType(&mt);
    if (*ppmt == NULL)
        return E_OUTOFMEMORY;

    VIDEO_STREAM_CONFIG_CAPS* const pCaps = reinterpret_cast<VIDEO_STREAM_CONFIG_CAPS*>(pSCC);
    ZeroMemory(pCaps, sizeof(*pCaps));
    pCaps->guid = FORMAT_VideoInfo;
    pCaps->InputSize = {kWidth, kHeight};
    pCaps->MinOutputSize = pCaps->MaxOutputSize = pCaps->InputSize;
    pCaps->MinFrameInterval = pCaps->MaxFrameInterval = kFrameTime;
    return S_OK;
}

STDMETHODIMP CToyStream::Set(REFGUID, DWORD, LPVOID, DWORD, LPVOID, DWORD)
{
    return E_NOTIMPL;
}

STDMETHODIMP CToyStream::Get(REFGUID guidPropSet, DWORD dwPropID, LPVOID, DWORD, LPVOID pPropData,
                             DWORD cbPropData, DWORD* pcbReturned)
{
    if (guidPropSet != AMPROPSETID_Pin)
        return E_PROP_SET_UNSUPPORTED;
    if (dwPropID != AMPROPERTY_PIN_CATEGORY)
        return E_PROP_ID_UNSUPPORTED;
    if (pPropData == NULL && pcbReturned == NULL)
        return E_POINTER;

    if (pcbReturned != NULL)
        *pcbReturned = sizeof(GUID);
    if (pPropData == NULL)
        return S_OK;
    if (cbPropData < sizeof(GUID))
        return E_UNEXPECTED;
    *static_cast<GUID*>(pPropData) = PIN_CATEGORY_CAPTURE;
    return S_OK;
}

STDMETHODIMP CToyStream::QuerySupported(REFGUID guidPropSet, DWORD dwPropID, DWORD* pTypeSupport)
{
    if (guidPropSet != AMPROPSETID_Pin)
        return E_PROP_SET_UNSUPPORTED;
    if (dwPropID != AMPROPERTY_PIN_CATEGORY)
        return E_PROP_ID_UNSUPPORTED;
    if (pTypeSupport != NULL)
        *pTypeSupport = KSPROPERTY_SUPPORT_GET;
    return S_OK;
}
