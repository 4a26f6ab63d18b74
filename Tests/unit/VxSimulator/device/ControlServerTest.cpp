#include "VxSimulator/device/ControlServer.h"

#include "VxCamera/wire/gvcp/Discovery.h"
#include "VxCamera/wire/registers/BootstrapRegisters.h"

#include "VxSimulator/device/SimulatedRegisters.h"

#include "support/Bytes.h"

#include <gtest/gtest.h>

namespace {

using namespace simulator;
using namespace std::chrono_literals;
using bytes::FromHex;
using transport::Ipv4Address;
using transport::Ipv4Endpoint;

constexpr Ipv4Endpoint kFirst{Ipv4Address(10, 0, 0, 1), 50000};
constexpr Ipv4Endpoint kSecond{Ipv4Address(10, 0, 0, 2), 50000};

const auto kTakeControl = FromHex("42 01 00 82 00 08 00 02 | 00 00 0A 00 00 00 00 02");
const auto kReadPrivilege = FromHex("42 01 00 80 00 04 00 03 | 00 00 0A 00");

class ControlServerTest : public testing::Test {
protected:
    bytes::Vector Ask(const Ipv4Endpoint& application, const bytes::Vector& datagram)
    {
        const auto answer = m_server.Answer(datagram, application, m_now);
        return answer ? bytes::Copy(answer->Bytes()) : bytes::Vector();
    }

    bytes::Vector Ask(const Ipv4Endpoint& application, std::string_view digits)
    {
        return Ask(application, FromHex(digits));
    }

    void TakeControl()
    {
        ASSERT_EQ(Ask(kFirst, kTakeControl), FromHex("00 00 00 83 00 04 00 02 00 00 00 01"));
    }

    static VxSimulatorOptions Options()
    {
        VxSimulatorOptions options;
        options.address = Ipv4Address(127, 0, 0, 9);
        options.mac = {0, 0x11, 0x22, 0x33, 0x44, 0x55};
        return options;
    }

    ControlServer::Time m_now{1h};
    CameraModel m_model{Options(), {}, m_now};
    ControlServer m_server{m_model};
};

TEST_F(ControlServerTest, AnswersDiscoveryWithItsIdentity)
{
    const auto answer = Ask(kFirst, "42 11 00 02 00 00 FF FF");

    ASSERT_EQ(answer.size(), 256u);
    EXPECT_EQ(bytes::Copy(std::span(answer).first(8)), FromHex("00 00 00 03 00 F8 FF FF"));
    const auto ack = gvcp::ParseDiscoveryAck(std::span(answer).subspan(8));
    ASSERT_TRUE(ack);
    EXPECT_EQ(ack->mac, (gvcp::MacAddress{0, 0x11, 0x22, 0x33, 0x44, 0x55}));
    EXPECT_EQ(ack->ipAddress, 0x7F000009u);
    EXPECT_EQ(ack->modelName, "SimulatedCamera");
}

TEST_F(ControlServerTest, ReadsARegister)
{
    EXPECT_EQ(Ask(kFirst, "42 01 00 80 00 04 00 01 00 00 0A 00"),
              FromHex("00 00 00 81 00 04 00 01 00 00 00 00"));
}

TEST_F(ControlServerTest, ReadsSeveralRegistersInOneCommand)
{
    EXPECT_EQ(Ask(kFirst, "42 01 00 80 00 08 00 01 | 00 00 A1 08 | 00 00 A1 0C"),
              FromHex("00 00 00 81 00 08 00 01 | 00 00 02 80 | 00 00 01 E0"));
}

TEST_F(ControlServerTest, ReadsMemory)
{
    const auto answer = Ask(kFirst, "42 01 00 84 00 08 00 03 | 00 00 02 00 00 00 02 00");

    ASSERT_EQ(answer.size(), 8u + 4 + 512);
    EXPECT_EQ(bytes::Copy(std::span(answer).first(18)),
              FromHex("00 00 00 85 02 04 00 03 | 00 00 02 00 | 4C 6F 63 61 6C 3A")) // "Local:"
    ;
}

TEST_F(ControlServerTest, RefusesBadAddressesAndAlignment)
{
    EXPECT_EQ(Ask(kFirst, "42 01 00 80 00 04 00 01 00 00 F0 00"), FromHex("80 03 00 81 00 00 00 01"));
    EXPECT_EQ(Ask(kFirst, "42 01 00 80 00 04 00 01 00 00 0A 02"), FromHex("80 05 00 81 00 00 00 01"));
    EXPECT_EQ(Ask(kFirst, "42 01 00 84 00 08 00 01 00 00 02 02 00 00 00 04"),
              FromHex("80 05 00 85 00 00 00 01"));
    EXPECT_EQ(Ask(kFirst, "42 01 00 84 00 08 00 01 00 00 02 00 00 00 00 03"),
              FromHex("80 05 00 85 00 00 00 01"));
    EXPECT_EQ(Ask(kFirst, "42 01 00 84 00 08 00 01 00 00 02 00 00 00 02 1C"),
              FromHex("80 02 00 85 00 00 00 01"))
        << "540 bytes do not fit into a datagram";
    EXPECT_EQ(Ask(kFirst, "42 01 00 84 00 08 00 01 00 00 02 00 00 00 00 00"),
              FromHex("80 02 00 85 00 00 00 01"));
}

TEST_F(ControlServerTest, RefusesToReadACommandRegister)
{
    EXPECT_EQ(Ask(kFirst, "42 01 00 80 00 04 00 01 00 00 A0 04"), FromHex("80 06 00 81 00 00 00 01"));
}

TEST_F(ControlServerTest, RefusesCommandsItDoesNotKnow)
{
    EXPECT_EQ(Ask(kFirst, "42 01 01 00 00 00 00 07"), FromHex("80 01 01 01 00 00 00 07")) << "action";
    EXPECT_EQ(Ask(kFirst, "42 01 12 34 00 00 00 07"), FromHex("80 01 12 35 00 00 00 07"));
}

TEST_F(ControlServerTest, RefusesPayloadsOfTheWrongLength)
{
    EXPECT_EQ(Ask(kFirst, "42 01 00 80 00 03 00 01 00 00 0A"), FromHex("80 0E 00 81 00 00 00 01"));
    EXPECT_EQ(Ask(kFirst, "42 01 00 82 00 04 00 01 00 00 0A 00"), FromHex("80 0E 00 83 00 00 00 01"));
    EXPECT_EQ(Ask(kFirst, "42 01 00 84 00 04 00 01 00 00 02 00"), FromHex("80 0E 00 85 00 00 00 01"));
    EXPECT_EQ(Ask(kFirst, "42 01 00 86 00 04 00 01 00 00 00 E8"), FromHex("80 0E 00 87 00 00 00 01"));
}

TEST_F(ControlServerTest, DoesNotAnswerWhatIsNoCommand)
{
    EXPECT_TRUE(Ask(kFirst, "").empty());
    EXPECT_TRUE(Ask(kFirst, "43 01 00 80 00 04 00 01 00 00 0A 00").empty());
    EXPECT_TRUE(Ask(kFirst, "42 01 00 80 00 08 00 01 00 00 0A 00").empty()) << "cut";
}

TEST_F(ControlServerTest, DoesNotAnswerWhenNoAnswerIsWanted)
{
    EXPECT_TRUE(Ask(kFirst, "42 00 00 82 00 08 00 02 00 00 0A 00 00 00 00 02").empty());
    EXPECT_EQ(m_server.Owner(), kFirst) << "but it is done";
}

TEST_F(ControlServerTest, WritesNeedControl)
{
    const auto write = FromHex("42 01 00 82 00 08 00 05 | 00 00 A0 40 00 00 00 64");

    EXPECT_EQ(Ask(kFirst, write), FromHex("80 06 00 83 00 04 00 05 00 00 00 00"));
    TakeControl();
    EXPECT_EQ(Ask(kFirst, "42 01 00 82 00 08 00 06 | 00 00 A0 40 00 00 00 64"),
              FromHex("00 00 00 83 00 04 00 06 00 00 00 01"));
    EXPECT_EQ(Ask(kSecond, write), FromHex("80 06 00 83 00 04 00 05 00 00 00 00"));
}

TEST_F(ControlServerTest, ControlIsRefusedToASecondApplication)
{
    TakeControl();

    EXPECT_EQ(Ask(kSecond, kTakeControl), FromHex("80 06 00 83 00 04 00 02 00 00 00 00"));
    EXPECT_EQ(m_server.Owner(), kFirst);
}

TEST_F(ControlServerTest, OthersMayReadWhileSomebodyHasControl)
{
    TakeControl();

    EXPECT_EQ(Ask(kSecond, kReadPrivilege), FromHex("00 00 00 81 00 04 00 03 00 00 00 02"));
}

TEST_F(ControlServerTest, OthersMayNotReadDuringExclusiveAccess)
{
    ASSERT_EQ(Ask(kFirst, "42 01 00 82 00 08 00 02 | 00 00 0A 00 00 00 00 01"),
              FromHex("00 00 00 83 00 04 00 02 00 00 00 01"));

    EXPECT_EQ(Ask(kSecond, kReadPrivilege), FromHex("80 06 00 81 00 00 00 03"));
    EXPECT_EQ(Ask(kSecond, "42 01 00 84 00 08 00 03 00 00 02 00 00 00 00 04"),
              FromHex("80 06 00 85 00 00 00 03"));
    EXPECT_EQ(Ask(kFirst, kReadPrivilege), FromHex("00 00 00 81 00 04 00 03 00 00 00 01"));
    EXPECT_EQ(Ask(kSecond, "42 01 00 02 00 00 00 09").size(), 256u) << "discovery is for everybody";
}

TEST_F(ControlServerTest, TellsWhoHasControl)
{
    const auto ask = FromHex("42 01 00 80 00 08 00 03 | 00 00 0A 04 | 00 00 0A 14");

    EXPECT_EQ(Ask(kSecond, ask), FromHex("00 00 00 81 00 08 00 03 | 00 00 00 00 | 00 00 00 00"));
    TakeControl();
    EXPECT_EQ(Ask(kSecond, ask), FromHex("00 00 00 81 00 08 00 03 | 00 00 C3 50 | 0A 00 00 01"));
}

TEST_F(ControlServerTest, ReleasingControlEndsAcquisition)
{
    TakeControl();
    ASSERT_EQ(Ask(kFirst, "42 01 00 82 00 18 00 05 | 00 00 0D 18 0A 00 00 01 | 00 00 0D 00 00 00 9C 40"
                          "| 00 00 A0 04 00 00 00 01"),
              FromHex("00 00 00 83 00 04 00 05 00 00 00 03"));
    ASSERT_TRUE(m_model.IsAcquiring());

    EXPECT_EQ(Ask(kFirst, "42 01 00 82 00 08 00 06 | 00 00 0A 00 00 00 00 00"),
              FromHex("00 00 00 83 00 04 00 06 00 00 00 01"));

    EXPECT_FALSE(m_server.Owner());
    EXPECT_FALSE(m_model.IsAcquiring());
    EXPECT_EQ(m_model.StreamDestination().port, 0);
}

TEST_F(ControlServerTest, WritesMemory)
{
    TakeControl();

    EXPECT_EQ(
        Ask(kFirst, "42 01 00 86 00 14 00 04 | 00 00 00 E8 63 61 6D 2D 6C 65 66 74 00 00 00 00 00 00 00 00"),
        FromHex("00 00 00 87 00 04 00 04 00 00 00 10"));
    EXPECT_EQ(Ask(kFirst, "42 01 00 84 00 08 00 05 | 00 00 00 E8 00 00 00 08"),
              FromHex("00 00 00 85 00 0C 00 05 | 00 00 00 E8 63 61 6D 2D 6C 65 66 74"));
}

TEST_F(ControlServerTest, RefusesMemoryWrites)
{
    const auto name = FromHex("42 01 00 86 00 08 00 04 | 00 00 00 E8 63 61 6D 2D");

    EXPECT_EQ(Ask(kFirst, name), FromHex("80 06 00 87 00 04 00 04 00 00 00 00")) << "without control";
    TakeControl();
    EXPECT_EQ(Ask(kFirst, "42 01 00 86 00 08 00 05 | 00 00 00 48 63 61 6D 2D"),
              FromHex("80 04 00 87 00 04 00 05 00 00 00 00"))
        << "the maker's name";
    EXPECT_EQ(Ask(kFirst, "42 01 00 86 00 07 00 06 | 00 00 00 E8 63 61 6D"),
              FromHex("80 05 00 87 00 04 00 06 00 00 00 00"))
        << "three bytes";
}

TEST_F(ControlServerTest, ControlCanBeTakenByAMemoryWrite)
{
    EXPECT_EQ(Ask(kFirst, "42 01 00 86 00 08 00 04 | 00 00 0A 00 00 00 00 02"),
              FromHex("00 00 00 87 00 04 00 04 00 00 00 04"));

    EXPECT_EQ(m_server.Owner(), kFirst);
}

TEST_F(ControlServerTest, AFailedWriteTellsItsIndexAndLeavesThoseBeforeItDone)
{
    TakeControl();

    EXPECT_EQ(Ask(kFirst, "42 01 00 82 00 18 00 05 | 00 00 A0 40 00 00 00 64 | 00 00 A1 08 00 00 00 01"
                          "| 00 00 A0 44 00 00 00 04"),
              FromHex("80 02 00 83 00 04 00 05 00 00 00 01"));
    EXPECT_EQ(Ask(kFirst, "42 01 00 80 00 08 00 06 | 00 00 A0 40 | 00 00 A0 44"),
              FromHex("00 00 00 81 00 08 00 06 | 00 00 00 64 | 00 00 00 00"));
}

TEST_F(ControlServerTest, ARepeatedCommandIsAnsweredAgainAndNotDoneTwice)
{
    TakeControl();
    const auto latch = FromHex("42 01 00 82 00 08 00 05 | 00 00 09 44 00 00 00 02");
    const auto readLow = FromHex("42 01 00 80 00 04 00 06 | 00 00 09 4C");
    m_now += 1ms;
    const auto answer = Ask(kFirst, latch);
    m_now += 1ms;

    EXPECT_EQ(Ask(kFirst, latch), answer);

    EXPECT_EQ(Ask(kFirst, readLow), FromHex("00 00 00 81 00 04 00 06 | 00 0F 42 40")) << "1 ms, not 2";
}

TEST_F(ControlServerTest, TheSameCommandWithAnotherIdIsDoneAgain)
{
    TakeControl();
    m_now += 1ms;
    Ask(kFirst, "42 01 00 82 00 08 00 05 | 00 00 09 44 00 00 00 02");
    m_now += 1ms;
    Ask(kFirst, "42 01 00 82 00 08 00 06 | 00 00 09 44 00 00 00 02");

    EXPECT_EQ(Ask(kFirst, "42 01 00 80 00 04 00 07 | 00 00 09 4C"),
              FromHex("00 00 00 81 00 04 00 07 | 00 1E 84 80"));
}

TEST_F(ControlServerTest, ARepeatedReadIsReadAgain)
{
    EXPECT_EQ(Ask(kSecond, kReadPrivilege), FromHex("00 00 00 81 00 04 00 03 00 00 00 00"));
    TakeControl();

    EXPECT_EQ(Ask(kSecond, kReadPrivilege), FromHex("00 00 00 81 00 04 00 03 00 00 00 02"));
}

TEST_F(ControlServerTest, ControlIsLostWhenTheHeartbeatStops)
{
    TakeControl();
    EXPECT_EQ(m_server.HeartbeatDeadline(), m_now + 3s);

    m_server.CheckHeartbeat(m_now + 3s);
    EXPECT_EQ(m_server.Owner(), kFirst);
    m_server.CheckHeartbeat(m_now + 3001ms);
    EXPECT_FALSE(m_server.Owner());

    EXPECT_EQ(Ask(kSecond, kReadPrivilege), FromHex("00 00 00 81 00 04 00 03 00 00 00 00"));
    EXPECT_EQ(Ask(kSecond, "42 01 00 82 00 08 00 08 | 00 00 0A 00 00 00 00 02"),
              FromHex("00 00 00 83 00 04 00 08 00 00 00 01"));
}

TEST_F(ControlServerTest, EveryCommandOfTheOwnerIsAHeartbeat)
{
    TakeControl();
    for (int i = 0; i < 5; ++i) {
        m_now += 2s;
        EXPECT_EQ(Ask(kFirst, kReadPrivilege), FromHex("00 00 00 81 00 04 00 03 00 00 00 02"));
    }
}

TEST_F(ControlServerTest, DiscoveryIsNoHeartbeat)
{
    TakeControl();
    m_now += 2s;
    Ask(kFirst, "42 01 00 02 00 00 00 09");
    m_now += 2s;

    EXPECT_EQ(Ask(kSecond, kReadPrivilege), FromHex("00 00 00 81 00 04 00 03 00 00 00 00"));
}

TEST_F(ControlServerTest, TheHeartbeatCanBeSwitchedOff)
{
    TakeControl();
    ASSERT_EQ(Ask(kFirst, "42 01 00 82 00 08 00 05 | 00 00 09 54 00 00 00 01"),
              FromHex("00 00 00 83 00 04 00 05 00 00 00 01"));
    EXPECT_FALSE(m_server.HeartbeatDeadline());

    m_server.CheckHeartbeat(m_now + 1h);

    EXPECT_EQ(m_server.Owner(), kFirst);
}

TEST_F(ControlServerTest, TheHeartbeatTimeoutCanBeChanged)
{
    TakeControl();
    ASSERT_EQ(Ask(kFirst, "42 01 00 82 00 08 00 05 | 00 00 09 38 00 00 27 10"),
              FromHex("00 00 00 83 00 04 00 05 00 00 00 01"));

    EXPECT_EQ(m_server.HeartbeatDeadline(), m_now + 10s);
}

} // namespace
