#include "VxSimulator/device/SimulatedDevice.h"

#include "support/Bytes.h"

#include <gtest/gtest.h>

namespace {

using namespace simulator;
using namespace std::chrono_literals;
using bytes::FromHex;
using transport::Ipv4Address;
using transport::Ipv4Endpoint;

constexpr Ipv4Endpoint kOwner{Ipv4Address(10, 0, 0, 1), 50000};
constexpr Ipv4Endpoint kOwnersStream{Ipv4Address(10, 0, 0, 1), 40000};
constexpr Ipv4Endpoint kReceiver{Ipv4Address(10, 0, 0, 2), 40000};
constexpr Ipv4Endpoint kStranger{Ipv4Address(10, 0, 0, 3), 50000};

const auto kResend = FromHex("42 00 00 40 00 0C 00 05 00 00 12 34 00 00 00 07 00 00 00 09");

class SimulatedDeviceTest : public testing::Test {
protected:
    Reaction Handle(const Ipv4Endpoint& sender, const bytes::Vector& datagram)
    {
        return m_device.Handle(datagram, sender, m_now);
    }

    /// Control by kOwner, frames to kReceiver.
    void StartStreaming()
    {
        Handle(kOwner, FromHex("42 01 00 82 00 08 00 01 | 00 00 0A 00 00 00 00 02"));
        Handle(kOwner, FromHex("42 01 00 82 00 18 00 02 | 00 00 0D 18 0A 00 00 02 | 00 00 0D 00 00 00 9C 40"
                               "| 00 00 A0 04 00 00 00 01"));
        ASSERT_TRUE(m_device.IsAcquiring());
        ASSERT_EQ(m_device.StreamDestination(), kReceiver);
    }

    SimulatedDevice::Time m_now{1h};
    SimulatedDevice m_device{VxSimulatorOptions{}, {}, m_now};
};

TEST_F(SimulatedDeviceTest, AnswersCommands)
{
    const auto reaction = Handle(kOwner, FromHex("42 01 00 80 00 04 00 01 00 00 0A 00"));

    ASSERT_TRUE(reaction.answer);
    EXPECT_EQ(bytes::Copy(reaction.answer->Bytes()), FromHex("00 00 00 81 00 04 00 01 00 00 00 00"));
    EXPECT_FALSE(reaction.isBroadcastAllowed);
    EXPECT_FALSE(reaction.testPacket);
    EXPECT_FALSE(reaction.resend);
}

TEST_F(SimulatedDeviceTest, OnlyDiscoveryMayBeAnsweredByBroadcast)
{
    EXPECT_TRUE(Handle(kOwner, FromHex("42 11 00 02 00 00 FF FF")).isBroadcastAllowed);
    EXPECT_FALSE(Handle(kOwner, FromHex("42 01 00 02 00 00 FF FF")).isBroadcastAllowed);
    EXPECT_FALSE(Handle(kOwner, FromHex("42 11 00 80 00 04 00 01 00 00 0A 00")).isBroadcastAllowed);
}

TEST_F(SimulatedDeviceTest, FiresATestPacketWithTheAnswer)
{
    StartStreaming();

    const auto reaction = Handle(kOwner, FromHex("42 01 00 82 00 08 00 03 | 00 00 0D 04 80 00 05 DC"));

    EXPECT_TRUE(reaction.answer);
    ASSERT_TRUE(reaction.testPacket);
    EXPECT_EQ(reaction.testPacket->destination, kReceiver);
}

TEST_F(SimulatedDeviceTest, ResendsForWhoReceivesAndForWhoControls)
{
    StartStreaming();

    for (const auto& sender : {kReceiver, kOwner, kOwnersStream}) {
        const auto reaction = Handle(sender, kResend);
        ASSERT_TRUE(reaction.resend) << sender.ToString();
        EXPECT_EQ(reaction.resend->blockId, 0x1234u);
        EXPECT_EQ(reaction.resend->firstPacketId, 7u);
        EXPECT_EQ(reaction.resend->lastPacketId, 9u);
        EXPECT_FALSE(reaction.answer);
    }
}

TEST_F(SimulatedDeviceTest, ResendsNothingForStrangers)
{
    StartStreaming();

    EXPECT_FALSE(Handle(kStranger, kResend).resend);
}

TEST_F(SimulatedDeviceTest, ResendsNothingThroughAClosedChannel)
{
    EXPECT_FALSE(Handle(kOwner, kResend).resend);
}

TEST_F(SimulatedDeviceTest, ResendsOnlyChannelZero)
{
    StartStreaming();

    EXPECT_FALSE(
        Handle(kOwner, FromHex("42 00 00 40 00 0C 00 05 00 01 12 34 00 00 00 07 00 00 00 09")).resend);
    EXPECT_FALSE(Handle(kOwner, FromHex("42 00 00 40 00 04 00 05 00 00 12 34")).resend) << "cut";
}

TEST_F(SimulatedDeviceTest, AResendCommandIsAHeartbeatToo)
{
    StartStreaming();
    for (int i = 0; i < 3; ++i) {
        m_now += 2s;
        Handle(kOwner, kResend);
    }

    EXPECT_EQ(m_device.ControlOwner(), kOwner);
}

TEST_F(SimulatedDeviceTest, TheHeartbeatIsDueByItself)
{
    StartStreaming();
    ASSERT_EQ(m_device.NextAdvance(), m_now + 3s);

    m_device.Advance(m_now + 3s + 1us);

    EXPECT_FALSE(m_device.ControlOwner());
    EXPECT_FALSE(m_device.IsAcquiring());
    EXPECT_FALSE(m_device.NextAdvance());
}

TEST_F(SimulatedDeviceTest, GivesFrames)
{
    StartStreaming();

    EXPECT_EQ(m_device.NextFrameDue(), m_now);
    const auto order = m_device.TakeFrame(m_now);
    ASSERT_TRUE(order);
    EXPECT_EQ(order->destination, kReceiver);
    EXPECT_EQ(m_device.NextFrameDue(), m_now + 40ms);
}

TEST_F(SimulatedDeviceTest, NeitherAnswersNorSendsWhenItHasVanished)
{
    StartStreaming();

    m_device.Vanish();

    EXPECT_TRUE(m_device.IsSilent(m_now));
    EXPECT_FALSE(Handle(kOwner, FromHex("42 01 00 02 00 00 FF FF")).answer);
    EXPECT_FALSE(Handle(kOwner, kResend).resend);
    EXPECT_FALSE(m_device.NextFrameDue());
    EXPECT_FALSE(m_device.TakeFrame(m_now + 1s));
    EXPECT_FALSE(m_device.NextAdvance());
}

// 127.0.0.1, the usual address, makes the MAC 02:00:7F:00:00:01. To 192.168.1.20/24, gateway 192.168.1.1.
const auto kForceIp =
    FromHex("42 11 00 04 00 38 00 07 | 00 00 02 00 7F 00 00 01 | 00 00 00 00 00 00 00 00 00 00 00 00"
            "| C0 A8 01 14 | 00 00 00 00 00 00 00 00 00 00 00 00 | FF FF FF 00"
            "| 00 00 00 00 00 00 00 00 00 00 00 00 | C0 A8 01 01");

TEST_F(SimulatedDeviceTest, CanBeGivenAnotherAddress)
{
    const auto reaction = Handle(kOwner, kForceIp);

    ASSERT_TRUE(reaction.newAddress);
    EXPECT_EQ(reaction.newAddress->ipAddress, 0xC0A80114u);
    EXPECT_TRUE(reaction.isBroadcastAllowed);
    ASSERT_TRUE(reaction.answer);
    EXPECT_EQ(bytes::Copy(reaction.answer->Bytes()), FromHex("00 00 00 05 00 00 00 07"));

    m_device.SetAddress(*reaction.newAddress, 40404);
    const auto asked =
        Handle(kOwner, FromHex("42 01 00 80 00 0C 00 01 | 00 00 00 24 | 00 00 00 34 | 00 00 00 44"));
    EXPECT_EQ(bytes::Copy(asked.answer->Bytes()),
              FromHex("00 00 00 81 00 0C 00 01 | C0 A8 01 14 | FF FF FF 00 | C0 A8 01 01"));
}

TEST_F(SimulatedDeviceTest, AnAddressForAnotherCameraIsNotItsBusiness)
{
    auto forOther = kForceIp;
    forOther[15] = std::byte{0x02}; // the last byte of the MAC

    const auto reaction = Handle(kOwner, forOther);

    EXPECT_FALSE(reaction.newAddress);
    EXPECT_FALSE(reaction.answer);
}

TEST_F(SimulatedDeviceTest, WhoControlsItKeepsItsAddress)
{
    StartStreaming();

    const auto reaction = Handle(kStranger, kForceIp);

    EXPECT_FALSE(reaction.newAddress);
    EXPECT_EQ(bytes::Copy(reaction.answer->Bytes()), FromHex("80 06 00 05 00 00 00 07"));
}

TEST_F(SimulatedDeviceTest, AfterARebootNobodyControlsItAndRegistersAreAsAtFirst)
{
    StartStreaming();
    const auto readControlAndPort = FromHex("42 01 00 80 00 08 00 09 | 00 00 0A 00 | 00 00 0D 00");

    m_device.Reboot(m_now, m_now + 1s);

    EXPECT_FALSE(Handle(kOwner, readControlAndPort).answer);
    m_now += 1s;
    EXPECT_EQ(bytes::Copy(Handle(kOwner, readControlAndPort).answer->Bytes()),
              FromHex("00 00 00 81 00 08 00 09 | 00 00 00 00 | 00 00 00 00"));
    EXPECT_FALSE(m_device.IsAcquiring());
    EXPECT_FALSE(m_device.ControlOwner());
}

TEST_F(SimulatedDeviceTest, ACameraWithoutTestPacketsSendsNone)
{
    VxSimulatorOptions options;
    options.hasTestPackets = false;
    SimulatedDevice device(options, {}, m_now);
    const auto handle = [&](const char* hex) { return device.Handle(FromHex(hex), kOwner, m_now); };
    handle("42 01 00 82 00 08 00 01 | 00 00 0A 00 00 00 00 02");
    handle("42 01 00 82 00 10 00 02 | 00 00 0D 18 0A 00 00 02 | 00 00 0D 00 00 00 9C 40");

    EXPECT_FALSE(handle("42 01 00 82 00 08 00 03 | 00 00 0D 04 80 00 05 DC").testPacket);
}

} // namespace
