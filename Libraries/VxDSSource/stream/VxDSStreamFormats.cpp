#include "VxDSSource/stream/VxDSStream.h"

#include "BaseClasses/AtComEdge.h"
#include "BaseClasses/CAutoLock.h"
#include "VxDSSource/stream/VxMediaTypes.h"

#include <uuids.h>
#include <vfwmsgs.h>

#include <limits>
#include <new>
#include <tuple>
#include <utility>

using namespace vxds;

HRESULT VxDSStream::StoreMediaType(const AM_MEDIA_TYPE& type)
{
    CMediaType copy;
    const HRESULT copied = copy.Set(type);
    if (FAILED(copied))
        return copied;
    const FrameFormat format = FrameFormat::Of(copy);
    const CAutoLock lock(&m_formatLock);
    std::swap(static_cast<AM_MEDIA_TYPE&>(m_mt), static_cast<AM_MEDIA_TYPE&>(copy));
    m_frameFormat = format;
    return S_OK;
}

CMediaType VxDSStream::CopyOfMediaType()
{
    const CAutoLock lock(&m_formatLock);
    HRESULT copied = S_OK;
    CMediaType copy(static_cast<const AM_MEDIA_TYPE&>(m_mt), &copied);
    if (FAILED(copied))
        throw std::bad_alloc();
    return copy;
}

FrameFormat VxDSStream::CurrentFrameFormat()
{
    const CAutoLock lock(&m_formatLock);
    return m_frameFormat;
}

HRESULT VxDSStream::GetMediaType(int position, CMediaType* type)
{
    if (position < 0)
        return E_INVALIDARG;
    if (position >= kOfferedTypeCount)
        return VFW_S_NO_MORE_ITEMS;
    return BuildOfferedType(position, DeliveredSize(), *type) ? S_OK : E_OUTOFMEMORY;
}

HRESULT VxDSStream::GetMediaType(CMediaType*)
{
    return E_UNEXPECTED; // there are several: by position
}

HRESULT VxDSStream::CheckMediaType(const CMediaType* type)
{
    return IsAcceptedType(*type, m_settings.Number(Setting::OutputPixelType)) ? S_OK : S_FALSE;
}

HRESULT VxDSStream::SetMediaType(const CMediaType* type)
{
    // A refusal is no failure: a format change that arrives with a sample is always taken.
    if (FAILED(CheckMediaType(type)))
        return E_INVALIDARG;
    return StoreMediaType(*type);
}

HRESULT VxDSStream::DecideBufferSize(IMemAllocator* allocator, ALLOCATOR_PROPERTIES* properties)
{
    const CAutoLock lock(m_pLock);
    const std::uint32_t imageBytes = CurrentFrameFormat().imageBytes;
    if (imageBytes > static_cast<std::uint32_t>(std::numeric_limits<long>::max()))
        return E_OUTOFMEMORY; // no sample is that large
    properties->cBuffers = 1;
    properties->cbBuffer = static_cast<long>(imageBytes);
    ALLOCATOR_PROPERTIES actual{};
    const HRESULT result = allocator->SetProperties(properties, &actual);
    if (FAILED(result))
        return result;
    return actual.cbBuffer < properties->cbBuffer ? E_FAIL : S_OK;
}

STDMETHODIMP VxDSStream::ConnectionMediaType(AM_MEDIA_TYPE* type)
{
    const CAutoLock lock(m_pLock);
    const CAutoLock formatLock(&m_formatLock); // a format change may arrive on the streaming thread
    return CSourceStream::ConnectionMediaType(type);
}

STDMETHODIMP VxDSStream::SetFormat(AM_MEDIA_TYPE* type)
{
    if (type == nullptr)
        return E_POINTER;
    return AtComEdge([&]() -> HRESULT {
        const HRESULT stored = StoreMediaType(*type); // not tested: the next connection decides
        if (FAILED(stored))
            return stored;
        IFilterGraph* const graph = m_pFilter->GetFilterGraph();
        if (ConnectedPeer() && graph != nullptr)
            std::ignore = graph->Reconnect(this); // refused while running; the peer's own error elsewhere
        return S_OK;
    });
}

STDMETHODIMP VxDSStream::GetFormat(AM_MEDIA_TYPE** type)
{
    if (type == nullptr)
        return E_POINTER;
    return AtComEdge([&]() -> HRESULT {
        const CMediaType current = CopyOfMediaType();
        *type = CreateMediaType(&current);
        return *type != nullptr ? S_OK : E_OUTOFMEMORY;
    });
}

STDMETHODIMP VxDSStream::GetNumberOfCapabilities(int* count, int* size)
{
    if (count == nullptr || size == nullptr)
        return E_POINTER;
    *count = 1;
    *size = static_cast<int>(sizeof(VIDEO_STREAM_CONFIG_CAPS));
    return S_OK;
}

STDMETHODIMP VxDSStream::GetStreamCaps(int /*index*/, AM_MEDIA_TYPE** type, BYTE* caps)
{
    if (type == nullptr || caps == nullptr)
        return E_POINTER;
    return AtComEdge([&]() -> HRESULT {
        const CMediaType current = CopyOfMediaType();
        const std::uint32_t outputPixelType = m_settings.Number(Setting::OutputPixelType);
        const PictureSize size = DeliveredSize();
        CMediaType capability;
        if (!BuildCapabilityType(current, size, outputPixelType, capability))
            return E_OUTOFMEMORY;
        *type = CreateMediaType(&capability);
        if (*type == nullptr)
            return E_OUTOFMEMORY;
        *reinterpret_cast<VIDEO_STREAM_CONFIG_CAPS*>(caps) = CapabilityOf(size);
        return S_OK;
    });
}

STDMETHODIMP VxDSStream::Set(REFGUID, DWORD, LPVOID, DWORD, LPVOID, DWORD)
{
    return E_NOTIMPL; // the category is fixed
}

STDMETHODIMP VxDSStream::Get(REFGUID set, DWORD id, LPVOID, DWORD, LPVOID data, DWORD dataBytes,
                             DWORD* returnedBytes)
{
    if (set != AMPROPSETID_Pin)
        return E_PROP_SET_UNSUPPORTED;
    if (id != AMPROPERTY_PIN_CATEGORY)
        return E_PROP_ID_UNSUPPORTED;
    if (data == nullptr && returnedBytes == nullptr)
        return E_POINTER;
    if (returnedBytes != nullptr)
        *returnedBytes = sizeof(GUID);
    if (data == nullptr)
        return S_OK;
    if (dataBytes < sizeof(GUID))
        return E_UNEXPECTED;
    *static_cast<GUID*>(data) = PIN_CATEGORY_CAPTURE;
    return S_OK;
}

STDMETHODIMP VxDSStream::QuerySupported(REFGUID set, DWORD id, DWORD* support)
{
    if (set != AMPROPSETID_Pin)
        return E_PROP_SET_UNSUPPORTED;
    if (id != AMPROPERTY_PIN_CATEGORY)
        return E_PROP_ID_UNSUPPORTED;
    if (support == nullptr)
        return E_POINTER;
    *support = KSPROPERTY_SUPPORT_GET;
    return S_OK;
}
