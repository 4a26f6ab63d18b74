#include "AskingFixture.h"

#include "VxBase/VxByteWriter.h"
#include "VxCamera/wire/gvsp/MultiPart.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace receive {
namespace {

using namespace std::chrono_literals;
using Packet = StreamPackets::Packet;

constexpr std::uint32_t kMono12p = 0x010C0047;
constexpr std::uint32_t kWidthPx = 641; // 961.5 bytes a line
constexpr std::uint32_t kHeightPx = 31;
constexpr std::size_t kRoundedBytes = std::size_t{962} * kHeightPx;
constexpr std::size_t kJoinedBytes = 29'807; // 961.5 * 31, rounded up
constexpr std::size_t kStepBytes = 1464;
constexpr std::uint32_t kLastId = 21; // with 527 bytes, or 542 of rounded lines

/// Packed lines that do not end with a byte: cameras round them up, or let them run together.
class JoinedLinesTest : public testing::TestWithParam<gvsp::IdMode> {
protected:
    JoinedLinesTest()
    {
        m_stream.idMode = GetParam();
        m_stream.leader = StreamPackets::Mono8(kWidthPx, kHeightPx);
        m_stream.leader.pixelFormat = kMono12p;
        m_stream.payloadBytes = kJoinedBytes;
        m_stream.stepBytes = kStepBytes;
    }

    void Send(BlockAssembler& assembler, const std::vector<Packet>& packets)
    {
        for (const Packet& packet : packets)
            assembler.OnPacket(packet, m_now);
    }
    /// @return  what a block becomes behind which nothing more comes
    VxError CodeOf(const std::vector<Packet>& packets) { return CodeOf(m_unasked, packets); }
    VxError CodeOf(BlockAssembler& assembler, const std::vector<Packet>& packets)
    {
        m_sink.delivered.clear(); // the pictures take much memory
        Send(assembler, packets);
        m_now += 300ms;
        assembler.OnTime(m_now);
        EXPECT_EQ(m_sink.delivered.size(), 1u);
        return m_sink.delivered.empty() ? VxError::NotInitialized : m_sink.delivered.back().info.code;
    }
    /// @return  what is asked for within a few milliseconds
    Ranges Asked()
    {
        m_channel.asked.clear();
        for (const auto pause : {6ms, 2ms}) {
            m_now += pause;
            m_asking.OnTime(m_now);
        }
        return m_channel.asked;
    }
    [[nodiscard]] std::vector<Packet> BlockWithLastCutTo(std::uint64_t id, std::size_t end) const
    {
        auto packets = m_stream.Block(id);
        packets[kLastId].resize(gvsp::HeaderBytes(m_stream.idMode) + end - (kLastId - 1) * kStepBytes);
        return packets;
    }
    /// Until it is known that the lines run together.
    void SendUntilBelieved()
    {
        while (CodeOf(m_stream.Block(++m_id)) != VxError::Ok)
            ASSERT_LT(m_id, 4u);
    }
    void ExpectJoined(std::uint64_t blockId, std::size_t bytes = kJoinedBytes)
    {
        ASSERT_FALSE(m_sink.delivered.empty());
        const auto& delivered = m_sink.delivered.back();
        EXPECT_EQ(delivered.info.code, VxError::Ok);
        EXPECT_TRUE(delivered.info.geometry.areLinesJoined);
        EXPECT_EQ(delivered.info.geometry.memoryBytes, bytes);
        EXPECT_EQ(delivered.info.receivedBytes, bytes);
        for (std::size_t offset = 0; offset < bytes; ++offset)
            ASSERT_EQ(delivered.memory[offset], StreamPackets::ByteAt(blockId, offset)) << offset;
    }
    void ExpectRounded()
    {
        ASSERT_FALSE(m_sink.delivered.empty());
        EXPECT_EQ(m_sink.delivered.back().info.code, VxError::Ok);
        EXPECT_FALSE(m_sink.delivered.back().info.geometry.areLinesJoined);
        EXPECT_EQ(m_sink.delivered.back().info.geometry.memoryBytes, kRoundedBytes);
    }

    StreamPackets m_stream;
    std::uint64_t m_id = 0;
    FakeSink m_sink{4, kRoundedBytes};
    StreamCounters m_counters;
    NotingChannel m_channel;
    BlockAssembler m_unasked{{}, m_sink, m_counters};
    BlockAssembler m_asking{{}, m_sink, m_counters, &m_channel};
    IVxClock::Time m_now{1h};
};

TEST_P(JoinedLinesTest, AreShownFromTheThirdBlockOnWhereNobodyCanAsk)
{
    for (std::uint64_t id = 1; id <= 2; ++id)
        EXPECT_EQ(CodeOf(m_stream.Block(id)), VxError::MissingPackets) << id;
    for (std::uint64_t id = 3; id <= 5; ++id) {
        EXPECT_EQ(CodeOf(m_stream.Block(id)), VxError::Ok) << id;
        ExpectJoined(id);
    }
}

TEST_P(JoinedLinesTest, AreShownWhenTheLastPacketComesAgainAsItWas)
{
    const auto packets = m_stream.Block(1);
    Send(m_asking, packets);
    EXPECT_EQ(Asked(), Ranges({{kLastId, kLastId}}));
    EXPECT_TRUE(m_sink.delivered.empty());
    Send(m_asking, {packets[kLastId]});

    ASSERT_EQ(m_sink.delivered.size(), 1u);
    ExpectJoined(1);

    Send(m_asking, m_stream.Block(2));
    ASSERT_EQ(m_sink.delivered.size(), 2u) << "nothing more is asked for";
    ExpectJoined(2);
}

TEST_P(JoinedLinesTest, AreShownFromTheThirdBlockOnByACameraThatDoesNotAnswer)
{
    for (std::uint64_t id = 1; id <= 2; ++id)
        EXPECT_EQ(CodeOf(m_asking, m_stream.Block(id)), VxError::MissingPackets) << id;
    EXPECT_EQ(CodeOf(m_asking, m_stream.Block(3)), VxError::Ok);
    ExpectJoined(3);
}

TEST_P(JoinedLinesTest, AreShownAtOnceWhereTheyEndWithAFullPacket)
{
    m_stream.stepBytes = kJoinedBytes / 41; // exactly
    EXPECT_EQ(CodeOf(m_stream.Block(1)), VxError::Ok);
    ExpectJoined(1);
}

TEST_P(JoinedLinesTest, ALostPacketWithWhatRoundedLinesHaveMoreIsMissed)
{
    m_stream.stepBytes = kJoinedBytes / 41; // exactly
    m_stream.payloadBytes = kRoundedBytes;
    for (std::uint64_t id = 1; id <= 4; ++id) {
        auto packets = m_stream.Block(id);
        packets.erase(packets.end() - 2);
        EXPECT_EQ(CodeOf(packets), VxError::MissingPackets);
    }
}

TEST_P(JoinedLinesTest, AreRecognizedWhenTheLeaderComesLast)
{
    for (std::uint64_t id = 1; id <= 4; ++id) {
        auto packets = m_stream.Block(id);
        std::ranges::rotate(packets, packets.begin() + 1);
        EXPECT_EQ(CodeOf(packets), id <= 2 ? VxError::MissingPackets : VxError::Ok) << id;
    }
    ExpectJoined(4);
}

TEST_P(JoinedLinesTest, NeedNoTrailerOnceTheyAreKnown)
{
    auto packets = m_stream.Block(++m_id);
    packets.pop_back();
    EXPECT_EQ(CodeOf(packets), VxError::MissingPackets);
    SendUntilBelieved();
    packets = m_stream.Block(++m_id);
    packets.pop_back();
    EXPECT_EQ(CodeOf(packets), VxError::Ok);
    ExpectJoined(m_id);
}

TEST_P(JoinedLinesTest, MayBeFewerThanAnnounced)
{
    constexpr std::uint32_t kFewerPx = 21;
    SendUntilBelieved();
    m_stream.payloadBytes = 20'192; // 961.5 * 21, rounded up
    auto packets = m_stream.Block(++m_id);
    packets.back() = m_stream.Trailer(m_id, kFewerPx);
    EXPECT_EQ(CodeOf(packets), VxError::Ok);
    ExpectJoined(m_id, 20'192);
    EXPECT_EQ(m_sink.delivered.back().info.geometry.heightPx, kFewerPx);
    // One byte less is a packet that was cut.
    m_stream.payloadBytes = 20'191;
    packets = m_stream.Block(++m_id);
    packets.back() = m_stream.Trailer(m_id, kFewerPx);
    EXPECT_EQ(CodeOf(packets), VxError::MissingPackets);
}

TEST_P(JoinedLinesTest, NeedABufferOfTheirOwnSizeOnly)
{
    FakeSink small(4, kJoinedBytes);
    BlockAssembler assembler({}, small, m_counters);
    const auto codeOf = [&](const std::vector<Packet>& packets) {
        Send(assembler, packets);
        m_now += 300ms;
        assembler.OnTime(m_now);
        return small.delivered.back().info.code;
    };
    for (std::uint64_t id = 1; id <= 4; ++id) {
        EXPECT_EQ(codeOf(m_stream.Block(id)), id <= 2 ? VxError::MissingPackets : VxError::Ok) << id;
        EXPECT_EQ(small.delivered.back().info.geometry.memoryBytes, kJoinedBytes) << "it fits";
    }
    EXPECT_EQ(small.delivered.back().info.receivedBytes, kJoinedBytes);
    m_stream.payloadBytes = kRoundedBytes;
    EXPECT_EQ(codeOf(m_stream.Block(5)), VxError::BufferTooSmall);
}

TEST_P(JoinedLinesTest, BlocksThatAreCutOnceOrTwiceWhereTheyWouldEndAreNotGood)
{
    m_stream.payloadBytes = kRoundedBytes;
    for (std::uint64_t id = 1; id <= 20; id += 3) {
        EXPECT_EQ(CodeOf(m_stream.Block(id)), VxError::Ok);
        ExpectRounded();
        EXPECT_EQ(CodeOf(BlockWithLastCutTo(id + 1, kJoinedBytes)), VxError::MissingPackets);
        EXPECT_EQ(CodeOf(BlockWithLastCutTo(id + 2, kJoinedBytes)), VxError::MissingPackets);
    }
}

TEST_P(JoinedLinesTest, APacketThatIsCutWhereTheyWouldEndAndComesWholeIsTaken)
{
    m_stream.payloadBytes = kRoundedBytes;
    for (std::uint64_t id = 1; id <= 5; ++id) {
        m_sink.delivered.clear();
        Send(m_asking, BlockWithLastCutTo(id, kJoinedBytes));
        EXPECT_EQ(Asked(), Ranges({{kLastId, kLastId}})) << id;
        EXPECT_TRUE(m_sink.delivered.empty());
        Send(m_asking, {m_stream.Payload(id, kLastId)});
        ExpectRounded();
    }
}

TEST_P(JoinedLinesTest, APacketCutShortIsNeverGood)
{
    for (const std::size_t whole : {kRoundedBytes, kJoinedBytes}) {
        m_unasked.Abort();
        m_stream.payloadBytes = whole;
        SendUntilBelieved();
        for (std::size_t end = (kLastId - 1) * kStepBytes + 1; end < whole; ++end) {
            ASSERT_EQ(CodeOf(BlockWithLastCutTo(++m_id, end)), VxError::MissingPackets) << end;
            ASSERT_EQ(CodeOf(m_stream.Block(++m_id)), VxError::Ok) << end;
        }
        m_id = 0;
    }
}

TEST_P(JoinedLinesTest, RoundedLinesBehindJoinedOnesAreReadAsWhatTheyAre)
{
    SendUntilBelieved();
    m_stream.payloadBytes = kRoundedBytes;
    for (std::size_t end = kJoinedBytes + 1; end < kRoundedBytes; ++end)
        EXPECT_EQ(CodeOf(BlockWithLastCutTo(++m_id, end)), VxError::MissingPackets) << end;
    EXPECT_EQ(CodeOf(m_stream.Block(++m_id)), VxError::Ok);
    ExpectRounded();
    EXPECT_EQ(CodeOf(BlockWithLastCutTo(++m_id, kJoinedBytes)), VxError::MissingPackets);
}

TEST_P(JoinedLinesTest, AnotherFormatAndANewAcquisitionBeginAnew)
{
    SendUntilBelieved();
    EXPECT_EQ(CodeOf(m_stream.Block(++m_id)), VxError::Ok);
    m_stream.leader.pixelFormat = 0x010C0006; // Mono12Packed, of the same size
    EXPECT_EQ(CodeOf(m_stream.Block(++m_id)), VxError::MissingPackets);
    m_stream.leader.pixelFormat = kMono12p;
    EXPECT_EQ(CodeOf(m_stream.Block(++m_id)), VxError::Ok);

    m_unasked.Abort();
    EXPECT_EQ(CodeOf(m_stream.Block(1)), VxError::MissingPackets);
}

TEST_P(JoinedLinesTest, PixelsThatShareComponentsAreNotShown)
{
    m_stream.leader.widthPx = 11;             // 27.5 bytes a line
    m_stream.leader.pixelFormat = 0x02140087; // YCbCr422_10p
    m_stream.payloadBytes = 853;              // 27.5 * 31, rounded up
    m_stream.stepBytes = 500;
    for (std::uint64_t id = 1; id <= 4; ++id)
        EXPECT_EQ(CodeOf(m_stream.Block(id)), VxError::NotSupported) << id;
}

TEST_P(JoinedLinesTest, PaddedLinesDoNotRunTogether)
{
    m_stream.leader.linePaddingBytes = 2;
    m_stream.payloadBytes = kJoinedBytes + std::size_t{2} * kHeightPx;
    FakeSink large(4, kRoundedBytes + std::size_t{2} * kHeightPx);
    BlockAssembler assembler({}, large, m_counters);
    for (std::uint64_t id = 1; id <= 4; ++id) {
        Send(assembler, m_stream.Block(id));
        m_now += 300ms;
        assembler.OnTime(m_now);
        EXPECT_EQ(large.delivered.back().info.code, VxError::NotSupported) << id;
    }
}

/// Of a part the leader tells how many bytes come.
TEST_P(JoinedLinesTest, OfAPartAreKnownByItsLength)
{
    const gvsp::PartDescriptor picture{.dataType = gvsp::PartDescriptor::kImage2D,
                                       .lengthBytes = kJoinedBytes,
                                       .pixelFormat = kMono12p,
                                       .widthPx = kWidthPx,
                                       .heightPx = kHeightPx};
    const auto blockOf = [&](std::uint64_t id) {
        std::vector<Packet> packets{m_stream.Header(id, gvsp::PacketFormat::Leader, 0)};
        Packet leader(gvsp::kLeaderStartBytes + gvsp::kPartDescriptorBytes);
        VxByteWriter out(leader);
        gvsp::WriteLeaderStart(out, {.payloadType = {gvsp::PayloadType::kMultiPart}, .timestampTicks = 4711});
        gvsp::WritePartDescriptor(out, picture);
        packets[0].insert(packets[0].end(), leader.begin(), leader.end());
        for (std::uint32_t packetId = 1; packetId <= kLastId; ++packetId) {
            const Packet payload = m_stream.Payload(id, packetId);
            Packet prefix(gvsp::kPartPrefixBytes);
            VxByteWriter head(prefix);
            gvsp::WritePartPrefix(head, {.partId = 0, .offsetBytes = (packetId - 1) * kStepBytes});
            Packet packet = m_stream.Header(id, gvsp::PacketFormat::PayloadMultiPart, packetId);
            packet.insert(packet.end(), prefix.begin(), prefix.end());
            const auto data = std::span(payload).subspan(gvsp::HeaderBytes(m_stream.idMode));
            packet.insert(packet.end(), data.begin(), data.end());
            packets.push_back(packet);
        }
        packets.push_back(m_stream.Header(id, gvsp::PacketFormat::Trailer, kLastId + 1));
        packets.back().insert(packets.back().end(),
                              {std::byte{0}, std::byte{0}, std::byte{0}, std::byte{0x0A}});
        return packets;
    };

    EXPECT_EQ(CodeOf(blockOf(1)), VxError::Ok);
    ExpectJoined(1);
    auto cut = blockOf(2);
    cut[kLastId].pop_back();
    EXPECT_EQ(CodeOf(cut), VxError::MissingPackets);
}

/// Behind a picture with chunks stands a list that tells how long it is.
TEST_P(JoinedLinesTest, WithChunksAreKnownByTheList)
{
    constexpr std::size_t kChunkBytes = 100;
    m_stream.payloadBytes = kJoinedBytes + 8 + kChunkBytes + 8;
    const auto payloadOf = [&](std::uint64_t id) {
        Packet payload;
        for (std::size_t offset = 0; offset < m_stream.payloadBytes; ++offset)
            payload.push_back(StreamPackets::ByteAt(id, offset));
        VxByteWriter first{std::span(payload).subspan(kJoinedBytes, 8)};
        first.U32be(1);
        first.U32be(kJoinedBytes);
        VxByteWriter second{std::span(payload).last(8)};
        second.U32be(2);
        second.U32be(kChunkBytes);
        return payload;
    };
    m_stream.leader.start.payloadType = {gvsp::PayloadType::kImage | gvsp::PayloadType::kChunksFollow};
    const auto blockOf = [&](std::uint64_t id) {
        auto packets = m_stream.Block(id);
        const Packet payload = payloadOf(id);
        for (std::uint32_t packetId = 1; packetId <= kLastId; ++packetId) {
            const std::size_t begin = (packetId - 1) * kStepBytes;
            const auto data = std::span(payload).subspan(begin, std::min(kStepBytes, payload.size() - begin));
            std::ranges::copy(data, packets[packetId].begin() +
                                        static_cast<std::ptrdiff_t>(gvsp::HeaderBytes(m_stream.idMode)));
        }
        return packets;
    };
    FakeSink large(4, m_stream.payloadBytes);
    BlockAssembler assembler({}, large, m_counters);
    Send(assembler, blockOf(1));

    ASSERT_EQ(large.delivered.size(), 1u);
    EXPECT_EQ(large.delivered[0].info.code, VxError::Ok);
    EXPECT_TRUE(large.delivered[0].info.geometry.areLinesJoined);
    EXPECT_EQ(large.delivered[0].info.geometry.memoryBytes, kJoinedBytes);
}

INSTANTIATE_TEST_SUITE_P(Ids, JoinedLinesTest,
                         testing::Values(gvsp::IdMode::Standard, gvsp::IdMode::Extended),
                         [](const auto& each) { return IdsOf(each.param); });

} // namespace
} // namespace receive
