#pragma once

// The toy is written the way sources for the platform's own base classes are, umbrella header included: that
// it compiles is one of the tests.
#include <streams.h>

/// The toy's pin: a picture of one colour, which changes with each frame, as RGB24 or RGB32.
class CToyStream : public CSourceStream, public IAMStreamConfig, public IKsPropertySet {
public:
    DECLARE_IUNKNOWN

    CToyStream(HRESULT* phr, CSource* pFilter);

    STDMETHODIMP NonDelegatingQueryInterface(REFIID riid, void** ppv) override;

    // IQualityControl
    STDMETHODIMP Notify(IBaseFilter* pSender, Quality q) override;

    // IAMStreamConfig
    STDMETHODIMP SetFormat(AM_MEDIA_TYPE* pmt) override;
    STDMETHODIMP GetFormat(AM_MEDIA_TYPE** ppmt) override;
    STDMETHODIMP GetNumberOfCapabilities(int* piCount, int* piSize) override;
    STDMETHODIMP GetStreamCaps(int iIndex, AM_MEDIA_TYPE** ppmt, BYTE* pSCC) override;

    // IKsPropertySet
    STDMETHODIMP Set(REFGUID guidPropSet, DWORD dwPropID, LPVOID pInstanceData, DWORD cbInstanceData,
                     LPVOID pPropData, DWORD cbPropData) override;
    STDMETHODIMP Get(REFGUID guidPropSet, DWORD dwPropID, LPVOID pInstanceData, DWORD cbInstanceData,
                     LPVOID pPropData, DWORD cbPropData, DWORD* pcbReturned) override;
    STDMETHODIMP QuerySupported(REFGUID guidPropSet, DWORD dwPropID, DWORD* pTypeSupport) override;

    HRESULT FillBuffer(IMediaSample* pSample) override;
    HRESULT DecideBufferSize(IMemAllocator* pAlloc, ALLOCATOR_PROPERTIES* pRequest) override;
    HRESULT CheckMediaType(const CMediaType* pMediaType) override;
    HRESULT GetMediaType(int iPosition, CMediaType* pmt) override;
    HRESULT GetMediaType(CMediaType*) override { return E_UNEXPECTED; }
    HRESULT OnThreadStartPlay() override;

private:
    LONGLONG m_iFrame = 0; // streaming thread
};
