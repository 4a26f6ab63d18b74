#include "VxCamera/receive/StreamReceiver.h"

#include "QueueSocket.h"
#include "StreamPackets.h"

#include "support/Bytes.h"
#include "support/Latch.h"
#include "support/network/FakeClock.h"

#include <gtest/gtest.h>

#include <array>
#include <atomic>

namespace receive {
namespace {

constexpr transport::Ipv4Endpoint kCamera{transport::Ipv4Address(192, 168, 1, 20), 50000};
constexpr transport::Ipv4Endpoint kStranger{transport::Ipv4Address(192, 168, 1, 66), 50000};

/// One buffer, and a mark when it was delivered.
class OneBufferSink final : public IBlockSink {
public:
    explicit OneBufferSink(std::ptrdiff_t blocks) : delivered(blocks) {}

    BlockBuffer* TakeFree(std::size_t) override { return std::exchange(m_free, nullptr); }
    void Deliver(BlockBuffer& buffer) override
    {
        last = buffer.info;
        m_free = &buffer;
        delivered.count_down();
    }
    void GiveBack(BlockBuffer& buffer) override { m_free = &buffer; }
    [[nodiscard]] bool IsFree() const { return m_free != nullptr; }

    Latch delivered;
    BlockInfo last;

private:
    std::array<std::byte, 64 * 48> m_memory{};
    BlockBuffer m_buffer{m_memory, {}};
    BlockBuffer* m_free = &m_buffer;
};

class StreamReceiverTest : public testing::Test {
protected:
    void PutBlock(std::uint64_t blockId, const transport::Ipv4Endpoint& sender)
    {
        for (auto& packet : m_stream.Block(blockId))
            m_socket->Put(sender, std::move(packet));
    }

    StreamPackets m_stream;
    FakeClock m_clock;
    std::unique_ptr<QueueSocket> m_owned = std::make_unique<QueueSocket>();
    QueueSocket* m_socket = m_owned.get();
    StreamReceiver m_receiver{std::move(m_owned), m_clock, kCamera.address};
};

TEST_F(StreamReceiverTest, DeliversBlocksUntilItIsStopped)
{
    OneBufferSink sink(3);
    ASSERT_TRUE(m_receiver.Start(sink).IsOK());

    for (std::uint64_t id = 1; id <= 3; ++id)
        PutBlock(id, kCamera);
    sink.delivered.wait();
    m_receiver.Stop();

    EXPECT_EQ(sink.last.code, VxError::Ok);
    EXPECT_EQ(sink.last.blockId, 3u);
    EXPECT_EQ(m_receiver.Counters().blocksComplete.Value(), 3u);
    EXPECT_EQ(m_receiver.LastError(), VxError::Ok);
    EXPECT_FALSE(m_receiver.IsRunning());
}

TEST_F(StreamReceiverTest, StopEndsAWaitThatHasNoEnd)
{
    OneBufferSink sink(1);
    for (int i = 0; i < 100; ++i) {
        ASSERT_TRUE(m_receiver.Start(sink).IsOK());
        m_receiver.Stop(); // the queue never times out: only the wake ends the wait
    }
    EXPECT_TRUE(sink.IsFree());
}

TEST_F(StreamReceiverTest, StopGivesTheBufferOfAnOpenBlockBack)
{
    OneBufferSink sink(1);
    ASSERT_TRUE(m_receiver.Start(sink).IsOK());
    m_socket->Put(kCamera, m_stream.Leader(1));

    m_receiver.Stop();

    EXPECT_TRUE(sink.IsFree());
}

TEST_F(StreamReceiverTest, PacketsOfOthersAreCountedAndDropped)
{
    OneBufferSink sink(1);
    ASSERT_TRUE(m_receiver.Start(sink).IsOK());

    PutBlock(1, kStranger);
    PutBlock(2, kCamera);
    sink.delivered.wait();
    m_receiver.Stop();

    EXPECT_EQ(sink.last.blockId, 2u);
    EXPECT_EQ(m_receiver.Counters().packetsForeign.Value(), 9u);
    EXPECT_EQ(m_receiver.Counters().packets.Value(), 9u);
}

TEST_F(StreamReceiverTest, WhatArrivedBeforeTheStartIsDropped)
{
    OneBufferSink sink(1);
    PutBlock(1, kCamera);
    ASSERT_TRUE(m_receiver.Start(sink).IsOK());

    PutBlock(2, kCamera);
    sink.delivered.wait();
    m_receiver.Stop();

    EXPECT_EQ(sink.last.blockId, 2u);
    EXPECT_EQ(m_receiver.Counters().blocksComplete.Value(), 1u);
}

TEST_F(StreamReceiverTest, ServesOneSinkAtATime)
{
    OneBufferSink sink(1);
    OneBufferSink other(1);
    ASSERT_TRUE(m_receiver.Start(sink).IsOK());

    EXPECT_TRUE(m_receiver.Start(sink).IsOK());
    EXPECT_EQ(m_receiver.Start(other).Code(), VxError::Busy);
    m_receiver.Stop(other);
    EXPECT_TRUE(m_receiver.IsRunning());
    m_receiver.Stop(sink);
    EXPECT_FALSE(m_receiver.IsRunning());
}

TEST_F(StreamReceiverTest, StatisticsCanBeReset)
{
    OneBufferSink sink(1);
    ASSERT_TRUE(m_receiver.Start(sink).IsOK());
    m_stream.leader.heightPx = 4000;
    PutBlock(1, kCamera);
    sink.delivered.wait();
    m_receiver.Stop();
    EXPECT_EQ(m_receiver.LastError(), VxError::BufferTooSmall);

    m_receiver.ResetStatistics();

    EXPECT_EQ(m_receiver.LastError(), VxError::Ok);
    EXPECT_EQ(m_receiver.Counters().packets.Value(), 0u);
    EXPECT_EQ(m_receiver.Counters().blocksBufferTooSmall.Value(), 0u);
}

/// A link whose requests go into a queue.
struct LinkUnderTest {
    LinkUnderTest()
    {
        auto owned = std::make_unique<QueueSocket>();
        requests = owned.get();
        link->command = {kCamera.address, 3956};
        link->channel = 1;
        link->sourcePort = 40'000;
        link->resend = std::move(owned);
        link->onPayloadMissing = [this] { isPayloadMissing = true; };
    }

    std::atomic<bool> isPayloadMissing = false;
    QueueSocket* requests = nullptr; // borrowed from the link
    std::shared_ptr<StreamLink> link = std::make_shared<StreamLink>();
};

TEST_F(StreamReceiverTest, ALostPacketIsAskedForOverTheLinkAndOnlyThere)
{
    OneBufferSink sink(1);
    LinkUnderTest link;
    link.link->sourcePort = 0;
    m_receiver.SetLink(link.link);
    ASSERT_TRUE(m_receiver.Start(sink).IsOK());
    auto packets = m_stream.Block(0x1234);
    for (const std::size_t i : {0u, 1u, 4u})
        m_socket->Put(kCamera, packets[i]);

    m_socket->WaitUntilIdle();
    EXPECT_EQ(link.requests->SentCount(), 0u); // overtaken packets come within microseconds
    m_clock.Advance(m_receiver.Settings().resend.gapTimeout);
    m_socket->Wake(); // the queue has no time: the receiver looks at its clock
    const auto request = link.requests->WaitForSent(1)[0];
    for (const std::size_t i : {2u, 3u, 5u, 6u, 7u, 8u})
        m_socket->Put(kCamera, packets[i]);
    sink.delivered.wait();
    m_receiver.Stop();

    EXPECT_EQ(request.destination, (transport::Ipv4Endpoint{kCamera.address, 3956}));
    EXPECT_EQ(request.bytes, bytes::FromHex("42 00 0040 000C 0001 | 0001 1234 00000002 00000003"));
    EXPECT_EQ(sink.last.code, VxError::Ok);
    EXPECT_EQ(link.requests->SentCount(), 1u);
    EXPECT_EQ(m_receiver.Counters().packetsRequestedAgain.Value(), 2u);
    EXPECT_EQ(m_receiver.Counters().packetsRecovered.Value(), 2u);
    EXPECT_EQ(m_socket->SentCount(), 0u);
}

TEST_F(StreamReceiverTest, TheWayThroughAFirewallIsOpenedFromTheStreamsOwnSocket)
{
    OneBufferSink sink(1);
    LinkUnderTest link;
    ASSERT_TRUE(m_receiver.Start(sink).IsOK());
    EXPECT_EQ(m_socket->SentCount(), 0u); // a passive receiver never sends

    m_receiver.SetLink(link.link); // also while it runs
    const auto sent = m_socket->WaitForSent(1);
    m_receiver.Stop();

    EXPECT_EQ(sent[0].destination, (transport::Ipv4Endpoint{kCamera.address, 40'000}));
}

TEST_F(StreamReceiverTest, LeadersWithoutPayloadAreTold)
{
    OneBufferSink sink(3);
    LinkUnderTest link;
    m_receiver.SetLink(link.link);
    m_receiver.SetMostOpen(1); // each leader ends the block before
    ASSERT_TRUE(m_receiver.Start(sink).IsOK());
    for (std::uint64_t id = 1; id <= 4; ++id) {
        EXPECT_FALSE(link.isPayloadMissing);
        m_socket->Put(kCamera, m_stream.Leader(id));
        m_socket->Put(kCamera, m_stream.Trailer(id));
    }
    sink.delivered.wait();
    m_receiver.Stop();

    EXPECT_EQ(sink.last.code, VxError::MissingPackets);
    EXPECT_TRUE(link.isPayloadMissing);
}

TEST_F(StreamReceiverTest, WhatTheFeaturesSayOfThePictureCountsForTheNextPacketUntilAnotherLink)
{
    OneBufferSink sink(1);
    OneBufferSink later(1);
    const auto leader = bytes::FromHex("0000 0001 01 000000 | 0000 0004 00000000 00000007");
    const auto payload = bytes::FromHex("0000 0001 03 000001 | 0102030405060708 | 00000001 00000008");
    const auto trailer = bytes::FromHex("0000 0001 02 000002 | 0000 0004 00000010");
    const auto put = [&] {
        for (const auto* packet : {&leader, &payload, &trailer})
            m_socket->Put(kCamera, *packet);
    };
    ASSERT_TRUE(m_receiver.Start(sink).IsOK());
    m_socket->WaitUntilIdle();

    m_receiver.SetCameraPicture(PictureShape{0x01080001, 4, 2});
    put();
    sink.delivered.wait();
    m_receiver.Stop();
    m_receiver.SetLink(nullptr);
    ASSERT_TRUE(m_receiver.Start(later).IsOK());
    put();
    later.delivered.wait();
    m_receiver.Stop();

    EXPECT_EQ(sink.last.code, VxError::Ok);
    EXPECT_EQ(later.last.code, VxError::NotAnImage);
}

TEST_F(StreamReceiverTest, SettingsAreTakenOverWhileItRuns)
{
    AssemblySettings settings = m_receiver.Settings();
    EXPECT_TRUE(settings.resend.isOn);
    settings.resend.isOn = false;
    settings.blockTimeout = std::chrono::milliseconds(7);

    m_receiver.SetSettings(settings);

    EXPECT_FALSE(m_receiver.Settings().resend.isOn);
    EXPECT_EQ(m_receiver.Settings().blockTimeout, std::chrono::milliseconds(7));
}

TEST_F(StreamReceiverTest, IsStoppedByItsEnd)
{
    OneBufferSink sink(1);
    {
        auto socket = std::make_unique<QueueSocket>();
        StreamReceiver receiver(std::move(socket), m_clock, std::nullopt);
        ASSERT_TRUE(receiver.Start(sink).IsOK());
    }
    EXPECT_TRUE(sink.IsFree());
}

} // namespace
} // namespace receive
