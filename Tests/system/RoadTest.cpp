#include "system/RoadTest.h"

#include "VxSimulator/picture/PictureFormat.h"

#include "vxgrab/ComText.h"
#include "vxgrab/Picture.h"
#include "vxgrab/PropertyPages.h"

using vxgrab::ComPtr;

ComPtr<IBaseFilter> RoadTest::FilterFor(const std::string& deviceId)
{
    ComPtr<IBaseFilter> filter = m_module.CreateFilter();
    if (filter)
        Connect(filter, deviceId);
    return filter;
}

ComPtr<IBaseFilter> RoadTest::FilterFor(const VxSimulatedCamera& camera)
{
    return FilterFor(camera.ControlEndpoint().address.ToString());
}

bool RoadTest::BecomesTrue(const std::function<bool()>& holds)
{
    const auto deadline = std::chrono::steady_clock::now() + kPatience;
    while (!holds()) {
        if (std::chrono::steady_clock::now() >= deadline)
            return false;
        ::Sleep(1);
    }
    return true;
}

void RoadTest::GrabOnePicture(const VxSimulatedCamera& camera)
{
    FrameCatcher catcher;
    {
        GrabberGraph graph(FilterFor(camera), MEDIASUBTYPE_RGB24, catcher);
        ASSERT_TRUE(graph.IsBuilt());
        ASSERT_HRESULT_SUCCEEDED(graph.Run());
        EXPECT_TRUE(catcher.WaitForPicture(kPatience)) << "no picture came";
        EXPECT_LT(graph.TimedStop(), kStopLimit);
    }
    EXPECT_TRUE(m_module.IsUnused()) << "objects of the module are left";
}

void RoadTest::ExpectNothingIsLeftBy(const std::function<void()>& action, Repetition repetition)
{
    constexpr int kRoundsOfAnEvent = 25; // chosen: a long series meets such locks, too
    // Chosen: what is given back later than that makes one series grow, and the next one decides. A lock's
    // event is never given back, and waiting for it takes longer than many a round.
    constexpr std::chrono::milliseconds kPatienceOfASeries{500};
    Repeat(action, repetition.settling);
    std::string growth;
    for (int series = 0; series < repetition.series && !HasFailure(); ++series) {
        const std::size_t graphs = GrabberGraph::BuiltUntilNow();
        const ProcessUse before = MeasureProcessAtRest();
        Repeat(action, repetition.rounds);
        ProcessUse limit = LimitAfter(before, graphs);
        limit.AllowEvents(static_cast<std::size_t>(repetition.rounds / kRoundsOfAnEvent)); // not negative
        const bool isLast = series + 1 == repetition.series;
        const ProcessUse held =
            isLast ? MeasureProcessUntilWithin(limit) : MeasureProcessUntilWithin(limit, kPatienceOfASeries);
        if (IsWithin(held, limit))
            return;
        growth += "\nallowed: " + Describe(limit) + "\nheld:    " + Describe(held);
    }
    if (!HasFailure()) // else it is told already what went wrong
        ADD_FAILURE() << "every " << repetition.rounds << " rounds left something behind" << growth;
}

void RoadTest::Repeat(const std::function<void()>& action, int rounds)
{
    for (int i = 0; i < rounds && !HasFailure(); ++i) {
        action();
        EXPECT_TRUE(m_module.IsUnused()) << "objects of the module are left";
    }
}

ProcessUse RoadTest::LimitAfter(ProcessUse before, std::size_t graphsBefore) const
{
    for (const auto& [type, lost] : m_lostPerGraph)
        before.handlesByType[type] += lost * (GrabberGraph::BuiltUntilNow() - graphsBefore);
    return before;
}

VxSimulatorOptions SmallCamera(std::string_view pixelFormat)
{
    VxSimulatorOptions options;
    options.widthPx = 320;
    options.heightPx = 240;
    options.frameRateHz = 50;
    const auto* const format = simulator::FindPictureFormat(pixelFormat);
    EXPECT_NE(format, nullptr) << pixelFormat;
    if (format != nullptr)
        options.pixelFormat = format->code;
    return options;
}

std::string CameraOfTheDriver()
{
    const std::wstring address = EnvironmentText(L"VX_CAMERA");
    EXPECT_FALSE(address.empty()) << "VX_CAMERA has to name a camera's address: run with run-with-camera";
    return {address.begin(), address.end()};
}

void Start(VxSimulatedCamera& camera, const VxSimulatorOptions& options)
{
    const VxResult started = camera.Start(options);
    ASSERT_TRUE(started.IsOK()) << started.GetDescription().GetAscii();
}

void Connect(const ComPtr<IBaseFilter>& filter, const std::string& deviceId)
{
    const ComPtr<IVxDSSource> control = ControlOf(filter);
    ASSERT_TRUE(control);
    EXPECT_HRESULT_SUCCEEDED(control->SetDeviceId(vxgrab::ComText(deviceId).Get()));
    EXPECT_HRESULT_SUCCEEDED(control->Connect());
}

HRESULT ShowPages(const ModuleUnderTest& module, const ComPtr<IBaseFilter>& filter, HANDLE stop)
{
    const VxResult shown = vxgrab::ShowPropertyPages(filter, L"the camera", &module.Module(), stop);
    EXPECT_TRUE(shown.IsOK()) << shown.GetDescription().GetAscii();
    return shown.IsOK() ? S_OK : E_FAIL;
}

simulator::PictureView ViewOf(const CaughtFrame& frame, const vxgrab::FrameFormat& format)
{
    simulator::PictureView view;
    view.pixels = frame.bytes;
    view.widthPx = static_cast<std::uint32_t>(format.widthPx);
    view.heightPx = static_cast<std::uint32_t>(format.heightPx);
    view.strideBytes = vxgrab::RowBytes(format, frame.bytes.size());
    view.bytesPerPixel = static_cast<std::uint32_t>(format.bytesPerPixel);
    view.rowOrder = format.isBottomUp ? simulator::RowOrder::BottomUp : simulator::RowOrder::TopDown;
    return view;
}

std::filesystem::path OutputFolder()
{
    const std::filesystem::path folder = WindowsPath(EnvironmentText(L"VX_TEST_OUTPUT"));
    std::error_code error;
    std::filesystem::create_directories(folder, error);
    EXPECT_FALSE(error) << "the folder named by VX_TEST_OUTPUT cannot be made: " << folder;
    return folder;
}

void SavePicture(const CaughtFrame& frame, const vxgrab::FrameFormat& format, const std::string& name)
{
    const VxResult written = vxgrab::WritePng(format, frame.bytes, OutputFolder() / (name + ".png"));
    EXPECT_TRUE(written.IsOK()) << written.GetDescription().GetAscii();
}
