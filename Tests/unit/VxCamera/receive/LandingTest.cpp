#include "LandingReceiver.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

namespace receive {
namespace {

using Packets = std::vector<StreamPackets::Packet>;

/// Whether the buffer holds the payload of its block, whole.
void ExpectPicture(const FakeSink::Delivered& delivered, std::size_t bytes)
{
    ASSERT_EQ(delivered.info.code, VxError::Ok);
    for (std::size_t offset = 0; offset < bytes; ++offset)
        ASSERT_EQ(delivered.memory[offset], StreamPackets::ByteAt(delivered.info.blockId, offset)) << offset;
}

/// All packets of a block, in batches of these sizes; the last size is repeated.
void Send(LandingReceiver& receiver, const Packets& packets, std::vector<std::size_t> sizes)
{
    for (std::size_t begin = 0; begin < packets.size();) {
        const std::size_t size = std::min(sizes.front(), packets.size() - begin);
        if (sizes.size() > 1)
            sizes.erase(sizes.begin());
        receiver.Receive(std::span(packets).subspan(begin, size));
        begin += size;
    }
}

class LandingTest : public testing::TestWithParam<gvsp::IdMode> {
protected:
    LandingTest()
    {
        m_stream.idMode = GetParam();
        m_stream.stepBytes = 64; // 48 packets
    }

    StreamPackets m_stream;
    LandingReceiver m_receiver;
};

TEST_P(LandingTest, PacketsThatAreExpectedLandInThePicture)
{
    Send(m_receiver, m_stream.Block(1), {2, 64});
    Send(m_receiver, m_stream.Block(2), {2, 10});

    ASSERT_EQ(m_receiver.sink.delivered.size(), 2u);
    ExpectPicture(m_receiver.sink.delivered[0], m_stream.payloadBytes);
    ExpectPicture(m_receiver.sink.delivered[1], m_stream.payloadBytes);
    EXPECT_EQ(m_receiver.atPlace, 2u * 47); // all but the first one, with which the block begins
}

TEST_P(LandingTest, BehindAMissingPacketTheOthersAreMovedToTheirPlaces)
{
    Packets packets = m_stream.Block(1);
    const auto missing = packets[20];
    packets.erase(packets.begin() + 20);
    packets.push_back(missing);
    Send(m_receiver, packets, {2, 64});

    ASSERT_EQ(m_receiver.sink.delivered.size(), 1u);
    ExpectPicture(m_receiver.sink.delivered[0], m_stream.payloadBytes);
    EXPECT_EQ(m_receiver.atPlace, 46u); // all but the first and the missing one
}

TEST_P(LandingTest, ALastPacketThatIsShortLandsToo)
{
    m_stream.stepBytes = 500;
    Send(m_receiver, m_stream.Block(1), {2, 64});

    ExpectPicture(m_receiver.sink.delivered.at(0), m_stream.payloadBytes);
    EXPECT_EQ(m_receiver.atPlace, 6u);
}

TEST_P(LandingTest, APacketOfAStrangerDoesNotStayInThePicture)
{
    Packets packets = m_stream.Block(1);
    auto foreign = packets[10];
    std::ranges::fill(std::span(foreign).subspan(gvsp::HeaderBytes(GetParam())), std::byte{0xFF});
    std::vector<Arrived> arrived;
    for (const auto& packet : packets)
        arrived.push_back({packet});
    arrived.insert(arrived.begin() + 10, {foreign, 0, kStranger});
    m_receiver.Receive(std::span(arrived).first(2));
    m_receiver.Receive(std::span(arrived).subspan(2));

    ExpectPicture(m_receiver.sink.delivered.at(0), m_stream.payloadBytes);
}

TEST_P(LandingTest, WhateverComesTheOutcomeIsThatOfTheCommonWay)
{
    std::mt19937 chance(3);
    const auto upTo = [&](std::size_t limit) { return chance() % (limit + 1); };
    for (int round = 0; round < 300; ++round) {
        Packets packets;
        m_stream.stepBytes = 64 + upTo(300);
        for (std::uint64_t id = 1; id <= 6; ++id)
            std::ranges::copy(m_stream.Block(id), std::back_inserter(packets));
        for (std::size_t i = upTo(8); i > 0; --i) {
            const std::size_t at = upTo(packets.size() - 2);
            switch (upTo(3)) {
            case 0:
                packets.erase(packets.begin() + static_cast<std::ptrdiff_t>(at));
                break;
            case 1:
                packets.insert(packets.begin() + static_cast<std::ptrdiff_t>(upTo(packets.size() - 1)),
                               packets[at]);
                break;
            case 2:
                std::swap(packets[at], packets[at + 1]);
                break;
            default:
                packets[at].resize(upTo(packets[at].size()));
                break;
            }
        }
        LandingReceiver landed;
        FakeSink sink{4, 64 * 48};
        StreamCounters counters;
        BlockAssembler plain{{}, sink, counters};
        std::vector<std::size_t> sizes;
        for (std::size_t i = 0; i < packets.size(); ++i)
            sizes.push_back(1 + upTo(Landing::kSlots - 1));
        Send(landed, packets, sizes);
        for (const auto& packet : packets)
            plain.OnPacket(packet, landed.now);

        landed.assembler.OnTime(landed.now + std::chrono::seconds(1));
        plain.OnTime(landed.now + std::chrono::seconds(1));

        ASSERT_EQ(landed.sink.delivered.size(), sink.delivered.size()) << round;
        for (std::size_t i = 0; i < sink.delivered.size(); ++i) {
            const auto& ours = landed.sink.delivered[i];
            const auto& theirs = sink.delivered[i];
            ASSERT_EQ(ours.info.code, theirs.info.code) << round;
            ASSERT_EQ(ours.info.blockId, theirs.info.blockId) << round;
            const bool isSame = ours.memory == theirs.memory;
            ASSERT_TRUE(isSame || ours.info.code != VxError::Ok) << round;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Headers, LandingTest,
                         testing::Values(gvsp::IdMode::Standard, gvsp::IdMode::Extended));

} // namespace
} // namespace receive
