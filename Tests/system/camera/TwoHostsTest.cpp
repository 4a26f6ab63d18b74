#include "CameraLink.h"

#include "VxDSSource/camera/VxGenParameter.h"
#include "VxDSSource/camera/VxGenParameterArray.h"
#include "VxDSSource/camera/VxImage.h"
#include "VxSimulator/VxSimulatedCamera.h"

#include <gtest/gtest.h>

#include <sys/wait.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <string_view>
#include <tuple>

// One camera, and receivers on two other hosts; run through run-with-two-hosts. The receivers are this
// program again, with an argument, entered into the hosts' networks.

namespace {

constexpr const char* kCamera = "10.77.0.1";
constexpr const char* kGroup = "239.255.42.7";
constexpr std::uint16_t kPort = 27'400;
constexpr int kFrames = 30;
constexpr int kMostFrames = 1000;

std::string StatisticText(VxStream& stream, const char* name)
{
    VxString text;
    VxGenParameter* const parameter = stream.GetParameters()->Get(name);
    if (parameter != nullptr)
        std::ignore = parameter->ToString(text);
    return text.Narrow();
}

/// @return  UDP datagrams that have been sent from this network so far; -1 when the system does not tell
long long DatagramsSent()
{
    std::ifstream counters("/proc/self/net/snmp");
    std::string line;
    for (int udpLines = 0; std::getline(counters, line);) {
        constexpr std::string_view kUdp = "Udp: ";
        if (!line.starts_with(kUdp) || ++udpLines != 2) // the first one has the names
            continue;
        std::istringstream numbers(line.substr(kUdp.size()));
        long long received = 0;
        long long noPorts = 0;
        long long errors = 0;
        long long sent = -1;
        numbers >> received >> noPorts >> errors >> sent;
        return sent;
    }
    return -1;
}

/// Receives some frames, of which the network damages some, as somebody who does not control the camera.
/// @param kind  "group" or "unicast"
/// @return  0, or a number that tells what was wrong
int Receive(std::string_view kind, const char* connectionId)
{
    VxStreamGEV stream;
    const VxResult opened = kind == "group" ? stream.Open(connectionId, kGroup, kPort, 0, VxString(), 64)
                                            : stream.Open(connectionId, kPort, 0, VxString(), 64);
    if (!opened.IsOK())
        return 2;
    const long long sentBefore = DatagramsSent(); // to find the camera
    std::printf("listening at %s\n", stream.GetLocalIPAddress().GetAscii());
    VxPipeline pipeline(&stream);
    pipeline.SetBufferSize(640 * 480);
    if (!pipeline.Start().IsOK())
        return 3;
    int whole = 0;
    int damaged = 0;
    while (whole + damaged < kFrames || whole == 0 || damaged == 0) {
        VxBuffer* buffer = nullptr;
        if (!pipeline.RetrieveNextBuffer(&buffer, 20'000).IsOK() || whole + damaged > kMostFrames)
            return 4;
        const VxError code = buffer->GetOperationResult().Code();
        if (code != VxError::MissingPackets && (code != VxError::Ok || buffer->GetImage()->GetWidth() != 640))
            return 5;
        ++(code == VxError::Ok ? whole : damaged);
        std::ignore = pipeline.ReleaseBuffer(buffer);
    }
    std::ignore = pipeline.Stop();
    // A passive receiver never sends, whatever is missing.
    if (StatisticText(stream, "ResendRequests") != "0" || sentBefore < 0 || DatagramsSent() != sentBefore)
        return 6;
    return StatisticText(stream, "CameraIPAddress") == kCamera ? 0 : 7;
}

/// A receiver on another host.
class RemoteReceiver {
public:
    RemoteReceiver(const char* host, const std::string& arguments)
    {
        const std::string program = std::filesystem::read_symlink("/proc/self/exe").string();
        const std::string pid = std::getenv(host) != nullptr ? std::getenv(host) : "";
        m_pipe = ::popen(("nsenter -t " + pid + " -n " + program + " --receive " + arguments).c_str(), "r");
    }
    ~RemoteReceiver() { std::ignore = Result(); }
    RemoteReceiver(const RemoteReceiver&) = delete;
    RemoteReceiver& operator=(const RemoteReceiver&) = delete;

    /// @return  what it says when it listens
    std::string Line()
    {
        std::array<char, 256> line{};
        return std::fgets(line.data(), line.size(), m_pipe) != nullptr ? line.data() : "";
    }
    int Result()
    {
        if (m_pipe == nullptr)
            return m_result;
        const int status = ::pclose(m_pipe);
        m_pipe = nullptr;
        m_result = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
        return m_result;
    }

private:
    std::FILE* m_pipe = nullptr;
    int m_result = -1;
};

class TwoHostsTest : public testing::Test {
protected:
    void SetUp() override
    {
        ASSERT_NE(std::getenv("VX_HOST_1"), nullptr) << "run through run-with-two-hosts";
        VxSimulatorOptions options;
        options.address = *transport::Ipv4Address::Parse(kCamera);
        options.frameRateHz = 50;
        options.faults.dropShare = 0.01; // of some 40 packets a frame
        const VxResult started = m_camera.Start(options);
        ASSERT_TRUE(started.IsOK()) << started.GetDescription().Narrow();
        m_link.Connect(kCamera);
    }
    void SendTo(const char* address)
    {
        ASSERT_TRUE(m_link.Gev().SetStreamDestination(address, kPort, 0).IsOK());
        ASSERT_TRUE(m_link.Features().ExecuteCommand("AcquisitionStart").IsOK());
    }

    VxSimulatedCamera m_camera;
    CameraLink m_link;
};

TEST_F(TwoHostsTest, AGroupIsReceivedOnBothHostsWhetherTheCameraIsKnownOrNot)
{
    RemoteReceiver known("VX_HOST_1", std::string("group ") + kCamera);
    RemoteReceiver unknown("VX_HOST_2", "group nobody");
    EXPECT_EQ(known.Line(), "listening at 10.77.0.11\n"); // the interface that leads to the camera
    EXPECT_EQ(unknown.Line(), "listening at 10.77.0.12\n");

    SendTo(kGroup);

    EXPECT_EQ(known.Result(), 0);
    EXPECT_EQ(unknown.Result(), 0);
    EXPECT_EQ(m_camera.Counters().packetsResent, 0u);
}

TEST_F(TwoHostsTest, AnotherHostReceivesWhatThisOneDirectsToItsPort)
{
    RemoteReceiver receiver("VX_HOST_2", std::string("unicast ") + kCamera);
    EXPECT_EQ(receiver.Line(), "listening at 10.77.0.12\n");

    SendTo("10.77.0.12");

    EXPECT_EQ(receiver.Result(), 0);
}

} // namespace

int main(int argc, char** argv)
{
    std::setvbuf(stdout, nullptr, _IOLBF, 0); // whoever reads it waits for a line
    if (argc == 4 && std::string_view(argv[1]) == "--receive")
        return Receive(argv[2], argv[3]);
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
