#pragma once

#include "vxgrab/CaptureGraph.h"
#include "vxgrab/DeviceList.h"
#include "vxgrab/FilterControl.h"
#include "vxgrab/FrameRecorder.h"
#include "vxgrab/LoadedModule.h"
#include "vxgrab/Options.h"
#include "vxgrab/PictureFiles.h"
#include "vxgrab/StopSignal.h"
#include "vxgrab/Summary.h"

#include <optional>
#include <string>

namespace vxgrab {

/// One run of the program: does what the options say, in a fixed order: list, settings, property pages,
/// default, features, grab.
///
/// Owner:  main.
/// Thread: main thread, which has entered COM: an apartment of its own where property pages are to be shown,
/// else the
///         multi-threaded one.
class GrabSession final {
public:
    /// @param stop  borrowed: main keeps it for longer than the session
    GrabSession(const Options& options, const StopSignal& stop) : m_options(options), m_stop(stop) {}

    [[nodiscard]] VxResult Run();

private:
    [[nodiscard]] bool IsFilterNeeded() const;
    [[nodiscard]] VxResult ShowList();
    [[nodiscard]] VxResult OpenFilter();
    [[nodiscard]] VxResult OpenDevice();
    [[nodiscard]] VxResult SetUp(const ComPtr<IVxDSSource>& control);
    [[nodiscard]] VxResult ShowPages();
    [[nodiscard]] VxResult ServeFeatures(const ComPtr<IVxDSSource>& control);
    [[nodiscard]] VxResult Grab();
    [[nodiscard]] VxResult Record(CaptureGraph& graph, FrameRecorder& recorder, PictureFiles& files);
    [[nodiscard]] VxResult WritePictures(FrameRecorder& recorder, PictureFiles& files);
    [[nodiscard]] RecordingPlan Plan(const FrameFormat& format) const;
    [[nodiscard]] std::string CameraText() const;
    void ShowProgress(const RecordingState& state) const;

    const Options m_options;
    const StopSignal& m_stop;
    LoadedModule m_module; // first: outlives everything made from it
    ComPtr<IBaseFilter> m_filter;
    std::optional<FilterControl> m_control; // empty for a device that is not our filter
    std::string m_deviceName;
};

} // namespace vxgrab
