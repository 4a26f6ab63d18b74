#include "system/ChildProcess.h"
#include "system/ListeningNetwork.h"
#include "system/RoadTest.h"

#include "VxCamera/transport/SystemNetwork.h"
#include "VxSimulator/picture/FrameNumberStrip.h"
#include "VxSimulator/picture/PictureFormat.h"
#include "VxSimulator/picture/TestPicture.h"
#include "vxgrab/ComText.h"

#include <algorithm>
#include <string>

namespace {

using vxgrab::ComPtr;
using vxgrab::ComText;

// A receiver that never saw the camera delivers the size in its settings; this is what they are at first.
constexpr std::uint32_t kWidthPx = 1280;
constexpr std::uint32_t kHeightPx = 720;

struct Receiver {
    const char* name;
    UINT role;
    const char* destination; ///< to which the other program directs the stream
    std::uint16_t port;
};

/// The filter as a mere receiver: another program controls the camera.
class OtherControllerTest : public RoadTest, public testing::WithParamInterface<Receiver> {
protected:
    OtherControllerTest()
        : m_interfaces(transport::MakeSystemInterfaceList()), m_camera(m_network, *m_interfaces, m_clock)
    {
        VxSimulatorOptions options = SmallCamera("BGR8");
        options.widthPx = kWidthPx;
        options.heightPx = kHeightPx;
        options.frameRateHz = 5; // chosen: 2.8 MB a frame
        Start(m_camera, options);
        m_address = m_camera.ControlEndpoint().address.ToString();
    }

    ComPtr<IBaseFilter> ReceivingFilter()
    {
        ComPtr<IBaseFilter> filter = m_module.CreateFilter();
        if (!filter)
            return filter;
        const ComPtr<IVxDSSource> control = ControlOf(filter);
        EXPECT_HRESULT_SUCCEEDED(control->SetRole(GetParam().role));
        EXPECT_HRESULT_SUCCEEDED(control->SetUnicastPort(GetParam().port));
        EXPECT_HRESULT_SUCCEEDED(control->SetMulticastAddress(ComText(GetParam().destination).Get()));
        EXPECT_HRESULT_SUCCEEDED(control->SetMulticastPort(GetParam().port));
        EXPECT_HRESULT_SUCCEEDED(control->SetDefaultBufferSize(kWidthPx * kHeightPx * 3));
        Connect(filter, m_address);
        return filter;
    }

    static std::wstring Wide(const std::string& ascii) { return {ascii.begin(), ascii.end()}; }

    /// Demands that a frame is what the camera sent for the number that it shows.
    static void ExpectSent(const CaughtFrame& frame, const vxgrab::FrameFormat& format)
    {
        const auto view = ViewOf(frame, format);
        const auto number = ReadFrameNumber(view);
        ASSERT_TRUE(number) << "frame " << frame.number << " shows no number";
        const auto sent = simulator::TestPictureBgr(*number, kWidthPx, kHeightPx,
                                                    simulator::FindPictureFormat("BGR8")->code);
        ASSERT_EQ(view.pixels.size(), sent.size());
        ASSERT_TRUE(format.isBottomUp);
        const std::size_t rowBytes = std::size_t{kWidthPx} * 3;
        for (std::size_t y = 0; y < kHeightPx; ++y)
            ASSERT_TRUE(std::ranges::equal(view.pixels.subspan((kHeightPx - 1 - y) * rowBytes, rowBytes),
                                           std::span(sent).subspan(y * rowBytes, rowBytes)))
                << "frame " << frame.number << ", row " << y;
    }

    ListeningNetwork m_network;
    std::unique_ptr<transport::IInterfaceList> m_interfaces;
    VxSteadyClock m_clock;
    VxSimulatedCamera m_camera;
    std::string m_address;
};

TEST_P(OtherControllerTest, PicturesArrivePixelForPixelAndTheCameraIsNeverWrittenTo)
{
    FrameCatcher catcher;
    {
        GrabberGraph graph(ReceivingFilter(), MEDIASUBTYPE_RGB24, catcher);
        ASSERT_TRUE(graph.IsBuilt());
        ASSERT_HRESULT_SUCCEEDED(graph.Run());
        EXPECT_FALSE(m_camera.ControlOwner()) << "the filter took control";

        ChildProcess controller(WindowsPath(EnvironmentText(L"VX_PARTNER")),
                                {L"hold-camera", Wide(m_address), Wide(GetParam().destination),
                                 std::to_wstring(GetParam().port)});
        ASSERT_TRUE(controller.WaitForOutput("streaming", kPatience)) << controller.Output();
        const auto owner = m_camera.ControlOwner();
        ASSERT_TRUE(owner);

        for (int i = 0; i < 5; ++i) {
            const auto frame = catcher.WaitForPicture(kPatience);
            ASSERT_TRUE(frame) << "no picture came";
            EXPECT_EQ(frame->mediaTime, i);
            ExpectSent(*frame, graph.Format());
        }
        EXPECT_LT(graph.TimedStop(), kStopLimit);

        EXPECT_EQ(m_camera.ControlOwner(), owner);
        EXPECT_TRUE(m_camera.IsAcquiring()) << "the filter stopped what is not its own";
        std::size_t writes = 0;
        for (const auto& [sender, command] : m_network.Commands()) {
            if (command == gvcp::Command::Discovery || command == gvcp::Command::ReadReg ||
                command == gvcp::Command::ReadMem)
                continue;
            ++writes;
            EXPECT_EQ(sender.ToString(), owner->ToString())
                << "sent " << std::hex << static_cast<int>(command);
        }
        EXPECT_GT(writes, 0u) << "not even the other program's writing was seen";
    }
    EXPECT_TRUE(m_module.IsUnused());
}

INSTANTIATE_TEST_SUITE_P(WholeRoad, OtherControllerTest,
                         testing::Values(Receiver{"Unicast", 1, "127.0.0.1", 27'321},
                                         Receiver{"Multicast", 2, "239.192.7.9", 27'322}),
                         [](const auto& test) { return std::string(test.param.name); });

} // namespace
