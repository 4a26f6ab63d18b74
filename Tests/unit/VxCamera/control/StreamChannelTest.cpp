#include "VxCamera/control/StreamChannel.h"

#include <gtest/gtest.h>

#include "StreamingFakeCamera.h"

namespace control {
namespace {

class StreamChannelTest : public testing::Test {
protected:
    [[nodiscard]] std::uint32_t Register(std::uint32_t address) const
    {
        return m_fake.camera.Register(address);
    }

    StreamingFakeCamera m_fake;
    StreamChannel m_channel{*m_fake.client, 0};
};

TEST_F(StreamChannelTest, OpensWithTheAddressFirstAndThePortLast)
{
    ASSERT_TRUE(m_channel.Open({transport::Ipv4Address(192, 168, 1, 1), 40000}).IsOK());

    EXPECT_EQ(Register(bootstrap::kStreamChannelDestination), 0xC0A80101u);
    EXPECT_EQ(Register(bootstrap::kStreamChannelPort), 40000u);
    EXPECT_EQ(m_fake.camera.seen.back().address, bootstrap::kStreamChannelPort);
    ASSERT_TRUE(m_channel.Close().IsOK());
    EXPECT_EQ(Register(bootstrap::kStreamChannelPort), 0u);
}

TEST_F(StreamChannelTest, AnotherChannelHasItsOwnRegisters)
{
    StreamChannel second(*m_fake.client, 1);

    ASSERT_TRUE(second.Open({transport::Ipv4Address(192, 168, 1, 1), 40000}).IsOK());

    EXPECT_EQ(Register(bootstrap::kStreamChannelPort), 0u);
    EXPECT_EQ(Register(bootstrap::kStreamChannelPort + 0x40), 40000u);
}

TEST_F(StreamChannelTest, TellsTheSizeThatTheCameraHasMadeOfIt)
{
    const auto set = m_channel.SetPacketSize(4001, StreamChannel::Fragments::AsBefore);

    ASSERT_TRUE(set);
    EXPECT_EQ(*set, 4000u);
    EXPECT_EQ(Register(bootstrap::kStreamChannelPacketSize) & bootstrap::kDoNotFragment, 0u);
    ASSERT_TRUE(m_channel.SetPacketSize(4001, StreamChannel::Fragments::Never));
    EXPECT_NE(Register(bootstrap::kStreamChannelPacketSize) & bootstrap::kDoNotFragment, 0u);
}

TEST_F(StreamChannelTest, StepsDownThroughWhatNetworksCarry)
{
    m_fake.camera.SetRegister(bootstrap::kStreamChannelPacketSize, 9000);
    std::vector<std::uint32_t> sizes;
    for (auto size = m_channel.StepPacketSizeDown(); size; size = m_channel.StepPacketSizeDown())
        sizes.push_back(*size);

    EXPECT_EQ(sizes, (std::vector<std::uint32_t>{8000, 4000, 1500, 1400, 576}));
    EXPECT_EQ(m_channel.StepPacketSizeDown().Result().Code(), VxError::OutOfRange);
}

TEST_F(StreamChannelTest, ACameraThatKeepsItsSizeEndsTheSteps)
{
    m_fake.smallest = 1500;

    EXPECT_EQ(m_channel.StepPacketSizeDown().Result().Code(), VxError::OutOfRange);
}

} // namespace
} // namespace control
