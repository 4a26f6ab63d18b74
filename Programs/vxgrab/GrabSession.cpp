#include "vxgrab/GrabSession.h"

#include "VxBase/VxString.h"
#include "VxDSSource/filter/Identifiers.h"

#include "console/Console.h"

#include "vxgrab/ComFailure.h"
#include "vxgrab/FeatureAccess.h"
#include "vxgrab/PropertyPages.h"
#include "vxgrab/SampleTap.h"

#include <algorithm>
#include <array>

namespace vxgrab {
namespace {

using Clock = std::chrono::steady_clock;

// Chosen: the longest time between two looks at the clock and two lines of progress.
constexpr std::chrono::milliseconds kTick{250};
constexpr std::chrono::seconds kProgressInterval{1};

/// Waits until one of the handles is set, the time is over, or a tick has passed. Null handles are left out.
void WaitForNews(std::initializer_list<HANDLE> handles, Clock::time_point deadline)
{
    std::array<HANDLE, 4> set{};
    DWORD count = 0;
    for (HANDLE const handle : handles) {
        if (handle != nullptr)
            set[count++] = handle;
    }
    const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now());
    const auto wait = std::clamp(left, std::chrono::milliseconds(0), kTick);
    ::WaitForMultipleObjects(count, set.data(), FALSE, static_cast<DWORD>(wait.count()));
}

} // namespace

VxResult GrabSession::Run()
{
    VxResult result = m_options.isListWanted ? ShowList() : VxResult::Ok();
    if (result.IsOK() && IsFilterNeeded())
        result = OpenFilter();
    if (result.IsOK() && m_options.isGrabWanted)
        result = Grab();
    return result;
}

bool GrabSession::IsFilterNeeded() const
{
    return m_options.isGrabWanted || m_options.arePagesWanted || m_options.isSaveDefaultWanted ||
           m_options.isClearDefaultWanted || !m_options.features.IsEmpty();
}

VxResult GrabSession::ShowList()
{
    const auto devices = ListCaptureDevices();
    if (devices)
        console::PrintOutput(DescribeDevices(*devices));
    return devices.Result();
}

VxResult GrabSession::OpenFilter()
{
    VxResult result = OpenDevice();
    if (!result.IsOK())
        return result;
    ComPtr<IVxDSSource> control;
    if (FAILED(m_filter.Query(IID_IVxDSSource, control))) {
        const bool isOursNeeded = !m_options.settings.IsEmpty() || !m_options.features.IsEmpty() ||
                                  m_options.isSaveDefaultWanted || m_options.isClearDefaultWanted;
        if (isOursNeeded)
            return {VxError::InvalidParameter,
                    "\"" + m_deviceName + "\" has no settings and features that vxgrab can reach: " +
                        "only the filter \"" + VxUtf8FromWide(kFilterName) + "\" has"};
        return m_options.arePagesWanted ? ShowPages() : VxResult::Ok();
    }
    m_control.emplace(control);
    return SetUp(control);
}

VxResult GrabSession::OpenDevice()
{
    if (!m_options.moduleFile.empty()) {
        m_deviceName = VxUtf8FromWide(m_options.moduleFile.wstring());
        auto module = LoadedModule::Load(m_options.moduleFile);
        if (!module)
            return module.Error();
        m_module = std::move(*module);
        auto filter = m_module.CreateFilter(CLSID_VxDSSource);
        if (filter)
            m_filter = *filter;
        return filter.Result();
    }
    const auto devices = ListCaptureDevices();
    if (!devices)
        return devices.Error();
    const auto chosen = ChooseDevice(*devices, m_options.device);
    if (!chosen)
        return chosen.Error();
    m_deviceName = (*devices)[*chosen].friendlyName;
    auto filter = CreateFilter((*devices)[*chosen]);
    if (filter)
        m_filter = *filter;
    return filter.Result();
}

VxResult GrabSession::SetUp(const ComPtr<IVxDSSource>& control)
{
    VxResult result = m_control->Apply(m_options.settings);
    if (result.IsOK() && m_options.arePagesWanted)
        result = ShowPages();
    if (result.IsOK() && m_options.isClearDefaultWanted)
        result = m_control->ClearDefault();
    if (result.IsOK() && m_options.isSaveDefaultWanted)
        result = m_control->SaveDefault();
    if (!result.IsOK() || (!m_options.isGrabWanted && m_options.features.IsEmpty()))
        return result;

    result = m_control->Connect();
    if (result.Code() == VxError::NotConnected && m_options.features.IsEmpty()) {
        // The filter goes on without a camera, with zero frames; so does this program.
        console::PrintError("warning: " + result.GetDescription().Narrow() + "\n");
        return VxResult::Ok();
    }
    return result.IsOK() ? ServeFeatures(control) : result;
}

VxResult GrabSession::ShowPages()
{
    if (m_control && !m_control->DeviceId().empty()) {
        const VxResult connected = m_control->Connect();
        if (!connected.IsOK()) // the pages are there to mend it
            console::PrintError("warning: " + connected.GetDescription().Narrow() + "\n");
    }
    return ShowPropertyPages(m_filter, m_control ? kFilterName : VxWideFromUtf8(m_deviceName),
                             m_options.moduleFile.empty() ? nullptr : &m_module, m_stop.Handle());
}

VxResult GrabSession::ServeFeatures(const ComPtr<IVxDSSource>& control)
{
    const FeatureRequests& requests = m_options.features;
    if (requests.IsEmpty())
        return VxResult::Ok();
    FeatureAccess features(control);
    VxResult result = features.Select(requests.array);
    for (const FeatureAssignment& assignment : requests.assignments) {
        if (result.IsOK())
            result = features.Set(assignment);
    }
    for (const std::string& name : requests.queries) {
        if (!result.IsOK())
            return result;
        const auto value = features.Get(name);
        if (value)
            console::PrintOutput(name + "=" + *value + "\n");
        result = value.Result();
    }
    if (!result.IsOK() || !requests.isTreeWanted)
        return result;
    const auto tree = features.DescribeAll();
    if (tree)
        console::PrintOutput(*tree);
    return tree.Result();
}

RecordingPlan GrabSession::Plan(const FrameFormat& format) const
{
    RecordingPlan plan;
    plan.format = format;
    plan.isOurFilter = m_control.has_value();
    plan.wantedPictures = m_options.frames;
    plan.isPictureFileWanted = !m_options.pngFile.empty();
    plan.pictureEvery = m_options.pngEvery;
    return plan;
}

VxResult GrabSession::Grab()
{
    PictureFiles files(m_options.pngFile, m_options.pngEvery == 0 ? PictureFiles::Naming::Single
                                                                  : PictureFiles::Naming::Numbered);
    FilmWriter film(m_options.aviFile);
    std::optional<FrameRecorder> recorder; // before the graph, which calls it until it is closed
    CaptureGraph graph;
    VxResult result = graph.Build(m_filter, m_options.subtype);
    if (!result.IsOK())
        return result;

    recorder.emplace(Plan(graph.Format()), Clock::now(), m_options.aviFile.empty() ? nullptr : &film);
    const auto tap = ComPtr<SampleTap>::Adopt(new SampleTap(*recorder));
    result = graph.SetTap(*tap.Get());
    if (result.IsOK())
        result = graph.Run();
    if (result.IsOK())
        result = Record(graph, *recorder, files);

    GrabReport report{CameraText(), graph.Format(), {}, graph.FramesDropped(), {}};
    const VxResult stopped = graph.Stop();
    graph.Close();
    const VxResult written = WritePictures(*recorder, files);
    const VxResult finished = film.Finish();
    report.recording = recorder->State();
    report.files = files.Written();
    report.files.insert(report.files.end(), film.Files().begin(), film.Files().end());
    if (m_options.isSummaryWanted)
        console::PrintOutput(SummaryText(report));

    for (const VxResult& trouble : {result, stopped, written, report.recording.film, finished}) {
        if (!trouble.IsOK())
            return trouble;
    }
    return report.recording.tally.Pictures() > 0
               ? VxResult::Ok()
               : VxResult(VxError::Timeout, "no picture arrived: the device delivered " +
                                                std::to_string(report.recording.tally.ZeroFrames()) +
                                                " zero frames");
}

VxResult GrabSession::Record(CaptureGraph& graph, FrameRecorder& recorder, PictureFiles& files)
{
    const auto start = Clock::now();
    const auto end = m_options.duration ? start + *m_options.duration : Clock::time_point::max();
    auto nextProgress = start + kProgressInterval;
    while (!m_stop.IsSet() && !recorder.IsComplete() && Clock::now() < end) {
        const RecordingState state = recorder.State();
        const auto patienceEnd = state.lastPicture + m_options.patience;
        if (Clock::now() >= patienceEnd)
            return VxResult(VxError::Timeout, "no picture for " +
                                                  std::to_string(m_options.patience.count() / 1000) +
                                                  " s: gave up (--timeout sets this time)");
        if (!state.film.IsOK())
            return state.film;
        if (const auto ended = graph.PollEnd())
            return *ended;
        const VxResult written = WritePictures(recorder, files);
        if (!written.IsOK())
            return written;
        if (Clock::now() >= nextProgress) {
            ShowProgress(state);
            nextProgress += kProgressInterval;
        }
        WaitForNews({m_stop.Handle(), recorder.News(), graph.EventHandle()}, std::min(end, patienceEnd));
    }
    return VxResult::Ok();
}

VxResult GrabSession::WritePictures(FrameRecorder& recorder, PictureFiles& files)
{
    while (const auto picture = recorder.TakePicture()) {
        VxResult result = files.Write(*picture);
        if (!result.IsOK())
            return result;
    }
    return VxResult::Ok();
}

std::string GrabSession::CameraText() const
{
    if (!m_control)
        return m_deviceName;
    FilterControl control = *m_control;
    const std::string model = control.CameraModel();
    return control.DeviceId() + (model.empty() ? "" : " (" + model + ")");
}

void GrabSession::ShowProgress(const RecordingState& state) const
{
    if (m_options.isQuiet)
        return;
    console::PrintError(std::to_string(state.tally.Delivered()) + " frames (" +
                        std::to_string(state.tally.ZeroFrames()) + " zero), " +
                        std::to_string(static_cast<int>(state.tally.FramesPerSecond())) + " per second\n");
}

} // namespace vxgrab
