#pragma once

#include "VxCamera/receive/BlockAssembler.h"

#include "FakeSink.h"
#include "StreamPackets.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace receive {

/// An assembler, and packets of a camera to feed it with, in a time of its own.
///
/// Owner:  the test framework.
/// Thread: one.
class BlockAssemblerFixture : public testing::Test {
protected:
    void Send(const StreamPackets::Packet& packet) { m_assembler.OnPacket(packet, m_now); }
    void SendAll(const std::vector<StreamPackets::Packet>& packets)
    {
        for (const StreamPackets::Packet& packet : packets)
            Send(packet);
    }
    void SendBlock(std::uint64_t blockId) { SendAll(m_stream.Block(blockId)); }
    void Wait(std::chrono::milliseconds duration)
    {
        m_now += duration;
        m_assembler.OnTime(m_now);
    }
    [[nodiscard]] VxError CodeOf(std::size_t index) const { return m_sink.delivered.at(index).info.code; }

    /// Whether the buffer holds the payload of that block, whole.
    void ExpectPicture(std::size_t index, std::uint64_t blockId) const
    {
        ASSERT_LT(index, m_sink.delivered.size());
        const auto& delivered = m_sink.delivered[index];
        EXPECT_EQ(delivered.info.code, VxError::Ok);
        EXPECT_EQ(delivered.info.blockId, blockId);
        for (std::size_t offset = 0; offset < m_stream.payloadBytes; ++offset)
            ASSERT_EQ(delivered.memory[offset], StreamPackets::ByteAt(blockId, offset)) << offset;
    }

    StreamPackets m_stream;
    FakeSink m_sink{4, 64 * 48};
    StreamCounters m_counters;
    BlockAssembler m_assembler{{}, m_sink, m_counters};
    IVxClock::Time m_now{std::chrono::hours(1)};
};

} // namespace receive
