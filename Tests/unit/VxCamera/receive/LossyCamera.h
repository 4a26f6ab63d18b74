#pragma once

#include "StreamPackets.h"

#include "VxCamera/receive/BlockAssembler.h"
#include "VxCamera/wire/gvcp/Status.h"

#include <algorithm>
#include <cstdint>
#include <optional>
#include <queue>
#include <random>
#include <tuple>
#include <utility>
#include <vector>

namespace receive {

/// A camera at the far end of a network that loses packets, in a time of its own: nothing waits.
///
/// Owner:  the test.
/// Thread: one.
class LossyCamera final : public IResendChannel {
public:
    using Time = IVxClock::Time;

    /// What camera and network are like.
    struct Facts {
        double dropShare = 0;                       ///< of all packets, those sent again included
        std::chrono::microseconds keeps{1'000'000}; ///< for how long packets can be sent again
        std::chrono::microseconds roundTrip{500};   ///< from a request to the first packet of its answer
        std::chrono::microseconds packetTime{8};    ///< from one packet to the next
        std::chrono::microseconds framePeriod{33'000};
        std::uint32_t pausesBefore = 0;           ///< a packet of each block
        std::chrono::microseconds pause{0};       ///< before that packet
        std::chrono::microseconds silentEvery{0}; ///< it pauses its answers that often; 0 = never
        std::chrono::microseconds silence{0};     ///< how long; what it is asked for by then comes behind
        bool answers = true;                      ///< false: requests are ignored
        bool resends = true;                      ///< false: it does not offer that
    };

    LossyCamera(const Facts& facts, const StreamPackets& stream) : m_facts(facts), m_stream(stream) {}

    /// Sends frames and lets an assembler receive them, until nothing is on its way and nothing is waited
    /// for.
    void Stream(std::uint64_t frames, BlockAssembler& assembler)
    {
        for (std::uint64_t i = 0; i < frames; ++i) {
            SendFrame();
            RunUntil(m_now + m_facts.framePeriod, assembler);
        }
        RunUntil(m_now + std::chrono::seconds(2), assembler);
    }

    [[nodiscard]] bool IsOpen() const override { return m_facts.resends; }
    void Ask(gvsp::IdMode, std::uint64_t blockId, std::uint32_t first, std::uint32_t last) override
    {
        ++requests;
        packetsAskedFor += last - first + 1;
        if (!m_facts.answers)
            return;
        Time arrival = BehindSilence(m_now) + m_facts.roundTrip;
        for (std::uint32_t id = first; id <= last && id <= m_stream.PayloadCount() + 1; ++id) {
            if (m_now - SentAt(blockId, id) > m_facts.keeps) {
                Put(arrival, Refusal(blockId, id));
                return;
            }
            if (!IsLost())
                Put(arrival, SentAgain(blockId, id));
            arrival += m_facts.packetTime;
        }
    }

    [[nodiscard]] Time Now() const { return m_now; }

    Facts& Change() { return m_facts; }

    std::uint64_t requests = 0;
    std::uint64_t packetsAskedFor = 0;
    std::uint64_t packetsLost = 0;

private:
    struct Arrival {
        Time time;
        std::uint64_t order; // of equal times
        StreamPackets::Packet packet;
        bool operator<(const Arrival& other) const
        {
            return std::tie(other.time, other.order) < std::tie(time, order);
        }
    };

    [[nodiscard]] Time SentAt(std::uint64_t blockId, std::uint32_t packetId) const
    {
        const Time start = m_starts.at(blockId - 1) + packetId * m_facts.packetTime;
        return packetId >= m_facts.pausesBefore ? start + m_facts.pause : start;
    }
    /// @return  when the camera looks at a request that comes now
    [[nodiscard]] Time BehindSilence(Time now) const
    {
        if (m_facts.silentEvery == std::chrono::microseconds(0))
            return now;
        const auto since = now.time_since_epoch() % m_facts.silentEvery;
        return since < m_facts.silence ? now - since + m_facts.silence : now;
    }
    bool IsLost()
    {
        const bool isLost = std::bernoulli_distribution(m_facts.dropShare)(m_chance);
        packetsLost += isLost ? 1 : 0;
        return isLost;
    }
    void Put(Time time, StreamPackets::Packet packet)
    {
        m_arrivals.push({time, m_order++, std::move(packet)});
    }
    void SendFrame()
    {
        m_starts.push_back(m_now);
        const std::uint64_t blockId = m_starts.size();
        for (std::uint32_t id = 0; id <= m_stream.PayloadCount() + 1; ++id) {
            if (!IsLost())
                Put(SentAt(blockId, id), PacketOf(blockId, id));
        }
    }
    [[nodiscard]] StreamPackets::Packet PacketOf(std::uint64_t blockId, std::uint32_t id) const
    {
        if (id == 0)
            return m_stream.Leader(blockId);
        return id <= m_stream.PayloadCount() ? m_stream.Payload(blockId, id) : m_stream.Trailer(blockId);
    }
    [[nodiscard]] StreamPackets::Packet SentAgain(std::uint64_t blockId, std::uint32_t id) const
    {
        auto packet = PacketOf(blockId, id);
        packet[0] = std::byte{0x01}; // status 0x0100
        return packet;
    }
    [[nodiscard]] StreamPackets::Packet Refusal(std::uint64_t blockId, std::uint32_t id) const
    {
        auto packet = m_stream.Header(blockId, gvsp::PacketFormat::Payload, id);
        packet[0] = std::byte{0x80}; // status 0x800C
        packet[1] = std::byte{0x0C};
        return packet;
    }
    void RunUntil(Time end, BlockAssembler& assembler)
    {
        while (m_now < end) {
            const auto deadline = assembler.NextDeadline(m_now);
            Time next = std::min(end, deadline.value_or(end));
            if (!m_arrivals.empty())
                next = std::min(next, m_arrivals.top().time);
            m_now = std::max(m_now, next);
            while (!m_arrivals.empty() && m_arrivals.top().time <= m_now) {
                assembler.OnPacket(m_arrivals.top().packet, m_now);
                m_arrivals.pop();
            }
            assembler.OnTime(m_now);
        }
    }

    Facts m_facts;
    const StreamPackets m_stream;
    Time m_now{std::chrono::hours(1)};
    std::vector<Time> m_starts; // of each block
    std::priority_queue<Arrival> m_arrivals;
    std::uint64_t m_order = 0;
    std::mt19937 m_chance{12};
};

} // namespace receive
