#include "ChunkPackets.h"
#include "FakeSink.h"

#include "VxCamera/receive/BlockAssembler.h"
#include "VxCamera/wire/gvsp/MultiPart.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <random>
#include <utility>
#include <vector>

namespace receive {
namespace {

using namespace std::chrono_literals;
using Packet = StreamPackets::Packet;

/// A camera that notes what it is asked for, and sends nothing by itself.
class NotingChannel final : public IResendChannel {
public:
    using Range = std::pair<std::uint32_t, std::uint32_t>;

    [[nodiscard]] bool IsOpen() const override { return true; }
    void Ask(gvsp::IdMode idMode, std::uint64_t, std::uint32_t first, std::uint32_t last) override
    {
        lastMode = idMode;
        asked.emplace_back(first, last);
    }

    std::vector<Range> asked;
    gvsp::IdMode lastMode = gvsp::IdMode::Standard;
};
using Ranges = std::vector<NotingChannel::Range>;

/// An assembler of a device in control, whose camera sends again.
class AskingFixture {
protected:
    static constexpr std::size_t kBufferBytes = 5000;

    void Send(const Packet& packet) { m_assembler.OnPacket(packet, m_now); }
    void SendAll(const std::vector<Packet>& packets)
    {
        for (const Packet& packet : packets)
            Send(packet);
    }
    void Wait(std::chrono::milliseconds duration)
    {
        m_now += duration;
        m_assembler.OnTime(m_now);
    }
    /// Nothing is sent again.
    [[nodiscard]] VxError CodeWithout(const std::vector<Packet>& packets)
    {
        const std::size_t before = m_sink.delivered.size();
        SendAll(packets);
        Wait(300ms);
        EXPECT_EQ(m_sink.delivered.size(), before + 1);
        return m_sink.delivered.back().info.code;
    }
    [[nodiscard]] VxError LastCode() const { return m_sink.delivered.back().info.code; }
    /// @return  what is asked for within a few milliseconds
    [[nodiscard]] Ranges Asked()
    {
        m_channel.asked.clear();
        Wait(6ms); // longer than an answer is waited for
        Wait(2ms); // and than a gap, of what counts as missing only now
        return m_channel.asked;
    }

    FakeSink m_sink{4, kBufferBytes};
    StreamCounters m_counters;
    NotingChannel m_channel;
    BlockAssembler m_assembler{{}, m_sink, m_counters, &m_channel};
    IVxClock::Time m_now{std::chrono::hours(1)};
};

std::string IdsOf(gvsp::IdMode mode)
{
    return mode == gvsp::IdMode::Extended ? "ExtendedIds" : "StandardIds";
}

/// A picture with chunks behind it, of every payload type that has them.
class CutChunksTest : public testing::TestWithParam<std::tuple<gvsp::IdMode, std::uint16_t>>,
                      protected AskingFixture {
protected:
    CutChunksTest()
    {
        m_stream.idMode = std::get<0>(GetParam());
        m_stream.payloadType = {std::get<1>(GetParam())};
        m_assembler.SetCameraPicture(
            PictureShape{0x01080001, ChunkPackets::kWidthPx, ChunkPackets::kHeightPx});
    }

    [[nodiscard]] bool IsChunkData() const
    {
        return m_stream.payloadType.Type() == gvsp::PayloadType::kChunkData;
    }
    void ExpectPayload(std::uint64_t blockId)
    {
        ASSERT_EQ(LastCode(), VxError::Ok);
        const auto payload = m_stream.PayloadOf(blockId);
        const auto& memory = m_sink.delivered.back().memory;
        EXPECT_TRUE(std::equal(payload.begin(), payload.end(), memory.begin()));
        EXPECT_EQ(m_sink.delivered.back().info.receivedBytes, payload.size());
    }

    ChunkPackets m_stream;
};

TEST_P(CutChunksTest, ALastPacketCutToAnyLengthIsNeverGood)
{
    EXPECT_EQ(CodeWithout(m_stream.Block(1)), VxError::Ok);
    std::uint64_t id = 1;
    const std::size_t lastBytes = m_stream.LastBytes();
    for (std::size_t left = 1; left < lastBytes; ++left) {
        ASSERT_EQ(CodeWithout(m_stream.BlockWithLastCutTo(++id, left)), VxError::MissingPackets) << left;
        ASSERT_EQ(m_sink.delivered.back().info.packetsMissing, 1u) << left;
        m_sink.delivered.clear();
    }
    EXPECT_EQ(m_counters.packetsWrongSize.Value(), lastBytes - 1);
}

TEST_P(CutChunksTest, ALastPacketCutExactlyBetweenTwoChunksIsAskedForAndTaken)
{
    std::uint64_t id = 0;
    for (const std::size_t left : m_stream.ChunkEndsInLastPacket()) {
        SendAll(m_stream.BlockWithLastCutTo(++id, left));
        ASSERT_EQ(Asked(), Ranges({{m_stream.LastId(), m_stream.LastId()}})) << left;
        EXPECT_EQ(m_channel.lastMode, m_stream.idMode);
        EXPECT_EQ(m_sink.delivered.size(), id - 1) << "it may be sent again";
        Send(m_stream.Payload(id, m_stream.LastId()));

        ASSERT_EQ(m_sink.delivered.size(), id);
        ExpectPayload(id);
    }
    EXPECT_EQ(m_counters.packetsRecovered.Value(), id);
}

TEST_P(CutChunksTest, APacketInFrontCutInItsChunksIsAskedForAndTaken)
{
    auto packets = m_stream.Block(1);
    packets[ChunkPackets::kPacketWithPictureEnd].resize(gvsp::HeaderBytes(m_stream.idMode) + 70);
    SendAll(packets);
    const auto id = static_cast<std::uint32_t>(ChunkPackets::kPacketWithPictureEnd);
    EXPECT_EQ(Asked(), Ranges({{id, id}}));
    Send(m_stream.Payload(1, id));

    ASSERT_EQ(m_sink.delivered.size(), 1u);
    ExpectPayload(1);

    packets = m_stream.Block(2);
    packets[ChunkPackets::kPacketWithPictureEnd].pop_back();
    EXPECT_EQ(CodeWithout(packets), VxError::MissingPackets);
}

TEST_P(CutChunksTest, ALastPacketThatComesCutAgainAndAgainIsNotGood)
{
    const auto packets = m_stream.BlockWithLastCutTo(1, 100);
    SendAll(packets);
    for (int i = 0; i < 5; ++i) {
        EXPECT_EQ(Asked(), Ranges({{m_stream.LastId(), m_stream.LastId()}})) << i;
        Send(packets[m_stream.LastId()]);
    }
    Wait(300ms);

    ASSERT_EQ(m_sink.delivered.size(), 1u);
    EXPECT_EQ(LastCode(), VxError::MissingPackets);
}

TEST_P(CutChunksTest, ALastPacketCutShortIsNotGoodInWhateverOrderTheyCome)
{
    std::mt19937 chance(5);
    for (std::uint64_t id = 1; id <= 200; ++id) {
        const std::size_t left = 1 + chance() % (m_stream.LastBytes() - 1);
        auto packets = m_stream.BlockWithLastCutTo(id, left);
        std::ranges::shuffle(packets, chance);
        ASSERT_EQ(CodeWithout(packets), VxError::MissingPackets) << id;
    }
}

TEST_P(CutChunksTest, WhereTheTrailerTellsNothingTheListOfChunksTellsOfACut)
{
    // Of the chunk that was cut nothing is left behind these.
    const auto ends = m_stream.ChunkEndsInLastPacket();
    std::uint64_t id = 0;
    for (const ChunkPackets::Told told : {ChunkPackets::Told::Zero, ChunkPackets::Told::Short}) {
        m_stream.told = told;
        for (std::size_t left = 1; left < m_stream.LastBytes(); ++left) {
            const bool isBetween = std::ranges::find(ends, left) != ends.end();
            ASSERT_EQ(CodeWithout(m_stream.BlockWithLastCutTo(++id, left)),
                      isBetween ? VxError::Ok : VxError::MissingPackets)
                << left;
            m_sink.delivered.clear();
        }
        EXPECT_EQ(CodeWithout(m_stream.Block(++id)), VxError::Ok);
    }
}

TEST_P(CutChunksTest, ACutThatTheListOfChunksTellsOfIsAskedFor)
{
    m_stream.told = ChunkPackets::Told::Zero;
    SendAll(m_stream.BlockWithLastCutTo(1, 50));
    EXPECT_EQ(Asked(), Ranges({{m_stream.LastId(), m_stream.LastId()}}));
    Send(m_stream.Payload(1, m_stream.LastId()));

    ASSERT_EQ(m_sink.delivered.size(), 1u);
    ExpectPayload(1);
}

TEST_P(CutChunksTest, AChunkOfZerosThatIsCutDoesNotLeadToTheOneBefore)
{
    m_stream.told = ChunkPackets::Told::Zero;
    m_stream.isLastChunkZero = true;
    EXPECT_EQ(CodeWithout(m_stream.Block(1)), VxError::Ok);
    const std::size_t begin = m_stream.ChunkEndsInLastPacket().back();
    for (std::size_t left = begin + 1; left < m_stream.LastBytes(); ++left)
        ASSERT_EQ(CodeWithout(m_stream.BlockWithLastCutTo(left, left)), VxError::MissingPackets) << left;
}

TEST_P(CutChunksTest, ACameraThatFillsItsLastPacketUpLosesNoPicture)
{
    m_stream.fillBytes = ChunkPackets::kStepBytes - m_stream.LastBytes();
    EXPECT_EQ(CodeWithout(m_stream.Block(1)), VxError::Ok);
    m_stream.fillBytes = 3;
    EXPECT_EQ(CodeWithout(m_stream.Block(2)), VxError::Ok);
    m_stream.fillBytes = ChunkPackets::kStepBytes - (m_stream.LastBytes() - 3);
    m_stream.told = ChunkPackets::Told::Zero;
    // Chunk data cannot be read from an end that is none.
    EXPECT_EQ(CodeWithout(m_stream.Block(3)), IsChunkData() ? VxError::NotAnImage : VxError::Ok);
}

INSTANTIATE_TEST_SUITE_P(PayloadTypes, CutChunksTest,
                         testing::Combine(testing::Values(gvsp::IdMode::Standard, gvsp::IdMode::Extended),
                                          testing::Values(std::uint16_t{0x4001},
                                                          gvsp::PayloadType::kChunkData,
                                                          gvsp::PayloadType::kExtendedChunkData)),
                         [](const auto& each) {
                             return IdsOf(std::get<0>(each.param)) + "Type" +
                                    std::to_string(std::get<1>(each.param));
                         });

/// A picture with chunks as not every camera sends it.
class UnusualChunksTest : public testing::TestWithParam<gvsp::IdMode>, protected AskingFixture {
protected:
    UnusualChunksTest() { m_stream.idMode = GetParam(); }

    ChunkPackets m_stream;
};

TEST_P(UnusualChunksTest, ChunksThatAreCountedWithoutThePictureTellOfACut)
{
    m_stream.told = ChunkPackets::Told::BehindPicture;
    std::uint64_t id = 0;
    for (const bool isChunk : {true, false}) {
        m_stream.isPictureAChunk = isChunk;
        EXPECT_EQ(CodeWithout(m_stream.Block(++id)), VxError::Ok);
        for (std::size_t left = 1; left < m_stream.LastBytes(); ++left)
            ASSERT_EQ(CodeWithout(m_stream.BlockWithLastCutTo(++id, left)), VxError::MissingPackets) << left;
    }
}

TEST_P(UnusualChunksTest, AListWithoutThePictureTellsOfACutOnceOneWasRead)
{
    m_stream.told = ChunkPackets::Told::Short;
    m_stream.isPictureAChunk = false;
    EXPECT_EQ(CodeWithout(m_stream.Block(1)), VxError::Ok);
    EXPECT_EQ(CodeWithout(m_stream.BlockWithLastCutTo(2, 50)), VxError::MissingPackets);
    SendAll(m_stream.BlockWithLastCutTo(3, 50));
    EXPECT_EQ(Asked(), Ranges({{m_stream.LastId(), m_stream.LastId()}}));
    Send(m_stream.Payload(3, m_stream.LastId()));
    EXPECT_EQ(LastCode(), VxError::Ok);
}

TEST_P(UnusualChunksTest, ACameraWhoseListsCannotBeReadAndWhoseTrailersTellNothingLosesNoPicture)
{
    m_stream.isListReadable = false;
    std::uint64_t id = 0;
    for (const ChunkPackets::Told told : {ChunkPackets::Told::Zero, ChunkPackets::Told::Short}) {
        m_stream.told = told;
        for (int i = 0; i < 3; ++i)
            EXPECT_EQ(CodeWithout(m_stream.Block(++id)), VxError::Ok);
    }
    EXPECT_TRUE(m_channel.asked.empty());
}

TEST_P(UnusualChunksTest, ListsThatCouldBeReadBeforeAnAcquisitionAreNotExpectedInTheNext)
{
    m_stream.told = ChunkPackets::Told::Zero;
    EXPECT_EQ(CodeWithout(m_stream.Block(1)), VxError::Ok);
    m_assembler.Abort();
    m_stream.isListReadable = false;
    EXPECT_EQ(CodeWithout(m_stream.Block(1)), VxError::Ok);
}

TEST_P(UnusualChunksTest, ChunkDataOfWhichNobodyKnowsThePictureAreNoneAndAreNotAskedFor)
{
    m_stream.payloadType = {gvsp::PayloadType::kChunkData};
    SendAll(m_stream.BlockWithLastCutTo(1, 50));

    ASSERT_EQ(m_sink.delivered.size(), 1u);
    EXPECT_EQ(LastCode(), VxError::NotAnImage);
    EXPECT_TRUE(Asked().empty());
}

/// A first block, of which nobody knows how long its chunks are, and whose end is lost.
class LostEndTest : public UnusualChunksTest {
protected:
    /// @param lost  packets, the trailer included
    void ExpectTheEndIsAskedFor(std::size_t lost)
    {
        const auto packets = m_stream.Block(1);
        SendAll({packets.begin(), packets.end() - static_cast<std::ptrdiff_t>(lost)});
        SendAll(m_stream.Block(2));
        for (std::size_t i = 0; i < lost; ++i) {
            for (const auto& [first, last] : Asked()) {
                for (std::uint32_t id = first; id <= last; ++id)
                    Send(packets.at(id));
            }
        }
        ASSERT_EQ(m_sink.delivered.size(), 2u);
        EXPECT_EQ(m_sink.delivered[0].info.code, VxError::Ok);
        EXPECT_EQ(m_sink.delivered[1].info.code, VxError::Ok);
        EXPECT_EQ(m_counters.packetsRequestedAgain.Value(), lost);
    }
};

TEST_P(LostEndTest, ALostTrailerIsAskedForWhenTheNextBlockHasCome)
{
    ExpectTheEndIsAskedFor(1);
}

TEST_P(LostEndTest, ALostLastPacketAndItsTrailerAreAskedForWhenTheNextBlockHasCome)
{
    ExpectTheEndIsAskedFor(2);
}

TEST_P(LostEndTest, MoreThanTheChunksIsAskedForWhenTheNextBlockHasCome)
{
    ExpectTheEndIsAskedFor(4);
}

INSTANTIATE_TEST_SUITE_P(Ids, LostEndTest, testing::Values(gvsp::IdMode::Standard, gvsp::IdMode::Extended),
                         [](const auto& each) { return IdsOf(each.param); });

TEST_P(UnusualChunksTest, ABlockWithFullPacketsAloneThatHasFewerBytesThanItTellsIsNotGood)
{
    m_stream.chunks = {ChunkPackets::kPictureBytes, 700, 216};
    ASSERT_EQ(m_stream.LastBytes(), ChunkPackets::kStepBytes);
    auto packets = m_stream.Block(1);
    EXPECT_EQ(CodeWithout(packets), VxError::Ok);
    packets = m_stream.Block(2);
    packets.back().end()[-6] = std::byte{0xFF}; // of the bytes of all chunks
    EXPECT_EQ(CodeWithout(packets), VxError::MissingPackets);
}

TEST_P(UnusualChunksTest, ChunksBehindFewerLinesThanAnnouncedAreNotShownAsLines)
{
    m_stream.leaderHeightPx = ChunkPackets::kHeightPx + 8; // with the chunks more than these lines come
    EXPECT_EQ(CodeWithout(m_stream.Block(1)), VxError::Ok);

    EXPECT_EQ(m_sink.delivered.back().info.geometry.heightPx, ChunkPackets::kHeightPx);
}

INSTANTIATE_TEST_SUITE_P(Ids, UnusualChunksTest,
                         testing::Values(gvsp::IdMode::Standard, gvsp::IdMode::Extended),
                         [](const auto& each) { return IdsOf(each.param); });

/// Pictures of two packets, with nothing behind them.
class TwoPacketsTest : public testing::TestWithParam<gvsp::IdMode>, protected AskingFixture {
protected:
    TwoPacketsTest() { m_stream.idMode = GetParam(); }

    /// @return  the picture of a block of that size
    std::vector<Packet> Block(std::uint64_t blockId, std::uint32_t bytes, std::size_t stepBytes)
    {
        m_stream.leader = StreamPackets::Mono8(bytes, 1);
        m_stream.payloadBytes = bytes;
        m_stream.stepBytes = stepBytes;
        return m_stream.Block(blockId);
    }
    void ExpectPicture(std::uint64_t blockId) const
    {
        const auto& delivered = m_sink.delivered.back();
        ASSERT_EQ(delivered.info.blockId, blockId);
        ASSERT_EQ(delivered.info.code, VxError::Ok);
        for (std::size_t offset = 0; offset < m_stream.payloadBytes; ++offset)
            ASSERT_EQ(delivered.memory[offset], StreamPackets::ByteAt(blockId, offset)) << offset;
    }

    StreamPackets m_stream;
};

TEST_P(TwoPacketsTest, OtherPacketsThanBeforeAreTakenAlsoWhenTheFirstOneIsLate)
{
    struct Size {
        std::uint32_t bytes;
        std::size_t before;
        std::size_t now;
    };
    std::uint64_t id = 0;
    // Lower: the second packet's place was in front of the end, at it, and behind it; then higher.
    for (const Size size : {Size{700, 500, 400},
                            {500, 500, 300},
                            {500, 900, 300},
                            {600, 300, 300},
                            {800, 300, 500},
                            {800, 400, 700}}) {
        for (const bool isTrailerBefore : {false, true}) {
            EXPECT_EQ(CodeWithout(Block(++id, 2000, size.before)), VxError::Ok);
            const auto packets = Block(++id, size.bytes, size.now);
            ASSERT_EQ(packets.size(), 4u);
            SendAll({packets[0], packets[2]});
            SendAll({packets[isTrailerBefore ? 3 : 1], packets[isTrailerBefore ? 1 : 3]});
            ASSERT_EQ(m_sink.delivered.size(), id) << size.bytes << " " << size.before;
            ExpectPicture(id);
        }
    }
    EXPECT_TRUE(m_channel.asked.empty());
}

TEST_P(TwoPacketsTest, AFirstPacketThatIsLateAndWasCutIsNotTakenButAskedForAgain)
{
    EXPECT_EQ(CodeWithout(Block(1, 2000, 500)), VxError::Ok);
    std::uint64_t id = 1;
    for (std::size_t left = 1; left < 400; ++left) {
        auto packets = Block(++id, 700, 400);
        packets[1].resize(gvsp::HeaderBytes(m_stream.idMode) + left);
        const Packet whole = Block(id, 700, 400)[1];
        SendAll({packets[0], packets[2], packets[1], packets[3]});
        ASSERT_EQ(Asked(), Ranges({{1, 1}})) << left;
        ASSERT_EQ(m_sink.delivered.size(), id - 1) << left;
        if (left % 2 == 0) {
            Send(packets[1]); // cut again
            Wait(300ms);
            ASSERT_EQ(LastCode(), VxError::MissingPackets) << left;
        } else {
            Send(whole);
            ExpectPicture(id);
        }
        EXPECT_EQ(CodeWithout(Block(++id, 2000, 500)), VxError::Ok); // larger packets again
    }
}

TEST_P(TwoPacketsTest, WhicheverOfTheTwoWasCutIsAskedForAndTaken)
{
    std::uint64_t id = 0;
    for (const std::size_t cut : {1, 2}) {
        for (const std::size_t left : {100, 299, 300, 301, 399}) {
            const auto packets = Block(++id, 800, 500);
            auto damaged = packets;
            damaged[cut].resize(gvsp::HeaderBytes(m_stream.idMode) +
                                std::min<std::size_t>(left, cut == 2 ? 299 : left));
            SendAll(damaged);
            for (int round = 0; round < 2; ++round) { // where the first is longer, the other was misplaced
                for (const auto& [first, last] : Asked()) {
                    for (std::uint32_t packet = first; packet <= last; ++packet)
                        Send(packets[packet]);
                }
            }
            ASSERT_EQ(m_sink.delivered.size(), id) << cut << " " << left;
            ExpectPicture(id);
            m_assembler.Abort();
        }
    }
}

TEST_P(TwoPacketsTest, AFirstPacketThatWasCutIsTakenAgainBesideTheLastOfThree)
{
    EXPECT_EQ(CodeWithout(Block(1, 2000, 500)), VxError::Ok);
    const auto packets = Block(2, 1100, 500);
    auto cut = packets[1];
    cut.resize(gvsp::HeaderBytes(m_stream.idMode) + 400);
    SendAll({packets[0], cut, packets[3]});
    Send(packets[2]); // longer: the first one was cut
    EXPECT_EQ(Asked(), Ranges({{1, 1}, {3, 3}, {4, 4}}));
    SendAll({packets[1], packets[3], packets[4]});

    ASSERT_EQ(m_sink.delivered.size(), 2u);
    ExpectPicture(2);
}

INSTANTIATE_TEST_SUITE_P(Ids, TwoPacketsTest, testing::Values(gvsp::IdMode::Standard, gvsp::IdMode::Extended),
                         [](const auto& each) { return IdsOf(each.param); });

/// A block of two parts: a map in packet 1, and behind it a picture in pieces.
class CutPartsTest : public testing::TestWithParam<gvsp::IdMode>, protected AskingFixture {
protected:
    static constexpr std::uint32_t kFirstId = 2; // of the picture
    static constexpr std::size_t kPieceBytes = 500;
    static constexpr std::size_t kPictureBytes = std::size_t{64} * 40;

    [[nodiscard]] Packet Head(std::uint64_t blockId, gvsp::PacketFormat format, std::uint32_t packetId) const
    {
        StreamPackets stream;
        stream.idMode = GetParam();
        return stream.Header(blockId, format, packetId);
    }
    [[nodiscard]] Packet Leader(std::uint64_t blockId) const
    {
        gvsp::PartDescriptor map{.dataType = gvsp::PartDescriptor::kConfidenceMap, .lengthBytes = 100};
        const gvsp::PartDescriptor picture{.dataType = gvsp::PartDescriptor::kImage2D,
                                           .lengthBytes = kPictureBytes,
                                           .pixelFormat = 0x01080001,
                                           .widthPx = 64,
                                           .heightPx = 40};
        Packet data(gvsp::kLeaderStartBytes + 2 * gvsp::kPartDescriptorBytes);
        VxByteWriter out(data);
        gvsp::WriteLeaderStart(out, {.payloadType = {gvsp::PayloadType::kMultiPart}, .timestampTicks = 4711});
        gvsp::WritePartDescriptor(out, map);
        gvsp::WritePartDescriptor(out, picture);
        return Joined(Head(blockId, gvsp::PacketFormat::Leader, 0), data);
    }
    [[nodiscard]] Packet Piece(std::uint64_t blockId, std::uint32_t packetId) const
    {
        const bool isMap = packetId < kFirstId;
        const std::size_t begin = isMap ? 0 : (packetId - kFirstId) * kPieceBytes;
        const std::size_t end = isMap ? 100 : std::min(begin + kPieceBytes, kPictureBytes);
        Packet data(gvsp::kPartPrefixBytes);
        VxByteWriter out(data);
        gvsp::WritePartPrefix(out,
                              {.partId = static_cast<std::uint8_t>(isMap ? 0 : 1), .offsetBytes = begin});
        for (std::size_t offset = begin; offset < end; ++offset)
            data.push_back(StreamPackets::ByteAt(blockId, offset));
        return Joined(Head(blockId, gvsp::PacketFormat::PayloadMultiPart, packetId), data);
    }
    [[nodiscard]] std::vector<Packet> Block(std::uint64_t blockId) const
    {
        std::vector<Packet> packets{Leader(blockId)};
        while (packets.size() <= kLastId)
            packets.push_back(Piece(blockId, static_cast<std::uint32_t>(packets.size()))); // few
        packets.push_back(Joined(Head(blockId, gvsp::PacketFormat::Trailer, kLastId + 1),
                                 Packet{std::byte{0}, std::byte{0}, std::byte{0}, std::byte{0x0A}}));
        return packets;
    }
    static Packet Joined(Packet head, const Packet& data)
    {
        head.insert(head.end(), data.begin(), data.end());
        return head;
    }
    void ExpectPicture(std::uint64_t blockId) const
    {
        const auto& delivered = m_sink.delivered.back();
        ASSERT_EQ(delivered.info.blockId, blockId);
        ASSERT_EQ(delivered.info.code, VxError::Ok);
        for (std::size_t offset = 0; offset < kPictureBytes; ++offset)
            ASSERT_EQ(delivered.memory[offset], StreamPackets::ByteAt(blockId, offset)) << offset;
    }

    static constexpr std::uint32_t kLastId = kFirstId + kPictureBytes / kPieceBytes;
};

TEST_P(CutPartsTest, EveryPieceThatWasCutIsAskedForAtOnce)
{
    const auto packets = Block(1);
    auto cut = packets;
    cut[3].resize(cut[3].size() - 1);
    cut[5].resize(gvsp::HeaderBytes(GetParam()) + gvsp::kPartPrefixBytes); // nothing is left of it
    cut[kLastId].resize(cut[kLastId].size() - 10);
    SendAll(cut);
    EXPECT_EQ(Asked(), Ranges({{3, 3}, {5, 5}, {kLastId, kLastId}}));
    EXPECT_TRUE(m_sink.delivered.empty());
    SendAll({packets[3], packets[5], packets[kLastId]});

    ASSERT_EQ(m_sink.delivered.size(), 1u);
    ExpectPicture(1);
    EXPECT_EQ(m_counters.packetsWrongSize.Value(), 3u);
}

TEST_P(CutPartsTest, PiecesSideBySideThatWereCutAreAskedForAtOnceInWhateverOrderTheyCome)
{
    SendAll(Block(1)); // parts without a leader are taken for those of the block before
    std::mt19937 chance(7);
    for (std::uint64_t id = 2; id <= 100; ++id) {
        const auto packets = Block(id);
        auto cut = packets;
        cut[3].pop_back();
        cut[4].resize(cut[4].size() - 300);
        std::ranges::shuffle(cut, chance);
        SendAll(cut);
        ASSERT_EQ(Asked(), Ranges({{3, 3}, {4, 4}})) << id;
        SendAll({packets[4], packets[3]});
        ASSERT_EQ(m_sink.delivered.size(), id);
        ExpectPicture(id);
    }
}

TEST_P(CutPartsTest, APieceThatComesCutAgainIsAskedForAgainUntilTheBlockIsGivenUp)
{
    const auto packets = Block(1);
    auto cut = packets;
    cut[3].pop_back();
    cut[6].pop_back();
    SendAll(cut);
    EXPECT_EQ(Asked(), Ranges({{3, 3}, {6, 6}}));
    SendAll({cut[3], packets[6]});
    EXPECT_EQ(Asked(), Ranges({{3, 3}}));
    Send(cut[3]);
    EXPECT_EQ(Asked(), Ranges({{3, 3}}));
    Wait(300ms);

    ASSERT_EQ(m_sink.delivered.size(), 1u);
    EXPECT_EQ(LastCode(), VxError::MissingPackets);
    EXPECT_EQ(m_sink.delivered[0].info.packetsMissing, 1u);
}

TEST_P(CutPartsTest, APieceThatCameTwiceDoesNotMakeUpForOneThatWasCut)
{
    auto packets = Block(1);
    packets[4].pop_back();
    packets[1] = Joined(
        Head(1, gvsp::PacketFormat::PayloadMultiPart, 1), // instead of the map
        {packets[3].begin() + static_cast<std::ptrdiff_t>(gvsp::HeaderBytes(GetParam())), packets[3].end()});

    EXPECT_EQ(CodeWithout(packets), VxError::MissingPackets);
}

INSTANTIATE_TEST_SUITE_P(Ids, CutPartsTest, testing::Values(gvsp::IdMode::Standard, gvsp::IdMode::Extended),
                         [](const auto& each) { return IdsOf(each.param); });

} // namespace
} // namespace receive
