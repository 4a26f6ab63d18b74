#include "vxgrab/CaptureGraph.h"

#include "VxBase/VxString.h"

#include "vxgrab/ComFailure.h"

#include <dshow.h>
#include <evcode.h>

extern "C" {
extern const CLSID CLSID_SampleGrabber; // in the import library, declared in no header
extern const CLSID CLSID_NullRenderer;
}

namespace vxgrab {
namespace {

bool Fits(const AM_MEDIA_TYPE& type, const GUID& subtype)
{
    const auto format = ReadFrameFormat(type);
    if (!format || format->bytesPerPixel == 0)
        return false;
    return ::IsEqualGUID(subtype, GUID_NULL) || ::IsEqualGUID(subtype, format->subtype);
}

} // namespace

VxResult CaptureGraph::Build(const ComPtr<IBaseFilter>& source, const std::string& subtype)
{
    m_source = source;
    VxResult result = Create();
    if (result.IsOK())
        result = AddFilter(CLSID_SampleGrabber, L"Frames", m_grabberFilter);
    if (result.IsOK())
        result = FindPins();
    if (result.IsOK())
        result = ConnectSource(subtype);
    if (result.IsOK())
        result = ReadFormat();
    if (result.IsOK())
        result = AddEnd();
    return result;
}

VxResult CaptureGraph::Create()
{
    HRESULT result = ::CoCreateInstance(CLSID_FilterGraph, nullptr, CLSCTX_INPROC_SERVER, IID_IGraphBuilder,
                                        m_graph.PutVoid());
    if (SUCCEEDED(result))
        result = ::CoCreateInstance(CLSID_CaptureGraphBuilder2, nullptr, CLSCTX_INPROC_SERVER,
                                    IID_ICaptureGraphBuilder2, m_builder.PutVoid());
    if (SUCCEEDED(result))
        result = m_builder->SetFiltergraph(m_graph.Get());
    if (SUCCEEDED(result))
        result = m_graph.Query(IID_IMediaControl, m_control);
    if (SUCCEEDED(result))
        result = m_graph.Query(IID_IMediaEvent, m_events);
    if (SUCCEEDED(result))
        result = m_graph->AddFilter(m_source.Get(), L"Camera");
    return SUCCEEDED(result) ? VxResult::Ok() : ComFailure("create the filter graph", result);
}

VxResult CaptureGraph::AddFilter(REFCLSID classId, const wchar_t* name, ComPtr<IBaseFilter>& filter)
{
    HRESULT result =
        ::CoCreateInstance(classId, nullptr, CLSCTX_INPROC_SERVER, IID_IBaseFilter, filter.PutVoid());
    if (SUCCEEDED(result))
        result = m_graph->AddFilter(filter.Get(), name);
    return SUCCEEDED(result)
               ? VxResult::Ok()
               : ComFailure("add the system's filter \"" + VxUtf8FromWide(name) + "\" to the graph", result);
}

VxResult CaptureGraph::FindPins()
{
    HRESULT result = m_builder->FindPin(m_source.Get(), PINDIR_OUTPUT, &PIN_CATEGORY_CAPTURE,
                                        &MEDIATYPE_Video, TRUE, 0, m_sourcePin.Put());
    if (FAILED(result)) // a device whose pins name no category
        result =
            m_builder->FindPin(m_source.Get(), PINDIR_OUTPUT, nullptr, nullptr, TRUE, 0, m_sourcePin.Put());
    if (FAILED(result))
        return ComFailure("find an output of the device", result);
    result = m_builder->FindPin(m_grabberFilter.Get(), PINDIR_INPUT, nullptr, nullptr, TRUE, 0,
                                m_grabberInput.Put());
    if (SUCCEEDED(result))
        result = m_builder->FindPin(m_grabberFilter.Get(), PINDIR_OUTPUT, nullptr, nullptr, TRUE, 0,
                                    m_grabberOutput.Put());
    if (SUCCEEDED(result))
        result = m_grabberFilter.Query(IID_ISampleGrabber, m_grabber);
    return SUCCEEDED(result) ? VxResult::Ok() : ComFailure("use the system's Sample Grabber", result);
}

VxResult CaptureGraph::ConnectSource(const std::string& subtypeName)
{
    GUID subtype = GUID_NULL;
    if (!subtypeName.empty()) {
        const auto known = SubtypeFromName(subtypeName);
        if (!known)
            return known.Error();
        subtype = *known;
    }
    HRESULT result = ConnectFirst(subtype);
    if (FAILED(result))
        result = ConnectThroughDecoder(subtype);
    return SUCCEEDED(result) ? VxResult::Ok()
                             : ComFailure("connect the device to the Sample Grabber", result);
}

HRESULT CaptureGraph::ConnectFirst(const GUID& subtype)
{
    ComPtr<IEnumMediaTypes> types;
    HRESULT result = m_sourcePin->EnumMediaTypes(types.Put());
    if (FAILED(result))
        return result;
    result = VFW_E_NO_ACCEPTABLE_TYPES;
    AM_MEDIA_TYPE* next = nullptr;
    while (types->Next(1, &next, nullptr) == S_OK) {
        MediaType type;
        type.Adopt(next);
        if (!Fits(type.Get(), subtype))
            continue;
        result = m_graph->ConnectDirect(m_sourcePin.Get(), m_grabberInput.Get(), &type.Get());
        if (SUCCEEDED(result))
            break;
    }
    return result;
}

HRESULT CaptureGraph::ConnectThroughDecoder(const GUID& subtype)
{
    AM_MEDIA_TYPE wanted{};
    wanted.majortype = MEDIATYPE_Video;
    wanted.subtype = ::IsEqualGUID(subtype, GUID_NULL) ? MEDIASUBTYPE_RGB24 : subtype;
    const HRESULT result = m_grabber->SetMediaType(&wanted);
    return SUCCEEDED(result) ? m_graph->Connect(m_sourcePin.Get(), m_grabberInput.Get()) : result;
}

VxResult CaptureGraph::ReadFormat()
{
    const HRESULT result = m_grabber->GetConnectedMediaType(m_type.Put());
    if (FAILED(result))
        return ComFailure("read the format of the connection", result);
    auto format = ReadFrameFormat(m_type.Get());
    if (format)
        m_format = *format;
    return format.Result();
}

HRESULT CaptureGraph::ConnectNext(IBaseFilter& next)
{
    ComPtr<IPin> input;
    const HRESULT result = m_builder->FindPin(&next, PINDIR_INPUT, nullptr, nullptr, TRUE, 0, input.Put());
    // With the type of the connection in front of it: left to itself, the grabber would take the device's
    // first type and connect the device anew.
    return SUCCEEDED(result) ? m_graph->ConnectDirect(m_grabberOutput.Get(), input.Get(), &m_type.Get())
                             : result;
}

VxResult CaptureGraph::AddEnd()
{
    ComPtr<IBaseFilter> end;
    const VxResult added = AddFilter(CLSID_NullRenderer, L"End", end);
    if (!added.IsOK())
        return added;
    HRESULT result = ConnectNext(*end.Get());

    // No clock: the renderer at the end must not hold frames back until their time of presentation.
    ComPtr<IMediaFilter> graph;
    if (SUCCEEDED(result))
        result = m_graph.Query(IID_IMediaFilter, graph);
    if (SUCCEEDED(result))
        result = graph->SetSyncSource(nullptr);
    return SUCCEEDED(result) ? VxResult::Ok() : ComFailure("finish the graph", result);
}

VxResult CaptureGraph::SetTap(ISampleGrabberCB& tap)
{
    constexpr long kCallSampleCB = 0; // fixed by ISampleGrabber: 1 would copy each buffer first
    HRESULT result = m_grabber->SetBufferSamples(FALSE);
    if (SUCCEEDED(result))
        result = m_grabber->SetCallback(&tap, kCallSampleCB);
    return SUCCEEDED(result) ? VxResult::Ok() : ComFailure("listen to the frames", result);
}

VxResult CaptureGraph::Run()
{
    const HRESULT result = m_control->Run(); // S_FALSE: on its way
    return SUCCEEDED(result) ? VxResult::Ok() : ComFailure("run the graph", result);
}

VxResult CaptureGraph::Stop()
{
    if (!m_control)
        return VxResult::Ok();
    const HRESULT result = m_control->Stop();
    return SUCCEEDED(result) ? VxResult::Ok() : ComFailure("stop the graph", result);
}

HANDLE CaptureGraph::EventHandle() const
{
    OAEVENT handle = 0;
    if (!m_events || FAILED(m_events->GetEventHandle(&handle)))
        return nullptr;
    return reinterpret_cast<HANDLE>(handle);
}

std::optional<VxResult> CaptureGraph::PollEnd()
{
    long code = 0;
    LONG_PTR first = 0;
    LONG_PTR second = 0;
    std::optional<VxResult> end;
    while (m_events->GetEvent(&code, &first, &second, 0) == S_OK) {
        if (code == EC_ERRORABORT)
            end = ComFailure("go on streaming", static_cast<HRESULT>(first));
        else if (code == EC_DEVICE_LOST && second == 0) // 1 would mean that it came back
            end = VxResult(VxError::NotConnected, "the device was removed");
        else if (code == EC_COMPLETE)
            end = VxResult(VxError::Aborted, "the device ended the stream");
        m_events->FreeEventParams(code, first, second);
    }
    return end;
}

std::optional<long> CaptureGraph::FramesDropped() const
{
    ComPtr<IAMDroppedFrames> counter; // some devices count at the pin, others at the filter
    if (FAILED(m_sourcePin.Query(IID_IAMDroppedFrames, counter)) &&
        FAILED(m_source.Query(IID_IAMDroppedFrames, counter)))
        return std::nullopt;
    long dropped = 0;
    return SUCCEEDED(counter->GetNumDropped(&dropped)) ? std::optional(dropped) : std::nullopt;
}

void CaptureGraph::StopFilters()
{
    if (m_control)
        m_control->Stop();
    // A graph that failed to run takes itself for stopped while some of its filters are not, and would not
    // end.
    ComPtr<IEnumFilters> filters;
    if (!m_graph || FAILED(m_graph->EnumFilters(filters.Put())))
        return;
    ComPtr<IBaseFilter> filter;
    while (filters->Next(1, filter.Put(), nullptr) == S_OK)
        filter->Stop();
}

void CaptureGraph::Close()
{
    StopFilters();
    if (m_grabber)
        m_grabber->SetCallback(nullptr, 0);
    m_sourcePin.Reset();
    m_grabberInput.Reset();
    m_grabberOutput.Reset();
    m_grabber.Reset();
    m_grabberFilter.Reset();
    if (m_graph && m_source)
        m_graph->RemoveFilter(m_source.Get());
    m_source.Reset();
    m_events.Reset();
    m_control.Reset();
    m_builder.Reset();
    m_graph.Reset();
}

} // namespace vxgrab
