#include "vxgrab/SampleTap.h"

#include "vxgrab/FrameRecorder.h"
#include "vxgrab/MediaType.h"

#include <chrono>

namespace vxgrab {
namespace {

DeliveredFrame ReadFrame(IMediaSample& sample)
{
    DeliveredFrame frame;
    BYTE* bytes = nullptr;
    if (SUCCEEDED(sample.GetPointer(&bytes)) && sample.GetActualDataLength() > 0)
        frame.bytes = {reinterpret_cast<const std::byte*>(bytes),
                       static_cast<std::size_t>(sample.GetActualDataLength())};
    LONGLONG start = 0;
    LONGLONG end = 0;
    frame.hasMediaTime = SUCCEEDED(sample.GetMediaTime(&start, &end));
    AM_MEDIA_TYPE* type = nullptr;
    if (sample.GetMediaType(&type) == S_OK) { // S_FALSE: unchanged
        MediaType changed;
        changed.Adopt(type);
        if (auto format = ReadFrameFormat(changed.Get()))
            frame.newFormat = *format;
    }
    return frame;
}

} // namespace

HRESULT SampleTap::QueryInterface(REFIID interfaceId, void** object)
{
    if (object == nullptr)
        return E_POINTER;
    *object = nullptr;
    if (!::IsEqualGUID(interfaceId, IID_IUnknown) && !::IsEqualGUID(interfaceId, IID_ISampleGrabberCB))
        return E_NOINTERFACE;
    AddRef();
    *object = static_cast<ISampleGrabberCB*>(this);
    return S_OK;
}

ULONG SampleTap::AddRef()
{
    return ++m_references;
}

ULONG SampleTap::Release()
{
    const ULONG left = --m_references;
    if (left == 0)
        delete this;
    return left;
}

HRESULT SampleTap::SampleCB(double, IMediaSample* sample)
{
    if (sample == nullptr)
        return E_POINTER;
    try {
        m_recorder.OnFrame(ReadFrame(*sample), std::chrono::steady_clock::now());
        return S_OK;
    } catch (...) { // no memory for a copy: this picture is lost, the stream goes on
        return E_OUTOFMEMORY;
    }
}

HRESULT SampleTap::BufferCB(double, BYTE*, LONG)
{
    return E_NOTIMPL; // asked for only when the grabber is told to copy buffers
}

} // namespace vxgrab
