#include "VxSimulator/stream/StreamSender.h"

#include "VxCamera/wire/gvsp/PacketHeader.h"

#include "VxSimulator/picture/TestPicture.h"

#include "support/Bytes.h"
#include "support/network/FakeUdpSocket.h"

#include <gtest/gtest.h>

namespace {

using namespace simulator;
using bytes::FromHex;
using transport::Ipv4Address;
using transport::Ipv4Endpoint;

constexpr Ipv4Endpoint kReceiver{Ipv4Address(10, 0, 0, 1), 40000};

class StreamSenderTest : public testing::Test {
protected:
    static FrameOrder Order(std::uint64_t frameNumber = 0)
    {
        FrameOrder order;
        order.frameNumber = frameNumber;
        order.blockId = frameNumber + 1;
        order.format = *FindPictureFormat("BayerRG8");
        order.widthPx = 128;
        order.heightPx = 64;
        order.packetSizeBytes = 1500;
        order.destination = kReceiver;
        return order;
    }

    static VxSimulatorOptions Options()
    {
        VxSimulatorOptions options;
        options.linkSpeedMbps = 1000000; // so that no packet has to wait
        return options;
    }

    StreamSender& Sender(const VxSimulatorOptions& options = Options())
    {
        return m_sender.emplace(m_socket, options);
    }

    struct Sent {
        bytes::Vector packet;
        Ipv4Endpoint destination;
    };
    std::vector<Sent> m_sent;
    FakeClock m_clock;
    FakeUdpSocket m_socket{m_clock, Ipv4Endpoint{Ipv4Address::Loopback(), 50000},
                           [this](FakeUdpSocket&, std::span<const std::byte> packet, const Ipv4Endpoint& to) {
                               m_sent.push_back({bytes::Copy(packet), to});
                           }};
    std::optional<StreamSender> m_sender;
};

TEST_F(StreamSenderTest, SendsTheTestPictureOfTheFrame)
{
    auto& sender = Sender();
    for (std::uint64_t frame = 0; frame < 7; ++frame) {
        m_sent.clear();

        EXPECT_TRUE(sender.SendFrame(Order(frame)));

        ASSERT_EQ(m_sent.size(), 1u + 6 + 1);
        bytes::Vector picture;
        for (std::size_t i = 1; i <= 6; ++i)
            picture.insert(picture.end(), m_sent[i].packet.begin() + 8, m_sent[i].packet.end());
        EXPECT_EQ(picture, TestPicture(frame, 128, 64, 0x01080009)) << frame;
    }
    EXPECT_EQ(sender.PacketsSent(), 7u * 8);
}

TEST_F(StreamSenderTest, SendsToWhereTheOrderSays)
{
    EXPECT_TRUE(Sender().SendFrame(Order()));

    for (const Sent& sent : m_sent)
        EXPECT_EQ(sent.destination, kReceiver);
}

TEST_F(StreamSenderTest, FollowsAChangeOfSizeAndFormat)
{
    auto& sender = Sender();
    EXPECT_TRUE(sender.SendFrame(Order()));
    m_sent.clear();
    auto order = Order(1);
    order.widthPx = 256;
    order.format = *FindPictureFormat("Mono8");
    order.packetSizeBytes = 65532;

    EXPECT_TRUE(sender.SendFrame(order));

    ASSERT_EQ(m_sent.size(), 3u);
    const auto& packet = m_sent[1].packet;
    EXPECT_EQ(bytes::Vector(packet.begin() + 8, packet.end()), TestPicture(1, 256, 64, 0x01080001));
}

TEST_F(StreamSenderTest, SendsTheSamePacketsWithAndWithoutRuns)
{
    auto options = Options();
    options.faults.dropShare = 0.1;
    options.faults.duplicateShare = 0.1;
    options.faults.reorderShare = 0.1;
    options.faults.delayShare = 0.1;
    std::vector<bytes::Vector> packets[2];
    for (const bool isSendingRuns : {false, true}) {
        options.isSendingRuns = isSendingRuns;
        auto& sender = Sender(options);
        m_sent.clear();
        for (std::uint64_t frame = 0; frame < 20; ++frame)
            EXPECT_TRUE(sender.SendFrame(Order(frame)));
        EXPECT_EQ(sender.PacketsSent(), m_sent.size());
        EXPECT_GT(sender.PacketsDropped(), 0u);
        for (const Sent& sent : m_sent)
            packets[isSendingRuns ? 1 : 0].push_back(sent.packet);
    }

    EXPECT_TRUE(packets[0] == packets[1]);
}

TEST_F(StreamSenderTest, SendsPacketsAgain)
{
    auto& sender = Sender();
    EXPECT_TRUE(sender.SendFrame(Order()));
    const auto first = m_sent;
    m_sent.clear();

    sender.Resend({.blockId = 1, .firstPacketId = 2, .lastPacketId = 3}, kReceiver);

    ASSERT_EQ(m_sent.size(), 2u);
    EXPECT_EQ(bytes::Copy(std::span(m_sent[0].packet).first(8)), FromHex("01 00 00 01 03 00 00 02"));
    EXPECT_TRUE(
        std::equal(m_sent[0].packet.begin() + 8, m_sent[0].packet.end(), first[2].packet.begin() + 8));
    EXPECT_TRUE(
        std::equal(m_sent[1].packet.begin() + 8, m_sent[1].packet.end(), first[3].packet.begin() + 8));
    EXPECT_EQ(sender.PacketsResent(), 2u);
}

TEST_F(StreamSenderTest, ARangeEndsWithTheBlock)
{
    auto& sender = Sender();
    EXPECT_TRUE(sender.SendFrame(Order()));
    m_sent.clear();

    sender.Resend({.blockId = 1, .firstPacketId = 6, .lastPacketId = 0xFFFFFF}, kReceiver);

    EXPECT_EQ(m_sent.size(), 2u) << "the last payload packet and the trailer";
}

TEST_F(StreamSenderTest, ARangeThatEndsBeforeItBeginsIsEmpty)
{
    auto& sender = Sender();
    EXPECT_TRUE(sender.SendFrame(Order()));
    m_sent.clear();

    sender.Resend({.blockId = 1, .firstPacketId = 3, .lastPacketId = 2}, kReceiver);

    EXPECT_TRUE(m_sent.empty());
}

TEST_F(StreamSenderTest, TellsThatABlockIsGone)
{
    auto& sender = Sender();
    for (std::uint64_t frame = 0; frame <= BlockStore::kMostBlocks; ++frame)
        EXPECT_TRUE(sender.SendFrame(Order(frame)));
    m_sent.clear();

    sender.Resend({.blockId = 1, .firstPacketId = 2, .lastPacketId = 3}, kReceiver);

    ASSERT_EQ(m_sent.size(), 1u);
    EXPECT_EQ(m_sent[0].packet, FromHex("80 0C 00 01 03 00 00 02"));
    EXPECT_EQ(sender.PacketsResent(), 0u);
}

TEST_F(StreamSenderTest, TellsThatAPacketIsForgotten)
{
    auto options = Options();
    options.faults.resendMemory = std::chrono::milliseconds(0);
    auto& sender = Sender(options);
    EXPECT_TRUE(sender.SendFrame(Order()));
    m_sent.clear();

    sender.Resend({.blockId = 1, .firstPacketId = 2, .lastPacketId = 3}, kReceiver);

    ASSERT_EQ(m_sent.size(), 1u);
    EXPECT_EQ(m_sent[0].packet, FromHex("80 0C 00 01 03 00 00 02"));
}

TEST_F(StreamSenderTest, TellsThatAPacketIsBeyondTheBlock)
{
    auto& sender = Sender();
    EXPECT_TRUE(sender.SendFrame(Order()));
    m_sent.clear();

    sender.Resend({.blockId = 1, .firstPacketId = 8, .lastPacketId = 9}, kReceiver);

    ASSERT_EQ(m_sent.size(), 1u);
    EXPECT_EQ(m_sent[0].packet, FromHex("80 0C 00 01 03 00 00 08"));
}

TEST_F(StreamSenderTest, TellsThatABlockWithExtendedIdsIsGone)
{
    Sender().Resend(
        {.idWidth = gvcp::IdWidth::Extended, .blockId = 0x100000001, .firstPacketId = 2, .lastPacketId = 3},
        kReceiver);

    ASSERT_EQ(m_sent.size(), 1u);
    EXPECT_EQ(m_sent[0].packet, FromHex("80 0C 00 01 83 00 00 00 | 00 00 00 01 00 00 00 01 | 00 00 00 02"));
}

TEST_F(StreamSenderTest, ATestPacketHasThePacketSizeAndBlockIdZero)
{
    Sender().SendTestPacket({.destination = kReceiver, .packetSizeBytes = 1500});

    ASSERT_EQ(m_sent.size(), 1u);
    EXPECT_EQ(m_sent[0].packet.size(), 1500u - 28);
    const auto packet = gvsp::ParsePacket(m_sent[0].packet);
    ASSERT_TRUE(packet);
    EXPECT_EQ(packet->header.blockId, 0u);
    EXPECT_EQ(m_sent[0].destination, kReceiver);
}

TEST_F(StreamSenderTest, LosesPacketsOnRequest)
{
    auto options = Options();
    options.faults.dropShare = 1;
    auto& sender = Sender(options);

    EXPECT_TRUE(sender.SendFrame(Order()));
    sender.Resend({.blockId = 1, .firstPacketId = 2, .lastPacketId = 3}, kReceiver);

    EXPECT_TRUE(m_sent.empty());
    EXPECT_EQ(sender.PacketsDropped(), 8u + 2);
}

TEST_F(StreamSenderTest, CountsWhatTheSystemDoesNotSend)
{
    auto& sender = Sender();
    m_socket.FailSending(VxResult(VxError::NetworkError, "no route"));

    EXPECT_TRUE(sender.SendFrame(Order()));

    EXPECT_EQ(sender.PacketsSent(), 0u);
    EXPECT_EQ(sender.SendFailures(), 8u);
}

TEST_F(StreamSenderTest, APacketThatTheSystemDoesNotSendKeepsNoneBehindItBack)
{
    auto options = Options();
    options.isSendingRuns = true;
    auto& sender = Sender(options);
    m_socket.FailOnceAfter(3);

    EXPECT_TRUE(sender.SendFrame(Order()));

    EXPECT_EQ(m_sent.size(), 7u);
    EXPECT_EQ(sender.PacketsSent(), 7u);
    EXPECT_EQ(sender.SendFailures(), 1u);
}

TEST_F(StreamSenderTest, SendsNothingAfterItWasCancelled)
{
    auto& sender = Sender();
    sender.Cancel();

    EXPECT_FALSE(sender.SendFrame(Order()));
    EXPECT_TRUE(m_sent.empty());
}

} // namespace
