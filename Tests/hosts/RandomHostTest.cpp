#include "VxDSSource/filter/IVxDSSource.h"
#include "hosts/HostTest.h"
#include "hosts/SmallAllocator.h"
#include "support/directshow/Gate.h"
#include "support/graph/ModuleUnderTest.h"
#include "unit/VxDSSource/overlay/WorkingDirectory.h"
#include "unit/VxDSSource/stream/RenegotiatingSink.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <initializer_list>
#include <mutex>
#include <random>
#include <thread>

// No application in particular: one that calls in any order, with a peer downstream that is slow, refuses, or
// hands out buffers smaller than asked. The same seed makes the same calls.

namespace {

using Clock = std::chrono::steady_clock;

/// How the peer takes samples.
enum class Taking { Readily, Slowly, NotAtAll, AsWhileFlushing };

/// Ends the program when nothing moves any more: a deadlock cannot be taken apart.
class Watchdog {
public:
    /// @param limit  for the whole life of this object
    explicit Watchdog(std::chrono::seconds limit)
        : m_thread([this, limit] {
              std::unique_lock lock(m_mutex);
              if (m_changed.wait_for(lock, limit, [this] { return m_isOver; }))
                  return;
              std::fprintf(stderr, "a call does not come back: %s\n", m_call.load());
              std::_Exit(EXIT_FAILURE);
          })
    {
    }
    ~Watchdog()
    {
        {
            const std::lock_guard lock(m_mutex);
            m_isOver = true;
        }
        m_changed.notify_all();
        m_thread.join();
    }
    Watchdog(const Watchdog&) = delete;
    Watchdog& operator=(const Watchdog&) = delete;

    /// @param name  of a call that begins
    void Note(const char* name) { m_call = name; }

private:
    std::mutex m_mutex;
    std::condition_variable m_changed;
    bool m_isOver = false; // guarded by m_mutex
    std::atomic<const char*> m_call = "none yet";
    std::thread m_thread; // last: it uses the others
};

class RandomHostTest : public HostTest {
protected:
    // Chosen: a stop waits for a frame in production, which waits for the camera, and for a slow peer.
    static constexpr std::chrono::seconds kLongestStop{5};

    RandomHostTest()
    {
        m_filter = ChooseCamera();
        m_pin = CapturePin(*m_filter.Get());
        m_config = m_pin.As<IAMStreamConfig>(IID_IAMStreamConfig);
        m_control = m_filter.As<IVxDSSource>(IID_IVxDSSource);
        m_peer.inner.onReceive = [this](IMediaSample* sample) { return Take(*sample); };
        m_peer.inner.onReceiveConnection = [this](IPin*, const AM_MEDIA_TYPE*) {
            return m_refusesConnections ? VFW_E_TYPE_NOT_ACCEPTED : S_OK;
        };
    }

    void CallAnything()
    {
        static constexpr std::array<Call, 21> kCalls{
            Call{"Run", &RandomHostTest::RunFilter},
            {"Run", &RandomHostTest::RunFilter},
            {"Pause", &RandomHostTest::PauseFilter},
            {"Stop", &RandomHostTest::StopFilter},
            {"Stop", &RandomHostTest::StopFilter},
            {"IPin::Connect", &RandomHostTest::ConnectPins},
            {"IPin::Connect", &RandomHostTest::ConnectPins},
            {"IPin::Disconnect", &RandomHostTest::DisconnectPins},
            {"IAMStreamConfig::SetFormat", &RandomHostTest::SetFormat},
            {"IVxDSSource::Connect", &RandomHostTest::ConnectCamera},
            {"IVxDSSource::Disconnect", &RandomHostTest::DisconnectCamera},
            {"IVxDSSource::SetOutputSize", &RandomHostTest::SetOutputSize},
            {"IVxDSSource::SetOutputPixelType", &RandomHostTest::SetOutputPixelType},
            {"IVxDSSource::SetWidth, SetHeight", &RandomHostTest::SetCameraSize},
            {"a setting of pictures", &RandomHostTest::SetPicture},
            {"a setting of buffers", &RandomHostTest::SetBuffers},
            {"nothing: the peer changes", &RandomHostTest::ChangePeer},
            {"nothing: time passes", &RandomHostTest::LetTimePass},
            {"nothing: time passes", &RandomHostTest::LetTimePass},
            {"nothing: time passes", &RandomHostTest::LetTimePass},
            {"nothing: time passes", &RandomHostTest::LetTimePass},
        };
        const Call& call = kCalls[Below(kCalls.size())];
        m_watchdog.Note(call.name);
        SCOPED_TRACE(call.name);
        (this->*call.function)();
        ++m_calls;
    }

    /// Undoes what keeps pictures away by right, and sees one.
    void ExpectAPicture()
    {
        m_watchdog.Note("the way back");
        StopFilter();
        DisconnectPins();
        m_taking = Taking::Readily;
        m_refusesConnections = false;
        m_peer.renegotiating = S_OK;
        m_peer.inner.allocator.Reset();
        EXPECT_EQ(m_control->SetKernelSize(0), S_OK);
        EXPECT_EQ(m_control->SetZoomValue(0), S_OK);
        EXPECT_EQ(m_control->SetDiagnosticsEnabled(FALSE), S_OK);
        EXPECT_EQ(m_control->SetOutputPixelType(0), S_OK); // disconnects
        EXPECT_EQ(m_control->SetOutputSize(kWidthPx, kHeightPx), S_OK);
        EXPECT_HRESULT_SUCCEEDED(m_control->Connect());
        CMediaType rgb = BuiltType(MEDIASUBTYPE_RGB24, 24, BI_RGB, kWidthPx, kHeightPx);
        ASSERT_EQ(m_config->SetFormat(&rgb), S_OK);
        ASSERT_EQ(m_pin->Connect(&m_peer, nullptr), S_OK);
        m_pictures = 0;
        ASSERT_EQ(m_filter->Run(0), S_OK);
        m_isStopped = false;
        const auto end = Clock::now() + kPatience;
        while (m_pictures == 0 && Clock::now() < end)
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        EXPECT_GT(m_pictures.load(), 0) << "no picture after the random calls";
        StopFilter();
        DisconnectPins();
    }

    [[nodiscard]] int Calls() const { return m_calls; }
    [[nodiscard]] int Samples() { return m_peer.inner.samples.Count(); }
    [[nodiscard]] int SmallSamples() const { return m_small.Given(); }
    [[nodiscard]] int LateSamples() const { return m_late; }
    [[nodiscard]] int WrongSamples() const { return m_wrong; }

private:
    using Function = void (RandomHostTest::*)();
    struct Call {
        const char* name;
        Function function;
    };

    std::size_t Below(std::size_t limit) { return m_random() % limit; }
    template <typename Value>
    Value OneOf(std::initializer_list<Value> values)
    {
        return values.begin()[Below(values.size())];
    }

    /// What a peer does with a sample; on the streaming thread.
    HRESULT Take(IMediaSample& sample)
    {
        m_isTaking = true;
        m_late += m_isStopped ? 1 : 0;
        BYTE* data = nullptr;
        const long length = sample.GetActualDataLength();
        const bool isRight =
            sample.GetPointer(&data) == S_OK && data != nullptr && length >= 0 && length <= sample.GetSize();
        m_wrong += isRight ? 0 : 1;
        if (isRight && std::any_of(data, data + length, [](BYTE each) { return each != 0; }))
            ++m_pictures;
        const Taking taking = m_taking;
        if (taking == Taking::Slowly)
            std::this_thread::sleep_for(std::chrono::milliseconds(80)); // longer than a frame takes
        m_late += m_isStopped ? 1 : 0;
        m_isTaking = false;
        return taking == Taking::NotAtAll ? E_FAIL : taking == Taking::AsWhileFlushing ? S_FALSE : S_OK;
    }

    static void ExpectOneOf(HRESULT result, std::initializer_list<HRESULT> allowed)
    {
        EXPECT_NE(std::ranges::find(allowed, result), allowed.end()) << std::hex << result;
    }

    void RunFilter()
    {
        m_isStopped = false;
        EXPECT_EQ(m_filter->Run(0), S_OK);
        m_isActive = true;
    }
    void PauseFilter()
    {
        m_isStopped = false;
        EXPECT_EQ(m_filter->Pause(), S_OK);
        m_isActive = true;
    }
    void StopFilter()
    {
        const auto began = Clock::now();
        EXPECT_EQ(m_filter->Stop(), S_OK);
        m_isStopped = true;
        EXPECT_FALSE(m_isTaking) << "a sample is still being delivered";
        EXPECT_LT(Clock::now() - began, kLongestStop);
        m_isActive = false;
    }

    void ConnectPins()
    {
        const bool isConnected = m_peer.inner.Connected() != nullptr;
        if (!isConnected && !m_isActive) {
            m_refusesConnections = Below(6) == 0;
            // With an allocator of its own a peer decides what buffers there are.
            const bool hasOwn = Below(2) == 0;
            m_small.sampleBytes = OneOf<std::size_t>({1, 100, 4096, 320 * 240, 320 * 240 * 3 - 1, 2000000});
            m_peer.inner.allocator = hasOwn ? VxComPtr<IMemAllocator>(&m_small) : VxComPtr<IMemAllocator>();
        }
        const HRESULT result = m_pin->Connect(&m_peer, nullptr);
        if (m_isActive)
            ExpectOneOf(result, {VFW_E_NOT_STOPPED, VFW_E_ALREADY_CONNECTED});
        else if (isConnected)
            EXPECT_EQ(result, VFW_E_ALREADY_CONNECTED);
        else if (m_refusesConnections)
            ExpectOneOf(result, {VFW_E_NO_ACCEPTABLE_TYPES, VFW_E_TYPE_NOT_ACCEPTED});
        else
            EXPECT_EQ(result, S_OK);
    }

    void DisconnectPins()
    {
        const bool isConnected = m_peer.inner.Connected() != nullptr;
        const HRESULT result = m_pin->Disconnect();
        if (m_isActive) {
            EXPECT_EQ(result, VFW_E_NOT_STOPPED);
            return;
        }
        EXPECT_EQ(result, isConnected ? S_OK : S_FALSE);
        if (isConnected) {
            EXPECT_EQ(m_peer.Disconnect(), S_OK);
        }
    }

    void SetFormat()
    {
        struct Size {
            std::uint32_t widthPx;
            std::uint32_t heightPx;
        };
        const Size size =
            OneOf<Size>({{1, 1}, {3, 5}, {64, 48}, {kWidthPx, kHeightPx}, {333, 111}, {640, 480}});
        CMediaType type = OneOf<int>({0, 1}) == 0
                              ? BuiltType(MEDIASUBTYPE_RGB24, 24, BI_RGB, size.widthPx, size.heightPx)
                              : BuiltType(MEDIASUBTYPE_RGB32, 32, BI_RGB, size.widthPx, size.heightPx);
        if (Below(4) == 0)
            HeaderOf(type).biHeight = -HeaderOf(type).biHeight; // top-down
        EXPECT_EQ(m_config->SetFormat(&type), S_OK);
    }

    void ConnectCamera() { EXPECT_HRESULT_SUCCEEDED(m_control->Connect()); }
    void DisconnectCamera() { EXPECT_HRESULT_SUCCEEDED(m_control->Disconnect()); }
    void SetOutputSize()
    {
        const INT width = OneOf<INT>({1, 3, 64, 320, 333, 640});
        const INT height = OneOf<INT>({0, 1, 5, 48, 111, 240, 480});
        EXPECT_EQ(m_control->SetOutputSize(width, height), height == 0 ? E_FAIL : S_OK);
    }
    void SetOutputPixelType()
    {
        const UINT type = OneOf<UINT>({0, 0, 1, 2});
        EXPECT_EQ(m_control->SetOutputPixelType(type), type == 2 ? E_INVALIDARG : S_OK);
    }
    void SetCameraSize()
    {
        // Refused without a camera, and by one that is sending.
        ExpectOneOf(m_control->SetWidth(OneOf<INT>({64, 160, 320})), {S_OK, E_FAIL});
        ExpectOneOf(m_control->SetHeight(OneOf<INT>({48, 120, 240})), {S_OK, E_FAIL});
    }
    void SetPicture()
    {
        const INT kernel = OneOf<INT>({0, 0, 3, 5, 4});
        EXPECT_EQ(m_control->SetKernelSize(kernel), kernel == 4 ? E_INVALIDARG : S_OK);
        EXPECT_EQ(m_control->SetZoomValue(OneOf<INT>({-1, 0, 1, 9, 11})), S_OK);
        EXPECT_EQ(m_control->SetDiagnosticsEnabled(OneOf<BOOL>({FALSE, TRUE})), S_OK);
    }
    void SetBuffers()
    {
        EXPECT_EQ(m_control->SetDropThreshold(OneOf<UINT>({0, 1, 4})), S_OK);
        EXPECT_EQ(m_control->SetBufferCount(OneOf<UINT>({1, 2, 16})), S_OK);
    }
    void ChangePeer()
    {
        m_taking = OneOf(
            {Taking::Readily, Taking::Readily, Taking::Slowly, Taking::NotAtAll, Taking::AsWhileFlushing});
        m_peer.renegotiating = OneOf<HRESULT>({S_OK, VFW_E_TYPE_NOT_ACCEPTED});
        m_peer.renegotiated.clear();
    }
    void LetTimePass() { std::this_thread::sleep_for(std::chrono::milliseconds(OneOf<int>({1, 20, 60}))); }

    const TemporaryFolder m_folder{L"random-host-"}; // for what diagnostics write
    const WorkingDirectory m_current{m_folder.Path()};
    Watchdog m_watchdog{std::chrono::seconds(240)};
    std::minstd_rand m_random{1};
    int m_calls = 0;
    bool m_isActive = false;
    bool m_refusesConnections = false;

    // Used on the streaming thread, too.
    std::atomic<bool> m_isStopped = true; // nothing may come
    std::atomic<bool> m_isTaking = false;
    std::atomic<Taking> m_taking = Taking::Readily;
    std::atomic<int> m_late = 0;
    std::atomic<int> m_wrong = 0;
    std::atomic<int> m_pictures = 0; // samples that are not all zero

    SmallAllocator m_small;
    RenegotiatingSink m_peer;
    VxComPtr<IBaseFilter> m_filter;
    VxComPtr<IPin> m_pin;
    VxComPtr<IAMStreamConfig> m_config;
    VxComPtr<IVxDSSource> m_control;
};

TEST_F(RandomHostTest, StopsForGoodWhateverCameBefore)
{
    // Chosen: VX_LONG_TESTS asks for more than ./test takes time for.
    const bool isLong = !EnvironmentText(L"VX_LONG_TESTS").empty();
    const auto end = Clock::now() + std::chrono::seconds(isLong ? 150 : 12);
    while (Clock::now() < end && !HasFailure())
        CallAnything();

    ExpectAPicture();

    EXPECT_EQ(LateSamples(), 0) << "samples that came, or were still there, after a stop had returned";
    EXPECT_EQ(WrongSamples(), 0);
    EXPECT_GT(Calls(), 100);
    EXPECT_GT(Samples(), 20);
    EXPECT_GT(SmallSamples(), 0) << "of the peer's own allocator";
    std::printf("%d calls, %d samples, %d of them small\n", Calls(), Samples(), SmallSamples());
}

} // namespace
