#include "CameraLink.h"

#include "VxCamera/surface/ForceIpAddress.h"
#include "VxDSSource/camera/VxDeviceInfo.h"
#include "VxDSSource/camera/VxGenParameter.h"
#include "VxDSSource/camera/VxGenParameterArray.h"
#include "VxDSSource/camera/VxInterface.h"
#include "VxDSSource/camera/VxSystem.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <set>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

constexpr std::uint32_t kDetectionMs = 400;

/// Interfaces and cameras as run-in-networks has made them.
class NetworksTest : public testing::Test {
protected:
    void SetUp() override { m_system.SetDetectionTimeout(kDetectionMs); }

    /// @return  "vx1 (192.168.71.1): 02-00-00-00-00-01 192.168.71.20 valid", a line per interface
    std::vector<std::string> Find()
    {
        EXPECT_TRUE(m_system.Find().IsOK());
        std::vector<std::string> lines;
        for (std::size_t i = 0; i < m_system.GetInterfaceCount(); ++i) {
            const VxInterface& each = *m_system.GetInterface(i);
            std::string line = each.GetDisplayName().Narrow() + ":";
            for (std::size_t n = 0; n < each.GetDeviceCount(); ++n) {
                const VxDeviceInfo& info = *each.GetDeviceInfo(n);
                line += " " + info.GetConnectionID().Narrow() + " " + info.GetIPAddress().Narrow() +
                        (info.IsConfigurationValid() ? " valid" : " not valid");
            }
            lines.push_back(line);
        }
        return lines;
    }
    /// The line of Find for this interface; "" without one.
    static std::string LineOf(const std::vector<std::string>& lines, const std::string& name)
    {
        for (const std::string& line : lines)
            if (line.starts_with(name + " "))
                return line;
        return {};
    }
    /// Searches while something happens in another thread; the search must take its time and no longer.
    std::vector<std::string> FindWhile(const std::function<void()>& event)
    {
        std::thread other(event);
        const auto start = Clock::now();
        auto found = Find();
        const auto duration = Clock::now() - start;
        other.join();
        EXPECT_LT(duration, std::chrono::milliseconds(2 * kDetectionMs));
        return found;
    }
    static void Ip(const std::string& arguments)
    {
        EXPECT_EQ(std::system(("ip " + arguments).c_str()), 0)
            << arguments; // NOLINT(cert-env33-c): a test's machine
    }
    static VxResult ConnectResult(const char* id)
    {
        VxResult result;
        const DevicePointer device(VxDevice::CreateAndConnect(id, &result));
        return result;
    }
    std::string Link(const char* name)
    {
        VxString text;
        VxGenParameter* const parameter = m_link.device->GetCommunicationParameters()->Get(VxString(name));
        EXPECT_NE(parameter, nullptr) << name;
        if (parameter != nullptr) {
            EXPECT_TRUE(parameter->ToString(text).IsOK());
        }
        return text.Narrow();
    }
    /// Everything that the receiver tells of itself.
    std::string Statistics()
    {
        std::string all;
        VxGenParameterArray& parameters = *m_link.stream.GetParameters();
        for (std::size_t i = 0; i < parameters.GetCount(); ++i) {
            VxString text;
            if (parameters.Get(i)->ToString(text).IsOK())
                all += parameters.Get(i)->GetName().Narrow() + "=" + text.Narrow() + "\n";
        }
        return all;
    }
    void ReceiveTenFrames()
    {
        m_link.Start();
        for (int i = 0; i < 10; ++i) {
            const VxBuffer* const buffer = m_link.Next();
            ASSERT_NE(buffer, nullptr);
            const VxResult received = buffer->GetOperationResult();
            EXPECT_TRUE(received.IsOK())
                << "frame " << i << ": " << received.GetDescription().Narrow() << "\n"
                << Statistics();
        }
        m_link.Stop();
    }

    VxSystem m_system;
    CameraLink m_link;
};

TEST_F(NetworksTest, EveryInterfaceThatIsUpIsListedWithItsCamerasInTheSameOrderEachTime)
{
    const auto start = Clock::now();

    const auto first = Find();

    // All interfaces at once, and not one after the other.
    EXPECT_LT(Clock::now() - start, std::chrono::milliseconds(2 * kDetectionMs));
    EXPECT_EQ(first, (std::vector<std::string>{
                         "lo (127.0.0.1):",
                         "vx1 (192.168.71.1, 169.254.7.7): 02-00-00-00-00-01 192.168.71.20 valid",
                         "vx2 (192.168.72.1): 02-00-00-00-00-02 10.99.9.9 not valid",
                         "vx3 (192.168.71.2): 02-00-00-00-00-03 192.168.71.30 valid",
                         "vx4 (10.8.0.2):",
                         "vx6 (192.168.74.1): 02-00-00-00-00-06 192.168.71.40 not valid",
                     }));
    EXPECT_EQ(Find(), first);
}

TEST_F(NetworksTest, ACameraIsConnectedByAnyOfItsNamesThroughTheInterfaceOnWhichItAnswers)
{
    for (const char* id : {"02-00-00-00-00-01", "02:00:00:00:00:01", "192.168.71.20", "R1", "right"}) {
        m_link.Connect(id);
        EXPECT_EQ(Link("HostIPAddress"), "192.168.71.1") << id;
        EXPECT_EQ(Link("DeviceIPAddress"), "192.168.71.20") << id;
        m_link.device.reset();
    }
}

TEST_F(NetworksTest, TwoInterfacesInOneSubnetAreToldApartWhateverTheRoutesSay)
{
    for (const char* id : {"02-00-00-00-00-03", "192.168.71.30", "twin"}) {
        m_link.Connect(id);
        EXPECT_EQ(Link("HostInterface"), "vx3") << id;
        EXPECT_EQ(Link("HostIPAddress"), "192.168.71.2") << id;
        m_link.device.reset();
    }
    m_link.Connect("twin");
    m_link.OpenStream("twin");
    EXPECT_EQ(m_link.stream.GetLocalIPAddress(), "192.168.71.2");
    ReceiveTenFrames();
}

TEST_F(NetworksTest, AStreamOpenedByAddressUsesTheInterfaceOnWhichTheCameraAnswered)
{
    m_link.Connect("192.168.71.30");

    m_link.OpenStream("192.168.71.30");

    EXPECT_EQ(m_link.stream.GetLocalIPAddress(), "192.168.71.2");
    ReceiveTenFrames();
}

TEST_F(NetworksTest, ACameraInAWrongSubnetIsRefusedThenForcedToAnAddressAndThenConnected)
{
    for (const char* id : {"02-00-00-00-00-02", "wrong", "10.99.9.9"}) {
        const VxResult refused = ConnectResult(id);
        EXPECT_EQ(refused.Code(), VxError::InvalidConfiguration) << id;
        EXPECT_NE(refused.GetDescription().Narrow().find("vx2"), std::string::npos)
            << refused.GetDescription().Narrow();
    }

    const VxResult forced =
        ForceIpAddress({"02-00-00-00-00-02", "192.168.72.20", "255.255.255.0"}, kDetectionMs);

    ASSERT_TRUE(forced.IsOK()) << forced.GetDescription().Narrow();
    EXPECT_EQ(Find()[2], "vx2 (192.168.72.1): 02-00-00-00-00-02 192.168.72.20 valid");
    m_link.Connect("wrong");
    EXPECT_EQ(Link("HostInterface"), "vx2");
    m_link.OpenStream("wrong");
    std::int64_t packetBytes = 0;
    ASSERT_TRUE(m_link.Features().GetIntegerValue("GevSCPSPacketSize", packetBytes).IsOK());
    EXPECT_EQ(packetBytes, 9000) << "the largest that the link carries";
    ReceiveTenFrames();
}

TEST_F(NetworksTest, ACameraInTheWrongSocketIsToldByEveryNameWithTheInterfaceWhereItIsHeard)
{
    for (const char* id : {"02-00-00-00-00-06", "astray", "192.168.71.40"}) {
        const auto start = Clock::now();
        const VxResult refused = ConnectResult(id);
        EXPECT_LT(Clock::now() - start, 500ms) << id;
        EXPECT_EQ(refused.Code(), VxError::InvalidConfiguration) << id;
        EXPECT_NE(refused.GetDescription().Narrow().find("vx6"), std::string::npos)
            << refused.GetDescription().Narrow();
    }
}

TEST_F(NetworksTest, ACameraThatSomebodyControlsKeepsItsAddress)
{
    m_link.Connect("right");

    const VxResult forced = ForceIpAddress({"right", "192.168.71.99", "255.255.255.0"}, kDetectionMs);

    EXPECT_EQ(forced.Code(), VxError::AccessDenied);
    EXPECT_TRUE(m_link.device->IsConnected());
}

TEST_F(NetworksTest, AnAddressThatIsTakenIsNotGivenAway)
{
    EXPECT_EQ(ForceIpAddress({"right", "192.168.71.30", "255.255.255.0"}, kDetectionMs).Code(),
              VxError::InvalidParameter);
    EXPECT_EQ(ForceIpAddress({"right", "192.168.71.1", "255.255.255.0"}, kDetectionMs).Code(),
              VxError::InvalidParameter);
}

/// @return  the shortest of three tries: the machine may stand still during one or two
Clock::duration ShortestOfThree(const std::function<void()>& work)
{
    auto shortest = Clock::duration::max();
    for (int i = 0; i < 3; ++i) {
        const auto start = Clock::now();
        work();
        shortest = std::min(shortest, Clock::now() - start);
    }
    return shortest;
}

TEST_F(NetworksTest, AnUnknownCameraIsNotFoundWithinHalfASecond)
{
    for (const char* id : {"02-00-00-00-00-99", "nobody", "192.168.71.99", "10.1.2.3"})
        EXPECT_LT(ShortestOfThree([&] { EXPECT_EQ(ConnectResult(id).Code(), VxError::NotFound); }), 500ms)
            << id;
}

TEST_F(NetworksTest, AnUnknownCameraAndTheStreamThatIsOpenedAllTheSameTakeNoLongerThanHalfASecond)
{
    for (const char* id : {"02-00-00-00-00-99", "nobody", "192.168.71.99", "10.1.2.3"}) {
        const auto took = ShortestOfThree([&] {
            VxStreamGEV stream;
            EXPECT_EQ(ConnectResult(id).Code(), VxError::NotFound) << id;
            EXPECT_TRUE(stream.Open(id, std::uint16_t{0}, std::uint16_t{0}, VxString(), 64).IsOK()) << id;
        });
        EXPECT_LT(took, 500ms) << id;
    }
}

TEST_F(NetworksTest, ASearchEndsAsSoonAsTheCameraAnswers)
{
    const auto start = Clock::now();
    m_link.Connect("02-00-00-00-00-01");

    EXPECT_LT(Clock::now() - start, 300ms); // a search that finds nothing takes as long by itself
}

TEST_F(NetworksTest, AnInterfaceThatGoesDownDuringASearchHidesNoCameraOfTheOthers)
{
    const auto before = Find();
    ASSERT_NE(LineOf(before, "vx6").find("02-00-00-00-00-06"), std::string::npos);

    // After the first question, after the second and after the last one.
    for (const auto delay : {0ms, 150ms, 300ms}) {
        const auto found = FindWhile([delay] {
            std::this_thread::sleep_for(delay);
            Ip("link set vx6 down");
        });

        for (const std::string& line : before) {
            const std::string name = line.substr(0, line.find(' '));
            if (name != "vx6") {
                EXPECT_EQ(LineOf(found, name), line) << delay.count() << " ms";
            }
        }
        EXPECT_EQ(LineOf(Find(), "vx6"), "") << "it is down";
        Ip("link set vx6 up");
        // Its address is announced anew meanwhile.
        const auto start = Clock::now();
        auto after = Find();
        while (after != before && Clock::now() - start < 5s)
            after = Find();
        ASSERT_EQ(after, before);
    }
}

TEST_F(NetworksTest, AnInterfaceThatIsUnpluggedDuringASearchHidesNoCamera)
{
    const auto before = Find();
    Ip("link add vx7 type bridge");
    Ip("addr add 10.7.0.2/24 dev vx7");
    Ip("link set vx7 up");

    const auto found = FindWhile([] {
        std::this_thread::sleep_for(50ms);
        Ip("link del vx7");
    });

    for (const std::string& line : before)
        EXPECT_EQ(LineOf(found, line.substr(0, line.find(' '))), line);
    EXPECT_EQ(Find(), before);
}

constexpr const char* kGroup = "239.255.42.99";
constexpr std::uint16_t kGroupPort = 27'314;

/// @return  names of the interfaces on which a socket of this network is a member of the group
std::set<std::string> JoinedOn()
{
    // A line for each interface ("2\tvx1 : 1 V3"), and under it one for each of its groups, last byte first.
    std::ifstream memberships("/proc/net/igmp");
    std::set<std::string> names;
    std::string name;
    for (std::string line; std::getline(memberships, line);) {
        std::istringstream words(line);
        std::string word;
        if (words >> word; !line.starts_with('\t'))
            words >> name;
        else if (word == "632AFFEF")
            names.insert(name);
    }
    return names;
}

TEST_F(NetworksTest, TheGroupOfAnUnknownCameraIsJoinedOnEveryInterfaceUntilTheStreamIsClosed)
{
    VxStreamGEV stream;
    EXPECT_EQ(JoinedOn(), std::set<std::string>{});

    ASSERT_TRUE(stream.Open("nobody", kGroup, kGroupPort, 0, VxString(), 64).IsOK());

    EXPECT_EQ(JoinedOn(), (std::set<std::string>{"lo", "vx1", "vx2", "vx3", "vx4", "vx6"}));
    EXPECT_EQ(stream.GetLocalIPAddress(), "192.168.71.1") << "of the first one but loopback";
    ASSERT_TRUE(stream.Close().IsOK());
    EXPECT_EQ(JoinedOn(), std::set<std::string>{});
    EXPECT_TRUE(stream.GetLocalIPAddress().IsEmpty());
}

TEST_F(NetworksTest, TheGroupOfAKnownCameraIsJoinedOnItsInterfaceOnly)
{
    for (const char* id : {"twin", "02-00-00-00-00-03"}) {
        VxStreamGEV stream;
        ASSERT_TRUE(stream.Open(id, kGroup, kGroupPort, 0, VxString(), 64).IsOK());

        EXPECT_EQ(JoinedOn(), std::set<std::string>{"vx3"}) << id;
        EXPECT_EQ(stream.GetLocalIPAddress(), "192.168.71.2") << id;
    }
}

TEST_F(NetworksTest, AGroupIsJoinedAlsoOnAnInterfaceThatComesUpWhileNothingArrives)
{
    VxStreamGEV stream;
    ASSERT_TRUE(stream.Open("nobody", kGroup, kGroupPort, 0, VxString(), 64).IsOK());
    VxPipeline pipeline(&stream);
    ASSERT_TRUE(pipeline.Start().IsOK());
    EXPECT_FALSE(JoinedOn().contains("vx7"));

    Ip("link add vx7 type bridge");
    Ip("addr add 10.7.0.2/24 dev vx7");
    Ip("link set vx7 up");
    const auto start = Clock::now();
    while (!JoinedOn().contains("vx7") && Clock::now() - start < 10s)
        std::this_thread::sleep_for(50ms);

    EXPECT_EQ(JoinedOn(), (std::set<std::string>{"lo", "vx1", "vx2", "vx3", "vx4", "vx6", "vx7"}));
    EXPECT_TRUE(pipeline.Stop().IsOK());
    EXPECT_TRUE(stream.Close().IsOK());
    EXPECT_EQ(JoinedOn(), std::set<std::string>{});
    Ip("link del vx7");
}

TEST_F(NetworksTest, ACameraIsConnectedWhileAnotherInterfaceGoesDown)
{
    std::thread other([] { Ip("link set vx6 down"); });

    m_link.Connect("twin");

    other.join();
    EXPECT_EQ(Link("HostInterface"), "vx3");
    Ip("link set vx6 up");
}

} // namespace
