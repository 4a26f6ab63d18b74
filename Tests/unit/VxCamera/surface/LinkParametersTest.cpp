#include "VxCamera/surface/LinkParameters.h"

#include "support/Latch.h"
#include "support/genapi/NodeMapFixture.h"
#include "support/network/FakeCamera.h"
#include "support/network/FakeSocketFactory.h"

#include <gtest/gtest.h>

#include <thread>

namespace {

class LinkParametersTest : public testing::Test {
protected:
    LinkParametersTest()
    {
        m_found.device = m_camera.endpoint;
        m_found.camera = m_camera.identity;
        m_found.via.address = transport::Ipv4Address(192, 168, 1, 1);
        m_session =
            std::move(*control::DeviceSession::Connect({m_sockets, m_clock}, m_found.device, m_found.via));
        const PacketSizeAccess access{[this] { return m_setting; },
                                      [this](const PacketSizeAccess::Change& change) {
                                          change(m_setting);
                                          return m_answer;
                                      },
                                      [this] { return m_inForce; }};
        ListLinkParameters(
            m_found, *m_session, access, [this] { return m_map.get(); }, m_list);
    }

    FakeClock m_clock;
    FakeCamera m_camera{m_clock};
    FakeSocketFactory m_sockets{m_clock, [this](FakeUdpSocket& socket, std::span<const std::byte> datagram,
                                                const transport::Ipv4Endpoint& destination) {
                                    m_camera.OnDatagram(socket, datagram, destination);
                                }};
    control::FoundCamera m_found;
    std::unique_ptr<control::DeviceSession> m_session;
    PacketSizeSetting m_setting;
    VxResult m_answer = VxResult::Ok();
    std::uint32_t m_inForce = 1500;
    std::unique_ptr<genapi::NodeMap> m_map; // none before a test loads one
    ParameterList m_list;
};

/// The link's feature as text.
std::string TextOf(const ParameterList& list, const char* name)
{
    VxString text;
    EXPECT_TRUE(list.Get(VxString(name))->ToString(text).IsOK()) << name;
    return text.Narrow();
}

TEST_F(LinkParametersTest, TheByteOrderOfRegistersCanBeOverruled)
{
    FakeRegisterPort port;
    m_map = *genapi::NodeMap::Load(Describe(""), port, genapi::RegisterOrder::BigEndianBelowSchema11);
    EXPECT_EQ(TextOf(m_list, "RegisterByteOrder"), "Automatic");

    EXPECT_TRUE(m_list.Get("RegisterByteOrder")->FromString("BigEndian").IsOK());
    EXPECT_EQ(m_map->Order(), genapi::RegisterOrder::BigEndian);
    EXPECT_EQ(TextOf(m_list, "RegisterByteOrder"), "BigEndian");
    EXPECT_TRUE(m_list.Get("RegisterByteOrder")->FromString("AsDescribed").IsOK());
    EXPECT_EQ(m_map->Order(), genapi::RegisterOrder::AsDescribed);
    EXPECT_TRUE(m_list.Get("RegisterByteOrder")->FromString("Automatic").IsOK());
    EXPECT_EQ(m_map->Order(), genapi::RegisterOrder::BigEndianBelowSchema11);
}

TEST_F(LinkParametersTest, CachingOfFeaturesCanBeSwitchedOff)
{
    FakeRegisterPort port;
    m_map = *genapi::NodeMap::Load(Describe(""), port);
    EXPECT_EQ(TextOf(m_list, "FeatureCaching"), "true");

    EXPECT_TRUE(m_list.Get("FeatureCaching")->FromString("false").IsOK());

    EXPECT_FALSE(m_map->IsCaching());
    EXPECT_EQ(TextOf(m_list, "FeatureCaching"), "false");
}

TEST_F(LinkParametersTest, ThePacketSizeIsReadAsTheCameraHasTakenIt)
{
    m_inForce = 8996; // of 9000, rounded by the camera
    std::int64_t bytes = 0;

    ASSERT_TRUE(m_list.SetIntegerValue("PacketSize", 9000).IsOK());

    ASSERT_TRUE(m_list.GetIntegerValue("PacketSize", bytes).IsOK());
    EXPECT_EQ(bytes, 8996);
    EXPECT_EQ(m_setting.fixedBytes, 9000u);
}

TEST_F(LinkParametersTest, WhatTheCameraRefusesIsTold)
{
    m_answer = VxResult(VxError::AccessDenied, "the camera refuses");

    EXPECT_EQ(m_list.SetIntegerValue("PacketSize", 9000).Code(), VxError::AccessDenied);
    EXPECT_EQ(m_list.Get("PacketSizeMode")->FromString("Fixed").Code(), VxError::AccessDenied);
}

TEST_F(LinkParametersTest, CommandSettingsAreSetWithinTheirLimits)
{
    EXPECT_TRUE(m_list.SetIntegerValue("CommandAckTimeout", 50).IsOK());
    EXPECT_TRUE(m_list.SetIntegerValue("CommandRetries", 1).IsOK());
    EXPECT_EQ(m_list.SetIntegerValue("CommandRetries", 21).Code(), VxError::OutOfRange);

    EXPECT_EQ(m_session->Client().Settings().ackTimeout, std::chrono::milliseconds(50));
    EXPECT_EQ(m_session->Client().Settings().retries, 1u);
}

TEST_F(LinkParametersTest, ModeAndSizeOfPacketsAreSetWithoutEachOther)
{
    ASSERT_TRUE(m_list.SetIntegerValue("PacketSize", 4000).IsOK());
    ASSERT_TRUE(m_list.Get("PacketSizeMode")->FromString("Fixed").IsOK());

    EXPECT_EQ(m_setting.mode, PacketSizeMode::Fixed);
    EXPECT_EQ(m_setting.fixedBytes, 4000u);
}

TEST_F(LinkParametersTest, ThreadsThatSetDifferentCommandSettingsDoNotTakeEachOthersBack)
{
    Latch both(2);
    const auto set = [&](const char* name, std::int64_t offset) {
        both.count_down();
        both.wait();
        for (std::int64_t i = 1; i <= 1000; ++i) {
            const std::int64_t value = offset + i % 20;
            std::int64_t read = 0;
            EXPECT_TRUE(m_list.SetIntegerValue(name, value).IsOK());
            EXPECT_TRUE(m_list.GetIntegerValue(name, read).IsOK());
            ASSERT_EQ(read, value) << name;
        }
    };
    std::thread other(set, "CommandRetries", 0);

    set("CommandAckTimeout", 50);

    other.join();
}

} // namespace
