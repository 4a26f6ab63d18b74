#include "system/RoadTest.h"

#include "support/directshow/TestObject.h"
#include "vxgrab/ComText.h"

#include <atomic>
#include <string>
#include <tuple>

namespace {

using vxgrab::ComPtr;
using vxgrab::ComText;

/// An application that takes its time for every frame.
///
/// Owner:  the test; must outlive the graph.
/// Thread: SampleCB on the streaming thread, the others on any.
class SlowTap final : public TestObject<ISampleGrabberCB> {
public:
    explicit SlowTap(DWORD workMs) : m_workMs(workMs) {}

    [[nodiscard]] std::uint64_t Pictures() const { return m_pictures; }
    [[nodiscard]] std::uint64_t ZeroFrames() const { return m_zeroFrames; }
    /// Whether the pictures were numbered 0, 1, 2 ...
    [[nodiscard]] bool AreNumbersInOrder() const { return m_areNumbersInOrder; }

    STDMETHODIMP SampleCB(double /*startSeconds*/, IMediaSample* sample) override
    {
        LONGLONG start = 0;
        LONGLONG end = 0;
        if (FAILED(sample->GetMediaTime(&start, &end))) {
            ++m_zeroFrames; // for want of a picture
            return S_OK;
        }
        if (start != static_cast<LONGLONG>(m_pictures))
            m_areNumbersInOrder = false;
        ++m_pictures;
        ::Sleep(m_workMs);
        return S_OK;
    }
    STDMETHODIMP BufferCB(double, BYTE*, LONG) override { return E_NOTIMPL; }

private:
    DWORD m_workMs;
    std::atomic<std::uint64_t> m_pictures = 0;
    std::atomic<std::uint64_t> m_zeroFrames = 0;
    std::atomic<bool> m_areNumbersInOrder = true;
};

/// How a filter is set up, and where frames are to be lost with that.
struct Setup {
    const char* name;
    std::uint64_t frames; ///< sent in all
    UINT bufferCount;
    UINT dropThreshold;
    bool losesInFilter;
    bool losesInPipeline;
};

class SlowConsumerTest : public RoadTest, public testing::WithParamInterface<Setup> {
protected:
    static constexpr DWORD kWorkMs = 10; // chosen: ten times of what the camera takes for a frame

    /// @return  a number that the stream's receiver shows
    std::uint64_t Statistic(const char* name)
    {
        ComText value;
        EXPECT_HRESULT_SUCCEEDED(m_control->GetParameterValue(ComText(name).Get(), value.Put())) << name;
        const std::string text = value.Utf8();
        EXPECT_FALSE(text.empty()) << name;
        return text.empty() ? 0 : std::stoull(text);
    }

    void Prepare()
    {
        VxSimulatorOptions options = SmallCamera("Mono8");
        options.widthPx = 128;
        options.heightPx = 64;
        options.frameRateHz = 1000;
        options.frameLimit = GetParam().frames;
        Start(m_camera, options);
        m_filter = m_module.CreateFilter();
        ASSERT_TRUE(m_filter);
        m_control = ControlOf(m_filter);
        ASSERT_TRUE(m_control);
        ASSERT_HRESULT_SUCCEEDED(m_control->SetBufferCount(GetParam().bufferCount));
        ASSERT_HRESULT_SUCCEEDED(m_control->SetDropThreshold(GetParam().dropThreshold));
        Connect(m_filter, m_camera.ControlEndpoint().address.ToString());
        ASSERT_HRESULT_SUCCEEDED(m_control->SetParameterArray(2)); // the receiver's features
    }

    VxSimulatedCamera m_camera;
    ComPtr<IBaseFilter> m_filter;
    ComPtr<IVxDSSource> m_control;
};

TEST_P(SlowConsumerTest, WhatWasSentIsDeliveredOrCountedAsDropped)
{
    ASSERT_NO_FATAL_FAILURE(Prepare());
    SlowTap tap(kWorkMs);
    GrabberGraph graph(m_filter, MEDIASUBTYPE_RGB24, tap);
    ASSERT_TRUE(graph.IsBuilt());
    ASSERT_HRESULT_SUCCEEDED(graph.Run());
    const std::uint64_t frames = GetParam().frames;
    const auto isSent = [&] { return m_camera.FramesSent() >= frames; };
    bool isDone = false;
    for (int i = 0; i < 5 && !isDone; ++i) // chosen: 100 seconds for what takes ten
        isDone = BecomesTrue(isSent);
    ASSERT_TRUE(isDone) << m_camera.FramesSent() << " frames were sent";
    const std::uint64_t zeroFrames = tap.ZeroFrames();
    // A frame for want of a picture that began after the last one was sent: nothing waits any more.
    ASSERT_TRUE(BecomesTrue([&] { return tap.ZeroFrames() >= zeroFrames + 2; }));

    ComPtr<IAMDroppedFrames> dropped;
    ASSERT_HRESULT_SUCCEEDED(m_filter.Query(IID_IAMDroppedFrames, dropped));
    long droppedByFilter = -1;
    long notDropped = -1;
    ASSERT_HRESULT_SUCCEEDED(dropped->GetNumDropped(&droppedByFilter));
    ASSERT_HRESULT_SUCCEEDED(dropped->GetNumNotDropped(&notDropped));
    const std::uint64_t received = Statistic("BlockCount");
    const std::uint64_t lost = Statistic("BlocksDropped");
    const std::uint64_t unbuffered = Statistic("PipelineBlocksDropped");
    const std::uint64_t bad = Statistic("ErrorCount");
    EXPECT_LT(graph.TimedStop(), kStopLimit);

    RecordProperty("delivered", std::to_string(tap.Pictures()));
    RecordProperty("droppedByFilter", std::to_string(droppedByFilter));
    RecordProperty("droppedByPipeline", std::to_string(unbuffered));
    RecordProperty("lostOnTheWay", std::to_string(lost + bad));
    EXPECT_EQ(m_camera.FramesSent(), frames);
    EXPECT_EQ(m_camera.Counters().sendFailures, 0u);
    EXPECT_EQ(received + lost + unbuffered + bad, frames)
        << received << " received, " << lost << " lost, " << unbuffered << " without a buffer, " << bad
        << " bad";
    EXPECT_EQ(tap.Pictures() + static_cast<std::uint64_t>(droppedByFilter), received)
        << tap.Pictures() << " delivered, " << droppedByFilter << " skipped";
    EXPECT_EQ(static_cast<std::uint64_t>(notDropped), tap.Pictures());
    EXPECT_TRUE(tap.AreNumbersInOrder());
    EXPECT_GT(tap.Pictures(), 0u);
    EXPECT_EQ(droppedByFilter > 0, GetParam().losesInFilter) << droppedByFilter;
    EXPECT_EQ(unbuffered > 0, GetParam().losesInPipeline) << unbuffered;
}

INSTANTIATE_TEST_SUITE_P(WholeRoad, SlowConsumerTest,
                         testing::Values(Setup{"FewBuffersAndNoThreshold", 2'000, 2, 0, false, true},
                                         Setup{"FewBuffersAndAThreshold", 10'000, 4, 1, true, true}),
                         [](const auto& test) { return std::string(test.param.name); });

} // namespace
