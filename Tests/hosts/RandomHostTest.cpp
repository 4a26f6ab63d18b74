#include "VxDSSource/filter/IVxDSSource.h"
#include "hosts/HostTest.h"
#include "hosts/RandomPeer.h"
#include "hosts/Watchdog.h"
#include "support/graph/ModuleUnderTest.h"
#include "unit/VxDSSource/overlay/WorkingDirectory.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <deque>
#include <initializer_list>
#include <limits>
#include <random>
#include <string>
#include <thread>
#include <utility>
#include <vector>

// No application in particular: one that calls in any order, in a graph with a clock, in one without, or
// without a graph, with a peer downstream that is slow, refuses, or hands out buffers smaller than asked. The
// same seed makes the same calls; VX_RANDOM_SEED=NUMBER repeats one.

namespace {

using Clock = std::chrono::steady_clock;
using Taking = RandomPeer::Taking;

enum class Surroundings { Alone, GraphWithClock, GraphWithoutClock };

struct Walk {
    const char* name; ///< of its seed
    std::uint32_t seed;
    Surroundings surroundings;

    /// Every other seed has a camera whose pictures can be had in both families.
    [[nodiscard]] bool IsOfYuvCamera() const { return seed % 2 == 0; }
};

std::string NameOf(const Walk& walk)
{
    constexpr std::array kNames{"Alone", "InAGraphWithAClock", "InAGraphWithoutAClock"};
    return std::string(kNames[static_cast<std::size_t>(walk.surroundings)]) + walk.name;
}

void PrintTo(const Walk& walk, std::ostream* out)
{
    *out << NameOf(walk) << ", VX_RANDOM_SEED=" << walk.seed;
}

/// Two seeds that are always the same and that of the day; or the one that the environment names.
std::vector<Walk> Walks()
{
    const auto today = std::chrono::floor<std::chrono::days>(std::chrono::system_clock::now());
    std::vector<std::pair<const char*, std::uint32_t>> seeds{
        {"SeedOne", 1},
        {"SeedTwo", 2},
        {"SeedOfTheDay", static_cast<std::uint32_t>(today.time_since_epoch().count())}};
    const std::wstring wanted = EnvironmentText(L"VX_RANDOM_SEED");
    if (!wanted.empty())
        seeds = {{"SeedOfTheEnvironment", static_cast<std::uint32_t>(std::stoul(wanted))}};
    std::vector<Walk> walks;
    for (const auto& [name, seed] : seeds)
        for (const auto surroundings :
             {Surroundings::Alone, Surroundings::GraphWithClock, Surroundings::GraphWithoutClock})
            walks.push_back({name, seed, surroundings});
    return walks;
}

/// A text that the control interface takes.
class Text final {
public:
    explicit Text(const wchar_t* text) : m_text(::SysAllocString(text)) {}
    ~Text() { ::SysFreeString(m_text); }
    Text(const Text&) = delete;
    Text& operator=(const Text&) = delete;
    [[nodiscard]] BSTR Get() const { return m_text; }

private:
    BSTR m_text;
};

class RandomHostTest : public HostTest, public testing::WithParamInterface<Walk> {
protected:
    RandomHostTest() : HostTest(HostCamera{GetParam().IsOfYuvCamera() ? "YUV422_8" : "BGR8"})
    {
        m_filter = ChooseCamera();
        m_pin = CapturePin(*m_filter.Get());
        m_config = m_pin.As<IAMStreamConfig>(IID_IAMStreamConfig);
        m_control = m_filter.As<IVxDSSource>(IID_IVxDSSource);
        if (GetParam().surroundings != Surroundings::Alone)
            JoinGraph();
    }
    ~RandomHostTest() override
    {
        if (graph) {
            EXPECT_EQ(graph->RemoveFilter(&m_peer.Filter()), S_OK);
            EXPECT_EQ(graph->RemoveFilter(m_filter.Get()), S_OK);
        }
    }

    void CallAnything()
    {
        static constexpr std::array<Call, 28> kCalls{
            Call{"all that a stream needs", &RandomHostTest::StartOver},
            {"all that a stream needs", &RandomHostTest::StartOver},
            {"Run", &RandomHostTest::RunFilter},
            {"Run", &RandomHostTest::RunFilter},
            {"Run", &RandomHostTest::RunFilter},
            {"Pause", &RandomHostTest::PauseFilter},
            {"Stop", &RandomHostTest::StopFilter},
            {"Stop", &RandomHostTest::StopFilter},
            {"Stop", &RandomHostTest::StopFilter},
            {"connect the pins", &RandomHostTest::ConnectPins},
            {"connect the pins", &RandomHostTest::ConnectPins},
            {"connect the pins", &RandomHostTest::ConnectPins},
            {"disconnect the pins", &RandomHostTest::DisconnectPins},
            {"IAMStreamConfig::SetFormat", &RandomHostTest::SetFormat},
            {"IVxDSSource::Connect", &RandomHostTest::ConnectCamera},
            {"IVxDSSource::Disconnect", &RandomHostTest::DisconnectCamera},
            {"a setting of the connection, or all as at first, and IVxDSSource::Connect",
             &RandomHostTest::ChangeConnection},
            {"a setting of the connection, or all as at first, and IVxDSSource::Connect",
             &RandomHostTest::ChangeConnection},
            {"IVxDSSource::SetOutputSize", &RandomHostTest::SetOutputSize},
            {"IVxDSSource::SetOutputPixelType", &RandomHostTest::SetOutputPixelType},
            {"IVxDSSource::SetWidth, SetHeight", &RandomHostTest::SetCameraSize},
            {"a setting of pictures", &RandomHostTest::SetPicture},
            {"a setting of buffers", &RandomHostTest::SetBuffers},
            {"nothing: the peer changes", &RandomHostTest::ChangePeer},
            {"nothing: the peer asks for a type with its next buffer", &RandomHostTest::AskForType},
            {"nothing: time passes", &RandomHostTest::LetTimePass},
            {"nothing: time passes", &RandomHostTest::LetTimePass},
            {"nothing: time passes", &RandomHostTest::LetTimePass},
        };
        const Call& call = kCalls[Below(kCalls.size())];
        m_last.emplace_back(call.name);
        if (m_last.size() > kRemembered)
            m_last.pop_front();
        m_watchdog.Note(std::string(call.name) + ", " + testing::PrintToString(GetParam()));
        (this->*call.function)();
        ExpectBothEndsAgree();
        EXPECT_EQ(m_peer.Fault(), "");
        ++m_calls;
    }

    /// Undoes what keeps pictures away by right, and sees a whole one: what the camera sent.
    void ExpectAPicture()
    {
        m_watchdog.Note("the way back, " + testing::PrintToString(GetParam()));
        StopFilter();
        DisconnectPins();
        m_peer.taking = Taking::Readily;
        m_peer.refusesConnections = false;
        m_peer.AnswerRenegotiation(S_OK);
        m_peer.UseOwnBuffers(0);
        EXPECT_EQ(m_control->SetKernelSize(0), S_OK);
        EXPECT_EQ(m_control->SetZoomValue(0), S_OK);
        EXPECT_EQ(m_control->SetDiagnosticsEnabled(FALSE), S_OK);
        EXPECT_EQ(m_control->SetOutputPixelType(0), S_OK); // disconnects
        EXPECT_EQ(m_control->SetOutputSize(kWidthPx, kHeightPx), S_OK);
        SetConnectionAsAtFirst();
        EXPECT_EQ(m_control->Connect(), S_OK);
        EXPECT_EQ(m_control->SetWidth(kWidthPx), S_OK);
        EXPECT_EQ(m_control->SetHeight(kHeightPx), S_OK);
        EXPECT_EQ(m_control->Connect(), S_OK);
        ASSERT_EQ(m_pin->Connect(&m_peer.Pin(), nullptr), S_OK);
        const CMediaType type = Format(*m_config.Get());
        m_peer.ForgetPicture();
        RunFilter();
        const auto end = Clock::now() + kPatience;
        while (m_peer.Picture().empty() && Clock::now() < end)
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        StopFilter();
        if (!GetParam().IsOfYuvCamera())
            ExpectPicture(m_peer.Picture(), HeaderOf(type)); // else its colours are rounded
        else
            EXPECT_EQ(m_peer.Picture().size(), HeaderOf(type).biSizeImage);
        DisconnectPins();
    }

    /// Sees that a buffer of the peer's own is filled: the walk may never have come to one.
    void ExpectSmallSamples()
    {
        m_watchdog.Note("a small buffer, " + testing::PrintToString(GetParam()));
        m_peer.UseOwnBuffers(100);
        const int before = m_peer.SmallSamples();
        ASSERT_EQ(m_pin->Connect(&m_peer.Pin(), nullptr), S_OK);
        RunFilter();
        const auto end = Clock::now() + kPatience;
        while (m_peer.SmallSamples() < before + 3 && Clock::now() < end)
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        EXPECT_GE(m_peer.SmallSamples(), before + 3);
        StopFilter();
        DisconnectPins();
    }

    [[nodiscard]] int Calls() const { return m_calls; }
    [[nodiscard]] RandomPeer& Peer() { return m_peer; }
    [[nodiscard]] int Reconnects() const { return m_reconnects; }
    [[nodiscard]] std::chrono::milliseconds LongestStop() const { return m_longestStop; }

    /// The last calls, the newest last.
    [[nodiscard]] std::string LastCalls() const
    {
        std::string text;
        for (const std::string& each : m_last)
            text += "\n  " + each;
        return text;
    }

private:
    static constexpr std::size_t kRemembered = 20;
    // Chosen: ten times the longest that a stop may take on a quiet machine.
    static constexpr std::chrono::seconds kLongestStop{20};

    using Function = void (RandomHostTest::*)();
    struct Call {
        const char* name;
        Function function;
    };

    void JoinGraph()
    {
        BuildGraph(m_filter);
        ASSERT_EQ(graph->AddFilter(&m_peer.Filter(), L"Peer"), S_OK);
        m_media = graph.As<IMediaControl>(IID_IMediaControl);
        m_peer.hasClock = GetParam().surroundings == Surroundings::GraphWithClock;
        if (!m_peer.hasClock) {
            ASSERT_EQ(graph.As<IMediaFilter>(IID_IMediaFilter)->SetSyncSource(nullptr), S_OK);
        }
    }

    // Not of the library's distributions: those differ from one library to the next.
    std::size_t Below(std::size_t limit) { return m_random() % limit; }
    template <typename Value>
    Value OneOf(std::initializer_list<Value> values)
    {
        return values.begin()[Below(values.size())];
    }

    static void ExpectOneOf(HRESULT result, std::initializer_list<HRESULT> allowed)
    {
        EXPECT_NE(std::ranges::find(allowed, result), allowed.end()) << std::hex << result;
    }

    void ExpectBothEndsAgree()
    {
        VxComPtr<IPin> other;
        EXPECT_EQ(m_pin->ConnectedTo(other.Put()) == S_OK, m_peer.IsConnected());
    }

    // --- States.

    void RunFilter()
    {
        m_peer.ExpectSamples();
        EXPECT_HRESULT_SUCCEEDED(m_media ? m_media->Run() : m_filter->Run(0));
        m_isActive = true;
    }
    void PauseFilter()
    {
        m_peer.ExpectSamples();
        EXPECT_HRESULT_SUCCEEDED(m_media ? m_media->Pause() : m_filter->Pause());
        m_isActive = true;
    }
    void StopFilter()
    {
        const auto began = Clock::now();
        EXPECT_EQ(m_media ? m_media->Stop() : m_filter->Stop(), S_OK);
        const auto took = std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - began);
        EXPECT_LT(took, kLongestStop) << "a stop took " << took.count() << " ms";
        m_longestStop = std::max(m_longestStop, took);
        m_peer.ExpectNoMoreSamples();
        m_isActive = false;
    }
    void LetTimePass() { std::this_thread::sleep_for(std::chrono::milliseconds(OneOf<int>({1, 20, 100}))); }

    void StartOver()
    {
        StopFilter();
        DisconnectPins();
        m_peer.taking = OneOf({Taking::Readily, Taking::Readily, Taking::Slowly});
        EXPECT_EQ(m_control->SetOutputPixelType(GetParam().IsOfYuvCamera() ? OneOf<UINT>({0, 1}) : 0), S_OK);
        SetConnectionAsAtFirst();
        ConnectCamera();
        ConnectPins();
        RunFilter();
        LetTimePass();
    }

    // --- Pins and formats.

    void ConnectPins()
    {
        const bool isConnected = m_peer.IsConnected();
        if (!isConnected && !m_isActive) {
            m_peer.refusesConnections = Below(6) == 0;
            // With an allocator of its own a peer decides what buffers there are.
            const auto bytes =
                OneOf<std::size_t>({1, 100, 4096, 320 * 240, 320 * 240 * 3 - 1, 320 * 240 * 4, 2000000});
            m_peer.UseOwnBuffers(Below(2) == 0 ? bytes : 0);
        }
        const HRESULT result = graph ? graph->ConnectDirect(m_pin.Get(), &m_peer.Pin(), nullptr)
                                     : m_pin->Connect(&m_peer.Pin(), nullptr);
        if (m_isActive)
            ExpectOneOf(result, {VFW_E_NOT_STOPPED, VFW_E_ALREADY_CONNECTED});
        else if (isConnected)
            EXPECT_EQ(result, VFW_E_ALREADY_CONNECTED);
        else if (m_peer.refusesConnections)
            ExpectOneOf(result, {VFW_E_NO_ACCEPTABLE_TYPES, VFW_E_TYPE_NOT_ACCEPTED});
        else
            EXPECT_EQ(result, S_OK);
    }

    void DisconnectPins()
    {
        const bool isConnected = m_peer.IsConnected();
        const HRESULT expected = m_isActive ? VFW_E_NOT_STOPPED : isConnected ? S_OK : S_FALSE;
        for (IPin* const pin : {m_pin.Get(), &m_peer.Pin()})
            EXPECT_EQ(graph ? graph->Disconnect(pin) : pin->Disconnect(), expected);
    }

    void SetFormat()
    {
        CMediaType type = AnyType();
        const bool isReconnected = graph && m_peer.IsConnected() && !m_isActive;
        const int before = m_peer.ConnectionAttempts();
        EXPECT_EQ(m_config->SetFormat(&type), S_OK);
        if (isReconnected) {
            EXPECT_GT(m_peer.ConnectionAttempts(), before) << "the graph has not connected the pins again";
            ++m_reconnects;
        } else {
            EXPECT_EQ(m_peer.ConnectionAttempts(), before);
        }
    }

    void AskForType() { m_peer.Ask(AnyType()); }

    /// A type that an application may ask for, or one of no use.
    CMediaType AnyType()
    {
        struct Size {
            std::uint32_t widthPx;
            std::uint32_t heightPx;
        };
        const Size size = OneOf<Size>(
            {{1, 1}, {3, 5}, {64, 48}, {kWidthPx, kHeightPx}, {kWidthPx, kHeightPx}, {333, 111}, {640, 480}});
        CMediaType type = OneOf<int>({0, 1}) == 0
                              ? BuiltType(MEDIASUBTYPE_RGB24, 24, BI_RGB, size.widthPx, size.heightPx)
                              : BuiltType(MEDIASUBTYPE_RGB32, 32, BI_RGB, size.widthPx, size.heightPx);
        BITMAPINFOHEADER& header = HeaderOf(type);
        switch (Below(12)) {
        case 0:
            return CMediaType(&MEDIATYPE_Video); // without a block
        case 1:
            header.biWidth = std::numeric_limits<LONG>::max();
            break;
        case 2:
            header.biWidth = -header.biWidth;
            break;
        case 3:
            header.biHeight = std::numeric_limits<LONG>::min();
            break;
        case 4:
            header.biBitCount = OneOf<WORD>({0, 1, 16, 65535});
            break;
        case 5:
            header.biSizeImage = OneOf<DWORD>({0, 1, 0xFFFFFFFF});
            break;
        case 6:
            type.cbFormat = OneOf<ULONG>({1, 48, sizeof(VIDEOINFOHEADER) - 1});
            break;
        case 7:
        case 8:
            header.biHeight = -header.biHeight;
            break; // top-down
        default:
            break;
        }
        return type;
    }

    // --- The camera.

    void ConnectCamera() { EXPECT_EQ(m_control->Connect(), S_OK); }
    void DisconnectCamera() { EXPECT_EQ(m_control->Disconnect(), S_OK); }

    void SetConnectionAsAtFirst()
    {
        EXPECT_EQ(m_control->SetRole(0), S_OK);
        EXPECT_EQ(m_control->SetDeviceId(Text(L"127.0.0.1").Get()), S_OK);
        EXPECT_EQ(m_control->SetParamChannel(0), S_OK);
        EXPECT_EQ(m_control->SetParamSource(Text(L"Source0").Get()), S_OK);
    }

    void ChangeConnection()
    {
        switch (Below(10)) {
        case 0:
            EXPECT_EQ(m_control->SetRole(OneOf<UINT>({0, 1, 2})), S_OK);
            break;
        case 1:
            EXPECT_EQ(m_control->SetDeviceId(
                          Text(OneOf({L"127.0.0.1", kCameraName, L"127.0.0.9", L"nobody", L""})).Get()),
                      S_OK);
            break;
        case 2:
            EXPECT_EQ(m_control->SetParamChannel(OneOf<UINT>({0, 1, 65536})), S_OK);
            break;
        case 3:
            EXPECT_EQ(m_control->SetParamSource(Text(OneOf({L"Source0", L"Source1", L"none", L""})).Get()),
                      S_OK);
            break;
        case 4:
            EXPECT_EQ(m_control->SetUnicastPort(OneOf<UINT>({0, 27331, 27332})), S_OK);
            break;
        case 5:
            EXPECT_EQ(m_control->SetMulticastAddress(
                          Text(OneOf({L"239.192.7.1", L"239.192.7.2", L"127.0.0.1", L"none", L""})).Get()),
                      S_OK);
            break;
        case 6:
            EXPECT_EQ(m_control->SetMulticastPort(OneOf<UINT>({0, 27333, 27334})), S_OK);
            break;
        default:
            SetConnectionAsAtFirst();
            break;
        }
        ConnectCamera();
    }

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

    // --- The peer.

    void ChangePeer()
    {
        m_peer.taking = OneOf(
            {Taking::Readily, Taking::Readily, Taking::Slowly, Taking::NotAtAll, Taking::AsWhileFlushing});
        m_peer.AnswerRenegotiation(OneOf<HRESULT>({S_OK, VFW_E_TYPE_NOT_ACCEPTED}));
        m_peer.refusesConnections = Below(6) == 0;
    }

    const TemporaryFolder m_folder{L"random-host-"}; // for what diagnostics write
    const WorkingDirectory m_current{m_folder.Path()};
    Watchdog m_watchdog;
    std::minstd_rand m_random{GetParam().seed};
    int m_calls = 0;
    int m_reconnects = 0; // asked of the graph while stopped
    std::chrono::milliseconds m_longestStop{0};
    bool m_isActive = false;
    std::deque<std::string> m_last;

    RandomPeer m_peer;
    VxComPtr<IBaseFilter> m_filter;
    VxComPtr<IPin> m_pin;
    VxComPtr<IAMStreamConfig> m_config;
    VxComPtr<IVxDSSource> m_control;
    VxComPtr<IMediaControl> m_media; // none without a graph
};

TEST_P(RandomHostTest, StopsForGoodWhateverCameBefore)
{
    // Chosen: nine walks take more than a minute; VX_LONG_TESTS asks for more than ./test takes time for.
    const bool isLong = !EnvironmentText(L"VX_LONG_TESTS").empty();
    const auto end = Clock::now() + std::chrono::seconds(isLong ? 60 : 8);
    constexpr int kFewestCalls = 50; // chosen: however slow the machine is, something was tried
    std::printf("%s\n", testing::PrintToString(GetParam()).c_str());
    while ((Clock::now() < end || Calls() < kFewestCalls) && !HasFailure())
        CallAnything();
    ASSERT_FALSE(HasFailure()) << "after " << Calls() << " calls, the last of them" << LastCalls();

    ExpectAPicture();
    ExpectSmallSamples();

    EXPECT_EQ(Peer().Fault(), "");
    std::printf("%d calls, %d reconnects by the graph, %d samples (%d pictures), %d in buffers of the peer's "
                "own, the "
                "longest stop took %lld ms\n",
                Calls(), Reconnects(), Peer().Samples(), Peer().Pictures(), Peer().SmallSamples(),
                static_cast<long long>(LongestStop().count()));
}

INSTANTIATE_TEST_SUITE_P(Walks, RandomHostTest, testing::ValuesIn(Walks()),
                         [](const auto& test) { return NameOf(test.param); });

} // namespace
