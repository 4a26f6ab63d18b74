#include "BlockAssemblerFixture.h"

#include <algorithm>
#include <random>

namespace receive {
namespace {

using namespace std::chrono_literals;
using Packet = StreamPackets::Packet;

/// Packets that are shorter, longer, or under another id than they should be: what comes of them is never
/// passed as good.
class BlockAssemblerDamageTest : public BlockAssemblerFixture {};

TEST_F(BlockAssemblerDamageTest, APacketCutShortIsNeverGood)
{
    const std::size_t count = m_stream.Block(1).size();
    for (std::size_t cut = 1; cut + 1 < count; ++cut) { // every payload packet
        auto packets = m_stream.Block(cut);
        packets[cut].pop_back();
        SendAll(packets);
        Wait(300ms);

        ASSERT_EQ(m_sink.delivered.size(), cut);
        EXPECT_EQ(CodeOf(cut - 1), VxError::MissingPackets) << cut;
    }
    EXPECT_EQ(m_counters.packetsWrongSize.Value(), count - 2);
}

TEST_F(BlockAssemblerDamageTest, TheLastPacketCutShortIsMissing)
{
    auto packets = m_stream.Block(1);
    auto& last = packets[packets.size() - 2];
    const Packet whole = last;
    last.pop_back();
    SendAll(packets);
    EXPECT_TRUE(m_sink.delivered.empty()) << "it may be sent again";
    Send(whole);

    ExpectPicture(0, 1);

    auto next = m_stream.Block(2);
    next[next.size() - 2].pop_back();
    SendAll(next);
    Wait(300ms);
    EXPECT_EQ(CodeOf(1), VxError::MissingPackets);
    EXPECT_EQ(m_sink.delivered[1].info.packetsMissing, 1u);
}

TEST_F(BlockAssemblerDamageTest, TheLastPacketCutShortIsMissingInWhateverOrderTheyCome)
{
    std::mt19937 chance(3);
    for (std::uint64_t id = 1; id <= 200; ++id) {
        auto packets = m_stream.Block(id);
        packets[packets.size() - 2].pop_back();
        std::ranges::shuffle(packets, chance);
        SendAll(packets);
        Wait(300ms);

        ASSERT_EQ(m_sink.delivered.size(), id);
        ASSERT_EQ(m_sink.delivered.back().info.code, VxError::MissingPackets) << id;
    }
}

TEST_F(BlockAssemblerDamageTest, AFirstPacketOfWhichLittleIsLeftCanBeRepaired)
{
    std::uint64_t id = 0;
    for (const std::size_t left : {1, 20, 63, 64, 65, 499}) {
        auto packets = m_stream.Block(++id);
        const Packet whole = packets[1];
        packets[1].resize(gvsp::HeaderBytes(m_stream.idMode) + left);
        SendAll(packets);
        ASSERT_EQ(m_sink.delivered.size(), id - 1) << "it may be sent again";
        Send(whole);

        ExpectPicture(id - 1, id);
        EXPECT_EQ(m_counters.packetsWrongSize.Value(), id) << left;
    }
}

TEST_F(BlockAssemblerDamageTest, SmallerPacketsThanBeforeAreTakenAlsoWhenTheFirstOneIsLate)
{
    SendBlock(1);
    m_stream.stepBytes = 300;
    const auto packets = m_stream.Block(2);
    Send(packets[0]);
    for (std::size_t i = 2; i < packets.size(); ++i)
        Send(packets[i]);
    EXPECT_EQ(m_counters.packetsWrongSize.Value(), 0u) << "counted with the block";
    EXPECT_EQ(m_sink.delivered.size(), 1u);
    Send(packets[1]);
    Send(packets[2]); // lay at the wrong place

    ExpectPicture(1, 2);
    EXPECT_EQ(m_counters.packetsWrongSize.Value(), 1u);
}

TEST_F(BlockAssemblerDamageTest, AStreamWhoseFirstPacketThatComesWasCutCanBeRepaired)
{
    const auto packets = m_stream.Block(1);
    Packet cut = packets[3];
    cut.resize(cut.size() - 100);
    SendAll({packets[0], cut}); // 1 and 2 are lost
    for (std::size_t i = 4; i < packets.size(); ++i)
        Send(packets[i]);
    SendAll({packets[1], packets[2], packets[3]});

    ExpectPicture(0, 1);
    EXPECT_EQ(m_counters.packetsWrongSize.Value(), 1u);
}

TEST_F(BlockAssemblerDamageTest, APacketThatIsTooLongDoesNotReplaceTheStepOfTheBlockBefore)
{
    SendBlock(1);
    auto packets = m_stream.Block(2);
    Packet tooLong = packets[3];
    tooLong.push_back(std::byte{0xFF});
    SendAll({packets[0], packets[2], tooLong}); // 1 is lost
    for (std::size_t i = 4; i < packets.size(); ++i)
        Send(packets[i]);
    SendAll({packets[1], packets[3]});

    ExpectPicture(1, 2);
    EXPECT_EQ(m_counters.packetsWrongSize.Value(), 1u);
}

TEST_F(BlockAssemblerDamageTest, APacketUnderAnIdBehindTheTrailerHidesNoHole)
{
    m_stream.leader = StreamPackets::Mono8(40, 50); // smaller than the buffer
    m_stream.payloadBytes = 40 * 50;                // 4 full packets
    auto packets = m_stream.Block(1);
    Packet astray = packets[3]; // packet 3, sent again under a wrong id
    astray[7] = std::byte{6};
    packets[3] = astray;
    SendAll(packets);
    Wait(300ms);

    ASSERT_EQ(m_sink.delivered.size(), 1u);
    EXPECT_EQ(CodeOf(0), VxError::MissingPackets);
    EXPECT_EQ(m_sink.delivered[0].info.packetsMissing, 1u);
}

TEST_F(BlockAssemblerDamageTest, APacketUnderAWrongIdDoesNotKeepTheRightOneOut)
{
    m_stream.leader = StreamPackets::Mono8(40, 50);
    m_stream.payloadBytes = 40 * 50;
    auto packets = m_stream.Block(1);
    Packet astray = packets[3];
    astray[7] = std::byte{6};
    SendAll({packets[0], packets[1], packets[2], packets[4], astray, packets[5]});
    EXPECT_TRUE(m_sink.delivered.empty());
    Send(packets[3]);

    ExpectPicture(0, 1);
}

TEST_F(BlockAssemblerDamageTest, MorePacketsThanThePictureHasDoNotHideAHoleWhenTheTrailerIsLost)
{
    m_stream.leader = StreamPackets::Mono8(40, 48); // 1920 bytes in a buffer of 3072
    m_stream.payloadBytes = 3000;                   // and the camera sends more than it announced
    auto packets = m_stream.Block(1);
    packets.pop_back();
    packets.erase(packets.begin() + 3);
    SendAll(packets);
    Wait(300ms);

    ASSERT_EQ(m_sink.delivered.size(), 1u);
    EXPECT_EQ(CodeOf(0), VxError::MissingPackets);
    EXPECT_EQ(m_sink.delivered[0].info.packetsMissing, 1u);
}

TEST_F(BlockAssemblerDamageTest, APacketThatIsTooLongIsNotStored)
{
    auto packets = m_stream.Block(1);
    packets[3].push_back(std::byte{0xFF});
    SendAll(packets);
    Wait(300ms);

    EXPECT_EQ(CodeOf(0), VxError::MissingPackets);
    EXPECT_EQ(m_counters.packetsWrongSize.Value(), 1u);
}

} // namespace
} // namespace receive
