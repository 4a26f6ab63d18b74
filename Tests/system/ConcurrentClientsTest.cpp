#include "system/RoadTest.h"

#include "support/registry/PrivateUserRegistry.h"
#include "vxgrab/ComText.h"

#include <strmif.h>

#include <array>
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <future>
#include <random>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace {

using std::chrono::seconds;
using vxgrab::ComPtr;
using vxgrab::ComText;

/// One client that calls the control interface at random, but always the same for the same seed.
class RandomClient {
public:
    RandomClient(ComPtr<IBaseFilter> filter, std::string camera, unsigned seed)
        : m_filter(std::move(filter)),
          m_control(ControlOf(m_filter)),
          m_camera(std::move(camera)),
          m_random(seed)
    {
    }

    void CallFor(seconds duration)
    {
        const auto end = std::chrono::steady_clock::now() + duration;
        while (std::chrono::steady_clock::now() < end) {
            CallOne();
            ++m_calls;
        }
    }

    [[nodiscard]] std::size_t Calls() const { return m_calls; }

    /// Every result that a call had.
    [[nodiscard]] const std::set<HRESULT>& Results() const { return m_results; }

private:
    using Call = void (RandomClient::*)();

    unsigned Below(unsigned limit) { return static_cast<unsigned>(m_random() % limit); }

    void Note(HRESULT result) { m_results.insert(result); }

    void CallOne()
    {
        // Connection changes take a while, so they are rarer than the rest.
        static constexpr std::array<Call, 14> kCalls{
            &RandomClient::ReadNumbers,    &RandomClient::ReadTexts,       &RandomClient::ReadCounters,
            &RandomClient::StoreNumber,    &RandomClient::StoreText,       &RandomClient::ChangePicture,
            &RandomClient::ReadFeature,    &RandomClient::ChangeFeature,   &RandomClient::ReadFormat,
            &RandomClient::ExecuteFeature, &RandomClient::ReadNumbers,     &RandomClient::SelectFeatures,
            &RandomClient::ChangeDefault,  &RandomClient::ChangeConnection};
        (this->*kCalls[Below(kCalls.size())])();
    }

    void ReadNumbers()
    {
        using Getter = HRESULT (STDMETHODCALLTYPE IVxDSSource::*)(UINT*);
        static const std::array<Getter, 15> kGetters{&IVxDSSource::GetRole,
                                                     &IVxDSSource::GetUnicastPort,
                                                     &IVxDSSource::GetMulticastPort,
                                                     &IVxDSSource::GetParamChannel,
                                                     &IVxDSSource::GetBufferCount,
                                                     &IVxDSSource::GetDefaultBufferSize,
                                                     &IVxDSSource::GetDropThreshold,
                                                     &IVxDSSource::GetWidth,
                                                     &IVxDSSource::GetHeight,
                                                     &IVxDSSource::GetParameterArray,
                                                     &IVxDSSource::GetOutputPixelType,
                                                     &IVxDSSource::GetKernelSize,
                                                     &IVxDSSource::GetZoomValue,
                                                     &IVxDSSource::GetSourceCount,
                                                     &IVxDSSource::GetParameterCount};
        UINT number = 0;
        UINT other = 0;
        BOOL flag = FALSE;
        Note((m_control.Get()->*kGetters[Below(kGetters.size())])(&number));
        Note(m_control->GetOutputSize(&number, &other));
        Note(m_control->GetDiagnosticsEnabled(&flag));
        Note(m_control->IsParameterArrayAvailable(&flag));
    }

    void ReadTexts()
    {
        using Getter = HRESULT (STDMETHODCALLTYPE IVxDSSource::*)(BSTR*);
        static const std::array<Getter, 4> kGetters{
            &IVxDSSource::GetDeviceId, &IVxDSSource::GetMulticastAddress, &IVxDSSource::GetParamSource,
            &IVxDSSource::GetDefaultSummary};
        ComText text;
        Note((m_control.Get()->*kGetters[Below(kGetters.size())])(text.Put()));
        ComText source;
        Note(m_control->GetSourceName(Below(3), source.Put()));
    }

    void ReadCounters()
    {
        ComPtr<IAMDroppedFrames> counters;
        Note(m_filter.Query(IID_IAMDroppedFrames, counters));
        LONG count = 0;
        Note(counters->GetNumDropped(&count));
        Note(counters->GetNumNotDropped(&count));
    }

    void StoreNumber()
    {
        switch (Below(10)) {
        case 0:
            return Note(m_control->SetDropThreshold(Below(4)));
        case 1:
            return Note(m_control->SetBufferCount(4 + Below(8)));
        case 2:
            return Note(m_control->SetKernelSize(static_cast<INT>(Below(6)))); // refuses some
        case 3:
            return Note(m_control->SetZoomValue(static_cast<INT>(Below(12))));
        case 4:
            return Note(m_control->SetUnicastPort(Below(65536)));
        case 5:
            return Note(m_control->SetRole(Below(4))); // three are known
        case 6:
            return Note(m_control->SetMulticastPort(Below(65536)));
        case 7:
            return Note(m_control->SetParamChannel(Below(3)));
        case 8:
            return Note(m_control->SetDefaultBufferSize(Below(1U << 20)));
        default:
            return Note(m_control->SetDiagnosticsEnabled(static_cast<BOOL>(Below(2))));
        }
    }

    void StoreText()
    {
        switch (Below(8)) {
        case 0: // rarely: connecting to a camera that is not there takes long
            return Note(m_control->SetDeviceId(ComText("127.0.0.99").Get()));
        case 1:
            return Note(m_control->SetParamSource(ComText("").Get()));
        case 2:
            return Note(m_control->SetMulticastAddress(ComText("239.192.1.2").Get()));
        default:
            return Note(m_control->SetDeviceId(ComText(m_camera).Get()));
        }
    }

    void ChangePicture()
    {
        switch (Below(4)) {
        case 0:
            return Note(m_control->SetWidth(static_cast<INT>(64 * (1 + Below(5)))));
        case 1:
            return Note(m_control->SetHeight(static_cast<INT>(48 * (1 + Below(5)))));
        case 2:
            return Note(m_control->SetOutputSize(static_cast<INT>(64 * Below(6)), 240)); // refuses 0
        default:
            return Note(m_control->SetOutputPixelType(Below(3))); // refuses 2
        }
    }

    void SelectFeatures() { Note(m_control->SetParameterArray(Below(4))); } // refuses 3

    void ReadFeature()
    {
        ComText name;
        Note(m_control->GetParameterName(Below(40), name.Put()));
        ComText text;
        BOOL flags[3] = {};
        UINT count = 0;
        switch (Below(5)) {
        case 0:
            return Note(m_control->GetParameterValue(name.Get(), text.Put()));
        case 1:
            return Note(m_control->GetParameterType(name.Get(), text.Put()));
        case 2:
            return Note(m_control->GetParameterCategory(name.Get(), text.Put()));
        case 3:
            return Note(m_control->GetParameterAccess(name.Get(), &flags[0], &flags[1], &flags[2]));
        default:
            Note(m_control->GetEnumEntryCount(name.Get(), &count));
            Note(m_control->GetEnumEntryName(name.Get(), Below(3), text.Put()));
            return Note(m_control->GetParameterVisibility(name.Get(), &count));
        }
    }

    void ChangeFeature()
    {
        ComText error;
        const ComText value(std::to_string(64 * (1 + Below(5))));
        Note(m_control->SetParameterValue(ComText(Below(2) == 0 ? "Width" : "NoSuchFeature").Get(),
                                          value.Get(), error.Put()));
    }

    void ExecuteFeature()
    {
        static constexpr std::array<const char*, 4> kNames{"AcquisitionStart", "AcquisitionStop", "Width",
                                                           "NoSuchFeature"};
        ComText error;
        Note(m_control->ExecuteCommand(ComText(kNames[Below(kNames.size())]).Get(), error.Put()));
    }

    /// Of the test's own registry.
    void ChangeDefault() { Note(Below(3) == 0 ? m_control->ClearDefault() : m_control->SaveDefault()); }

    void ReadFormat()
    {
        const ComPtr<IPin> pin = FirstPin(*m_filter.Get(), PINDIR_OUTPUT);
        ComPtr<IAMStreamConfig> config;
        Note(pin.Query(IID_IAMStreamConfig, config));
        AM_MEDIA_TYPE* format = nullptr;
        Note(config->GetFormat(&format));
        if (format != nullptr) {
            ::CoTaskMemFree(format->pbFormat);
            ::CoTaskMemFree(format);
        }
    }

    void ChangeConnection() { Note(Below(3) == 0 ? m_control->Disconnect() : m_control->Connect()); }

    ComPtr<IBaseFilter> m_filter;
    ComPtr<IVxDSSource> m_control;
    std::string m_camera;
    std::minstd_rand m_random;
    std::size_t m_calls = 0;
    std::set<HRESULT> m_results;
};

class ConcurrentClientsTest : public RoadTest {
protected:
    const PrivateUserRegistry m_registry; // for the defaults that are saved

    static constexpr unsigned kClients = 4;
    /// Chosen: a connect to a camera that is not there takes half a second, and the others wait for it.
    static constexpr std::size_t kLeastCallsPerSecond = 5;
    /// Chosen: some 10 000 calls in a minute leave about 110 blocks more than the few seconds before, and
    /// fewer bytes (measured); 700 of them connect or disconnect, and would show with a block each.
    static constexpr std::size_t kMoreBlocks = 500;
    static constexpr std::size_t kMoreBytes = std::size_t{1} << 20;

    /// Lets clients call while a graph runs; then a picture must come again, and the graph must stop in time.
    void CallWhileTheGraphRuns(const VxSimulatedCamera& camera, seconds duration, unsigned seed)
    {
        const std::string address = camera.ControlEndpoint().address.ToString();
        FrameCatcher catcher;
        GrabberGraph graph(FilterFor(camera), MEDIASUBTYPE_RGB24, catcher);
        ASSERT_TRUE(graph.IsBuilt());
        ASSERT_HRESULT_SUCCEEDED(graph.Run());
        ASSERT_TRUE(catcher.WaitForPicture(kPatience));
        const auto filter = ComPtr<IBaseFilter>::Share(&graph.Source());

        CallFromManyThreads(filter, address, duration, seed);
        if (HasFatalFailure())
            return;

        ExpectPicturesAgain(filter, address, {catcher, graph.Format()});
        EXPECT_LT(graph.TimedStop(), kStopLimit);
    }

private:
    static void CallFromManyThreads(const ComPtr<IBaseFilter>& filter, const std::string& address,
                                    seconds duration, unsigned seed)
    {
        std::vector<std::future<RandomClient>> clients;
        for (unsigned i = 0; i < kClients; ++i)
            clients.push_back(std::async(std::launch::async, [=] {
                const ComApartment apartment;
                RandomClient client(filter, address, seed + i);
                client.CallFor(duration);
                return client;
            }));
        std::size_t calls = 0;
        for (auto& each : clients) {
            // Chosen: far above the longest call, a connect to a camera that is not there with three others
            // waiting.
            if (each.wait_for(duration + seconds(60)) != std::future_status::ready) {
                std::fputs("a client does not come back: deadlock\n", stderr);
                std::_Exit(EXIT_FAILURE); // nothing can be taken apart any more
            }
            const RandomClient client = each.get();
            EXPECT_GT(client.Calls(), kLeastCallsPerSecond * static_cast<std::size_t>(duration.count()));
            for (const HRESULT result : client.Results())
                EXPECT_TRUE(IsDocumented(result)) << std::hex << result;
            calls += client.Calls();
        }
        RecordProperty("Calls", std::to_string(calls));
    }

    /// Results that the control interface's description names, and what connecting says of a camera that is
    /// not there or was given back meanwhile.
    static bool IsDocumented(HRESULT result)
    {
        return SUCCEEDED(result) || result == E_FAIL || result == E_INVALIDARG || result == E_UNEXPECTED;
    }

    struct Output {
        FrameCatcher& catcher;
        const vxgrab::FrameFormat& format; ///< for which the graph was connected
    };

    /// Undoes what keeps pictures away by right: another output than the graph was connected for. A picture
    /// larger than the connection is left out, and Wine's grabber takes no other size while it runs. Which
    /// size the graph was connected for depends on what earlier clients left in the camera.
    static void ExpectPicturesAgain(const ComPtr<IBaseFilter>& filter, const std::string& address,
                                    const Output& output)
    {
        const auto control = ControlOf(filter);
        EXPECT_HRESULT_SUCCEEDED(control->ClearDefault());
        EXPECT_HRESULT_SUCCEEDED(control->SetRole(0));
        EXPECT_HRESULT_SUCCEEDED(control->SetKernelSize(0));
        EXPECT_HRESULT_SUCCEEDED(control->SetOutputPixelType(0)); // disconnects
        EXPECT_HRESULT_SUCCEEDED(control->SetOutputSize(output.format.widthPx, output.format.heightPx));
        Connect(filter, address);
        output.catcher.Forget();
        EXPECT_TRUE(output.catcher.WaitForPicture(kPatience)) << "no picture after the clients have gone";
    }
};

TEST_F(ConcurrentClientsTest, MayCallAnythingWhileTheGraphRuns)
{
    VxSimulatedCamera camera;
    Start(camera, SmallCamera("YUV422_8"));
    // Before anything is counted: loads modules, fills caches, lets threads meet at locks.
    CallWhileTheGraphRuns(camera, seconds(3), 100);
    ASSERT_FALSE(HasFailure());
    const std::size_t graphs = GrabberGraph::BuiltUntilNow();
    const ProcessUse settled = MeasureProcess();
    const HeapUse settledHeaps = MeasureHeaps();
    ASSERT_GT(settledHeaps.blocks, 0u);

    CallWhileTheGraphRuns(camera, seconds(60), 1);

    EXPECT_TRUE(m_module.IsUnused());
    EXPECT_FALSE(camera.ControlOwner());
    ProcessUse limit = LimitAfter(settled, graphs);
    limit.AllowEvents(8); // chosen: a hundred connects with a loss each are far more
    const ProcessUse held = MeasureProcessUntilWithin(limit);
    EXPECT_TRUE(IsWithin(held, limit)) << "allowed: " << Describe(limit) << "\nheld:    " << Describe(held);
    const HeapUse heaps = MeasureHeaps();
    EXPECT_LT(heaps.blocks, settledHeaps.blocks + kMoreBlocks);
    EXPECT_LT(heaps.bytes, settledHeaps.bytes + kMoreBytes);
    RecordProperty("MoreBlocks", std::to_string(static_cast<long long>(heaps.blocks - settledHeaps.blocks)));
}

} // namespace
