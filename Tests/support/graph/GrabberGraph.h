#pragma once

#include "vxgrab/ComPtr.h"
#include "vxgrab/FrameFormat.h"

#include <windows.h>

#include <control.h>
#include <qedit.h>
#include <strmif.h>

#include <chrono>
#include <cstddef>
#include <map>

/// The graph of most system tests: a source, the platform's Sample Grabber, and nothing behind it that could
/// hold frames back.
///
/// Owner:  the test.
/// Thread: Run, Pause and Stop on any thread; the others on the test's.
class GrabberGraph final {
public:
    enum class Clock { SystemClock, None };
    /// How the rows of the pictures are asked for: as the source offers them, or the uppermost first.
    enum class Rows { AsOffered, TopDown };

    /// Builds the graph; a failure is a failure of the test.
    /// @param subtype  the only format that the grabber takes
    /// @param tap      gets every frame; must outlive the graph
    GrabberGraph(vxgrab::ComPtr<IBaseFilter> source, const GUID& subtype, ISampleGrabberCB& tap,
                 Clock clock = Clock::SystemClock, Rows rows = Rows::AsOffered);
    ~GrabberGraph();
    GrabberGraph(const GrabberGraph&) = delete;
    GrabberGraph& operator=(const GrabberGraph&) = delete;

    /// Whether the whole graph was built.
    [[nodiscard]] bool IsBuilt() const { return m_isBuilt; }

    HRESULT Run();
    HRESULT Pause();
    HRESULT Stop();

    /// Stops and takes the time.
    [[nodiscard]] std::chrono::steady_clock::duration TimedStop();

    /// What the frames look like.
    [[nodiscard]] const vxgrab::FrameFormat& Format() const { return m_format; }

    [[nodiscard]] IBaseFilter& Source() const { return *m_source.Get(); }

    /// @return  how many of these graphs this process has built until now
    [[nodiscard]] static std::size_t BuiltUntilNow();

private:
    HRESULT Build(const GUID& subtype, ISampleGrabberCB& tap, Clock clock, Rows rows);
    HRESULT Connect(IPin& grabberInput, const GUID& subtype, Rows rows);

    vxgrab::ComPtr<IBaseFilter> m_source;
    vxgrab::ComPtr<IGraphBuilder> m_graph;
    vxgrab::ComPtr<IMediaControl> m_control;
    vxgrab::ComPtr<ISampleGrabber> m_grabber;
    vxgrab::FrameFormat m_format;
    bool m_isBuilt = false;
};

/// @return  handles by type that the platform's own filter graph loses each time it is created and released,
///          with no filter in it, as measured now: one event in Wine 8.0, where counts before and after a
///          test have to allow for it
[[nodiscard]] std::map<unsigned, std::size_t> HandlesLostByAnEmptyGraph();

/// @return  the first pin of a filter in a direction; null when it has none
[[nodiscard]] vxgrab::ComPtr<IPin> FirstPin(IBaseFilter& filter, PIN_DIRECTION direction);
