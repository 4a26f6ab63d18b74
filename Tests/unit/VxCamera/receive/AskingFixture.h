#pragma once

#include "VxCamera/receive/BlockAssembler.h"

#include "FakeSink.h"
#include "StreamPackets.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace receive {

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

    void Send(const StreamPackets::Packet& packet) { m_assembler.OnPacket(packet, m_now); }
    void SendAll(const std::vector<StreamPackets::Packet>& packets)
    {
        for (const StreamPackets::Packet& packet : packets)
            Send(packet);
    }
    void Wait(std::chrono::milliseconds duration)
    {
        m_now += duration;
        m_assembler.OnTime(m_now);
    }
    /// Nothing is sent again.
    [[nodiscard]] VxError CodeWithout(const std::vector<StreamPackets::Packet>& packets)
    {
        const std::size_t before = m_sink.delivered.size();
        SendAll(packets);
        Wait(std::chrono::milliseconds(300));
        EXPECT_EQ(m_sink.delivered.size(), before + 1);
        return m_sink.delivered.back().info.code;
    }
    [[nodiscard]] VxError LastCode() const { return m_sink.delivered.back().info.code; }
    /// @return  what is asked for within a few milliseconds
    [[nodiscard]] Ranges Asked()
    {
        m_channel.asked.clear();
        Wait(std::chrono::milliseconds(6)); // longer than an answer is waited for
        Wait(std::chrono::milliseconds(2)); // and than a gap, of what counts as missing only now
        return m_channel.asked;
    }

    FakeSink m_sink{4, kBufferBytes};
    StreamCounters m_counters;
    NotingChannel m_channel;
    BlockAssembler m_assembler{{}, m_sink, m_counters, &m_channel};
    IVxClock::Time m_now{std::chrono::hours(1)};
};

inline std::string IdsOf(gvsp::IdMode mode)
{
    return mode == gvsp::IdMode::Extended ? "ExtendedIds" : "StandardIds";
}

} // namespace receive
