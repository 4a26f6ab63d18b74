#pragma once

#include "vxgrab/ComPtr.h"
#include "vxgrab/FrameFormat.h"
#include "vxgrab/MediaType.h"

#include <windows.h>

#include <control.h>
#include <qedit.h>
#include <strmif.h>

#include <optional>
#include <string>

namespace vxgrab {

/// The filter graph: device, Sample Grabber, Null Renderer.
///
/// Pins are connected directly: building by category would insert a tee, which needs more buffers than a
/// capture filter may have.
///
/// Owner:  the session.
/// Thread: main thread; frames come on the graph's own threads.
class CaptureGraph final {
public:
    CaptureGraph() = default;
    ~CaptureGraph() { Close(); }
    CaptureGraph(const CaptureGraph&) = delete;
    CaptureGraph& operator=(const CaptureGraph&) = delete;

    /// Builds the graph; nothing runs yet.
    /// @param subtype  "rgb24" and so on; empty takes the first format of the device that can be read
    [[nodiscard]] VxResult Build(const ComPtr<IBaseFilter>& source, const std::string& subtype);

    /// What the frames look like; after Build.
    [[nodiscard]] const FrameFormat& Format() const { return m_format; }

    /// @param tap  gets every frame
    [[nodiscard]] VxResult SetTap(ISampleGrabberCB& tap);

    [[nodiscard]] VxResult Run();
    [[nodiscard]] VxResult Stop();

    /// Set while an event of the graph waits; null before Build.
    [[nodiscard]] HANDLE EventHandle() const;

    /// Takes the waiting events.
    /// @return  why the stream ended, if one of them says so
    [[nodiscard]] std::optional<VxResult> PollEnd();

    /// @return  frames that the device dropped by its own count; nothing when it does not count
    [[nodiscard]] std::optional<long> FramesDropped() const;

    /// Stops and takes the graph apart; called by the destructor, too.
    void Close();

private:
    [[nodiscard]] VxResult Create();
    [[nodiscard]] VxResult AddFilter(REFCLSID classId, const wchar_t* name, ComPtr<IBaseFilter>& filter);
    [[nodiscard]] VxResult FindPins();
    [[nodiscard]] VxResult ConnectSource(const std::string& subtype);
    [[nodiscard]] HRESULT ConnectFirst(const GUID& subtype);
    [[nodiscard]] HRESULT ConnectThroughDecoder(const GUID& subtype);
    [[nodiscard]] VxResult ReadFormat();
    void StopFilters();
    [[nodiscard]] HRESULT ConnectNext(IBaseFilter& next);
    [[nodiscard]] VxResult AddEnd();

    ComPtr<IGraphBuilder> m_graph;
    ComPtr<ICaptureGraphBuilder2> m_builder;
    ComPtr<IMediaControl> m_control;
    ComPtr<IMediaEvent> m_events;
    ComPtr<IBaseFilter> m_source;
    ComPtr<IBaseFilter> m_grabberFilter;
    ComPtr<ISampleGrabber> m_grabber;
    ComPtr<IPin> m_sourcePin;
    ComPtr<IPin> m_grabberInput;
    ComPtr<IPin> m_grabberOutput;
    MediaType m_type; // of the connection between device and grabber
    FrameFormat m_format;
};

} // namespace vxgrab
