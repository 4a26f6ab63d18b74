#pragma once

#include <streams.h>

/// The toy: a source filter with one pin, a property page, and a number that is saved with the graph.
class CToySource : public CSource, public ISpecifyPropertyPages, public CPersistStream {
public:
    DECLARE_IUNKNOWN

    static CUnknown* WINAPI CreateInstance(LPUNKNOWN pUnk, HRESULT* phr);

    STDMETHODIMP NonDelegatingQueryInterface(REFIID riid, void** ppv) override;
    STDMETHODIMP GetClassID(CLSID* pClsID) override;

    // ISpecifyPropertyPages
    STDMETHODIMP GetPages(CAUUID* pPages) override;

    // CPersistStream
    int SizeMax() override;
    HRESULT WriteToStream(IStream* pStream) override;
    HRESULT ReadFromStream(IStream* pStream) override;

private:
    CToySource(LPUNKNOWN pUnk, HRESULT* phr);

    DWORD m_dwNumber = 0;
};
