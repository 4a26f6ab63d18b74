#include "AskingFixture.h"

#include "VxBase/VxByteWriter.h"
#include "VxCamera/wire/gvsp/MultiPart.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <random>
#include <vector>

namespace receive {
namespace {

using namespace std::chrono_literals;
using Packet = StreamPackets::Packet;

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

TEST_P(CutPartsTest, TheEndOfAFirstBlockThatIsLostIsAskedForWhenTheNextOneHasCome)
{
    const auto packets = Block(1);
    SendAll({packets.begin(), packets.end() - 2});
    SendAll(Block(2));
    EXPECT_EQ(Asked(), Ranges({{kLastId, kLastId}}));
    Send(packets[kLastId]); // the picture is whole without the trailer

    ASSERT_EQ(m_sink.delivered.size(), 2u);
    EXPECT_EQ(m_sink.delivered[0].info.code, VxError::Ok);
    ExpectPicture(2);
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
