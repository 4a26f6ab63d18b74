#include "VxCamera/receive/StreamReceiver.h"

#include "LandingReceiver.h"
#include "StreamReceiverFixture.h"

#include "support/Bytes.h"
#include "support/Latch.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <memory>
#include <optional>
#include <span>
#include <utility>
#include <vector>

namespace receive {
namespace {

using namespace std::chrono_literals;

class StreamReceiverTest : public testing::Test, protected StreamReceiverFixture {};

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

TEST_F(StreamReceiverTest, RunsOfPacketsAreReceivedEachFromItsSender)
{
    OneBufferSink sink(3);
    ASSERT_TRUE(m_receiver.Start(sink).IsOK());

    for (std::uint64_t id = 1; id <= 3; ++id) {
        const auto packets = m_stream.Block(id);
        std::vector<std::byte> run;
        for (std::size_t i = 1; i < packets.size(); ++i) {
            if (packets[i].size() < packets[1].size())
                break;
            run.insert(run.end(), packets[i].begin(), packets[i].end());
        }
        m_socket->Put(kCamera, packets[0]);
        m_socket->PutRun(kStranger, std::vector(run.size(), std::byte{0xFF}), packets[1].size());
        m_socket->PutRun(kCamera, run, packets[1].size());
        m_socket->Put(kCamera, packets[7]); // the last one is shorter
        m_socket->Put(kCamera, packets[8]);
    }
    sink.delivered.wait();
    m_receiver.Stop();

    EXPECT_EQ(sink.last.code, VxError::Ok);
    EXPECT_EQ(m_receiver.Counters().blocksComplete.Value(), 3u);
    EXPECT_EQ(m_receiver.Counters().packets.Value(), 3u * 9);
    EXPECT_EQ(m_receiver.Counters().packetsForeign.Value(), 3u * 6);
}

/// A socket that brings a picture in batches as a test says, and notes what is done between them.
class BatchSocket final : public transport::IUdpSocket {
public:
    enum class Call { Look, Wait, Gather };

    /// @param batches  without datagrams: nothing is there
    BatchSocket(FakeClock& clock, std::vector<std::vector<Arrived>> batches)
        : m_clock(clock), m_batches(std::move(batches))
    {
    }

    VxResult SendTo(std::span<const std::byte>, const transport::Ipv4Endpoint&) override
    {
        return VxResult::Ok();
    }
    VxExpected<std::size_t> Receive(std::span<transport::Datagram> datagrams,
                                    std::chrono::microseconds timeout) override
    {
        calls.push_back(timeout.count() > 0 ? Call::Wait : Call::Look);
        if (m_next == m_batches.size()) {
            end.count_down();
            m_woken.wait();
            return VxError::Aborted;
        }
        m_clock.Advance(std::chrono::milliseconds(1));
        const auto& batch = m_batches[m_next++];
        for (std::size_t i = 0; i < batch.size(); ++i) {
            datagrams[i].Fill(batch[i].bytes);
            datagrams[i].segmentBytes = batch[i].segmentBytes;
            datagrams[i].sender = batch[i].sender;
        }
        return batch.empty() ? VxExpected<std::size_t>(VxError::Timeout) : batch.size();
    }
    void Gather(std::chrono::microseconds) override { calls.push_back(Call::Gather); }
    void Wake() override { m_woken.count_down(); }
    [[nodiscard]] transport::Ipv4Endpoint LocalEndpoint() const override { return {}; }
    [[nodiscard]] std::size_t ReceiveBufferBytes() const override
    {
        return !ringBatches || IsBacklogNear() ? 1 << 24 : 0;
    }
    [[nodiscard]] bool IsBacklogNear() const override { return ringBatches && m_next <= *ringBatches; }
    VxResult JoinGroup(transport::Ipv4Address, transport::Ipv4Address) override { return VxResult::Ok(); }
    VxResult LeaveGroup(transport::Ipv4Address, transport::Ipv4Address) override { return VxResult::Ok(); }

    // So many come from a packet ring, which is left then for a socket with hardly a buffer. None: no ring.
    std::optional<std::size_t> ringBatches;

    std::vector<Call> calls; // until end: the receiving thread's
    Latch end{1};            // everything has been received

private:
    FakeClock& m_clock;
    Latch m_woken{1};
    const std::vector<std::vector<Arrived>> m_batches;
    std::size_t m_next = 0;
};

TEST(StreamReceiverGatheringTest, PacketsGatherOnlyWhenNoneIsLeft)
{
    StreamPackets stream;
    stream.stepBytes = 64; // 48 packets
    const auto block = stream.Block(1);
    const auto run = [&](std::size_t begin, std::size_t end) {
        return Coalesce(std::span(block).subspan(begin, end - begin));
    };
    FakeClock clock;
    auto owned = std::make_unique<BatchSocket>(
        clock, std::vector{{}, run(0, 1), run(1, 5), run(5, 21), {}, run(21, 31), run(31, 41), {}});
    BatchSocket& socket = *owned;
    StreamReceiver receiver(std::move(owned), clock, kCamera.address);
    OneBufferSink sink(1);

    ASSERT_TRUE(receiver.Start(sink).IsOK());
    socket.end.wait();
    receiver.Stop();

    using enum BatchSocket::Call;
    // Before the start, at once after it, the beginning of the block, and then the slot for a run is full:
    // only a further look shows that nothing is left.
    EXPECT_EQ(socket.calls,
              (std::vector{Look, Look, Wait, Wait, Look, Gather, Wait, Look, Look, Gather, Wait}));
}

TEST(StreamReceiverGatheringTest, WhenAPacketRingIsLeftNoMoreGathersThanTheSocketHolds)
{
    for (const bool isLeft : {false, true}) {
        StreamPackets stream;
        stream.stepBytes = 64; // 48 packets
        const auto block = stream.Block(1);
        const auto run = [&](std::size_t begin, std::size_t end) {
            return Coalesce(std::span(block).subspan(begin, end - begin));
        };
        FakeClock clock;
        auto owned = std::make_unique<BatchSocket>(
            clock, std::vector{{}, run(0, 1), run(1, 5), run(5, 21), {}, run(21, 31), run(31, 41), {}});
        BatchSocket& socket = *owned;
        socket.ringBatches = isLeft ? 5 : 100;
        StreamReceiver receiver(std::move(owned), clock, kCamera.address);
        OneBufferSink sink(1);

        ASSERT_TRUE(receiver.Start(sink).IsOK());
        socket.end.wait();
        receiver.Stop();

        EXPECT_EQ(std::ranges::count(socket.calls, BatchSocket::Call::Gather), isLeft ? 1 : 2);
    }
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
    Pass(0ms);
    Pass(3001ms);
    Pass(3001ms);
    EXPECT_EQ(m_socket->SentCount(), 0u); // a passive receiver never sends

    m_receiver.SetLink(link.link); // also while it runs
    const auto sent = m_socket->WaitForSent(1);
    m_receiver.Stop();

    EXPECT_EQ(sent[0].destination, (transport::Ipv4Endpoint{kCamera.address, 40'000}));
}

TEST_F(StreamReceiverTest, GroupsAreJoinedAtTheStartAndAgainWhileNothingArrives)
{
    OneBufferSink sink(1);
    std::atomic<int> calls = 0;
    m_receiver.SetJoiner([&](transport::IUdpSocket& socket) {
        EXPECT_EQ(&socket, m_socket);
        ++calls;
    });
    const auto lookAtTheClock = [&] {
        m_socket->Wake(); // the queue has no time
        m_socket->WaitUntilIdle();
    };
    ASSERT_TRUE(m_receiver.Start(sink).IsOK());
    lookAtTheClock();
    EXPECT_EQ(calls, 1);

    m_clock.Advance(2999ms);
    lookAtTheClock();
    EXPECT_EQ(calls, 1);
    m_clock.Advance(1ms);
    lookAtTheClock();
    EXPECT_EQ(calls, 2);
    m_clock.Advance(2s);
    PutBlock(1, kCamera);
    sink.delivered.wait();
    m_clock.Advance(1s);
    lookAtTheClock();
    EXPECT_EQ(calls, 2) << "a packet arrived a second ago";
    m_clock.Advance(2s);
    lookAtTheClock();
    EXPECT_EQ(calls, 3);
    m_receiver.Stop();
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
    OneBufferSink sink(1);
    ASSERT_TRUE(m_receiver.Start(sink).IsOK());
    auto packets = m_stream.Block(1);
    packets.erase(packets.begin() + 3);
    for (auto& packet : packets)
        m_socket->Put(kCamera, std::move(packet));
    Pass(10ms);
    EXPECT_EQ(m_receiver.Counters().blocksIncomplete.Value(), 0u);

    AssemblySettings settings = m_receiver.Settings();
    settings.blockTimeout = 17ms; // since the last packet
    m_receiver.SetSettings(settings);
    EXPECT_EQ(m_receiver.Settings().blockTimeout, 17ms);

    Pass(6ms);
    EXPECT_EQ(m_receiver.Counters().blocksIncomplete.Value(), 0u);
    Pass(1ms);
    EXPECT_EQ(m_receiver.Counters().blocksIncomplete.Value(), 1u);
    m_receiver.Stop();
}

TEST_F(StreamReceiverTest, ASilenceIsToldAgainAfterAReset)
{
    OneBufferSink sink(1);
    ASSERT_TRUE(m_receiver.Start(sink).IsOK());
    Pass(1s);
    EXPECT_EQ(m_receiver.LastError(), VxError::Timeout);
    Pass(500ms);

    m_receiver.ResetStatistics();

    m_socket->WaitUntilIdle();
    EXPECT_EQ(m_receiver.LastError(), VxError::Ok);
    Pass(999ms);
    EXPECT_EQ(m_receiver.LastError(), VxError::Ok);
    Pass(1ms);
    EXPECT_EQ(m_receiver.LastError(), VxError::Timeout);
    m_receiver.Stop();
}

TEST_F(StreamReceiverTest, OfASilenceItIsToldWhetherOthersHaveSent)
{
    OneBufferSink sink(1);
    ASSERT_TRUE(m_receiver.Start(sink).IsOK());
    Pass(1s);
    EXPECT_EQ(m_receiver.LastError(), VxError::Timeout);
    EXPECT_FALSE(m_receiver.HaveOthersSent());

    PutBlock(1, kStranger); // as by a camera that has got another address
    m_socket->WaitUntilIdle();
    EXPECT_EQ(m_receiver.LastError(), VxError::Timeout);
    EXPECT_TRUE(m_receiver.HaveOthersSent());

    PutBlock(2, kCamera);
    sink.delivered.wait();
    Pass(1s);
    EXPECT_EQ(m_receiver.LastError(), VxError::Timeout);
    EXPECT_FALSE(m_receiver.HaveOthersSent());
    m_receiver.Stop();
}

TEST_F(StreamReceiverTest, WhereTheCameraIsNotKnownNobodyIsAnother)
{
    auto owned = std::make_unique<QueueSocket>();
    QueueSocket& socket = *owned;
    StreamReceiver receiver(std::move(owned), m_clock, std::nullopt);
    OneBufferSink sink(1);
    ASSERT_TRUE(receiver.Start(sink).IsOK());
    socket.Put(kStranger, m_stream.Payload(1, 1)); // no leader tells who the camera is
    socket.WaitUntilIdle();
    m_clock.Advance(1s);
    socket.Wake();
    socket.WaitUntilIdle();

    EXPECT_EQ(receiver.Counters().packetsForeign.Value(), 1u);
    EXPECT_EQ(receiver.LastError(), VxError::Timeout);
    EXPECT_FALSE(receiver.HaveOthersSent());
    receiver.Stop();
}

TEST_F(StreamReceiverTest, ReceivesOnAfterASocketThatRanOutOfMemory)
{
    OneBufferSink sink(1);
    ASSERT_TRUE(m_receiver.Start(sink).IsOK());
    for (std::uint32_t id = 1; id <= 3; ++id) {
        m_socket->Put(kCamera, m_stream.Leader(id));
        m_socket->Put(kCamera, m_stream.Payload(id, 1)); // the next ones would land in the buffer
        m_socket->WaitUntilIdle();
        m_socket->RunOutOfMemory();
        m_socket->WaitUntilIdle();
        EXPECT_EQ(m_receiver.LastError(), VxError::OutOfMemory);
        EXPECT_TRUE(sink.IsFree());
    }

    PutBlock(7, kCamera);
    sink.delivered.wait();
    m_receiver.Stop();

    EXPECT_EQ(sink.last.code, VxError::Ok);
    EXPECT_EQ(sink.last.blockId, 7u);
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
