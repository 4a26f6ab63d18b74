#include "BaseClasses/CPersistStream.h"

#include "BaseClasses/AtComEdge.h"
#include "BaseClasses/StreamIntegers.h"

CPersistStream::CPersistStream(IUnknown* /*outer*/, HRESULT* /*phr*/) {}

STDMETHODIMP CPersistStream::IsDirty()
{
    return mPS_fDirty ? S_OK : S_FALSE;
}

STDMETHODIMP CPersistStream::Load(IStream* stream)
{
    if (stream == nullptr)
        return E_POINTER;

    return AtComEdge([&]() -> HRESULT {
        HRESULT hr = S_OK;
        mPS_dwFileVersion = static_cast<DWORD>(ReadInt(stream, hr));
        return FAILED(hr) ? hr : ReadFromStream(stream);
    });
}

STDMETHODIMP CPersistStream::Save(IStream* stream, BOOL clearDirty)
{
    if (stream == nullptr)
        return E_POINTER;

    return AtComEdge([&]() -> HRESULT {
        HRESULT hr = WriteInt(stream, static_cast<int>(GetSoftwareVersion()));
        if (SUCCEEDED(hr))
            hr = WriteToStream(stream);
        if (SUCCEEDED(hr))
            mPS_fDirty = !clearDirty;
        return hr;
    });
}

STDMETHODIMP CPersistStream::GetSizeMax(ULARGE_INTEGER* bytes)
{
    if (bytes == nullptr)
        return E_POINTER;

    return AtComEdge([&]() -> HRESULT {
        bytes->QuadPart = kStreamIntegerBytes + static_cast<ULONGLONG>(SizeMax());
        return S_OK;
    });
}

HRESULT CPersistStream::SetDirty(BOOL dirty)
{
    mPS_fDirty = dirty;
    return S_OK;
}

DWORD CPersistStream::GetSoftwareVersion()
{
    return 0;
}

int CPersistStream::SizeMax()
{
    return 0;
}

HRESULT CPersistStream::WriteToStream(IStream* /*stream*/)
{
    return S_OK;
}

HRESULT CPersistStream::ReadFromStream(IStream* /*stream*/)
{
    return S_OK;
}
