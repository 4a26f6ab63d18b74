#pragma once

#include "VxCamera/receive/Landing.h"

#include "FakeSink.h"
#include "StreamPackets.h"

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <span>
#include <vector>

namespace receive {

constexpr transport::Ipv4Endpoint kCamera{transport::Ipv4Address(192, 168, 1, 20), 50000};
constexpr transport::Ipv4Endpoint kStranger{transport::Ipv4Address(192, 168, 1, 66), 50000};

/// One datagram as the system hands it over: a packet, or a run of packets.
struct Arrived {
    std::vector<std::byte> bytes;
    std::size_t segmentBytes = 0; ///< 0: one packet
    transport::Ipv4Endpoint sender = kCamera;
    bool isTruncated = false;
};

/// Packets as a system coalesces them: equally long ones, of which the last may be shorter.
/// @param most  packets in one datagram
inline std::vector<Arrived> Coalesce(std::span<const StreamPackets::Packet> packets, std::size_t most = 44)
{
    std::vector<Arrived> arrived;
    std::size_t count = 0;
    bool isEnded = true;
    for (const StreamPackets::Packet& packet : packets) {
        const bool isShort = !packet.empty() && !isEnded && packet.size() <= arrived.back().segmentBytes;
        if (isShort && count < most) {
            auto& run = arrived.back();
            run.bytes.insert(run.bytes.end(), packet.begin(), packet.end());
            isEnded = packet.size() < run.segmentBytes;
            ++count;
            continue;
        }
        arrived.push_back({packet, packet.size()});
        isEnded = packet.empty();
        count = 1;
    }
    for (Arrived& each : arrived) {
        if (each.bytes.size() <= each.segmentBytes)
            each.segmentBytes = 0; // as the system tells of a packet that came alone
    }
    return arrived;
}

/// A receiver without threads and sockets, whose packets come through a landing.
struct LandingReceiver {
    /// One call of the system, or as many as it takes to receive all.
    void Receive(std::span<const Arrived> arrived)
    {
        while (!arrived.empty()) {
            const auto slots = landing.Prepare(assembler);
            mostSlots = slots.size();
            const std::size_t count = std::min(slots.size(), arrived.size());
            for (std::size_t i = 0; i < count; ++i) {
                slots[i].Fill(arrived[i].bytes);
                slots[i].segmentBytes = arrived[i].segmentBytes;
                slots[i].sender = arrived[i].sender;
                slots[i].isTruncated |= arrived[i].isTruncated;
            }
            Take(count);
            arrived = arrived.subspan(count);
        }
    }

    /// The same with packets that come alone.
    void Receive(std::span<const StreamPackets::Packet> packets)
    {
        std::vector<Arrived> arrived;
        for (const auto& packet : packets)
            arrived.push_back({packet});
        Receive(arrived);
    }

    void Take(std::size_t count)
    {
        landing.Settle(count, [](const transport::Ipv4Endpoint& sender) { return sender == kCamera; });
        landing.ForEach(count, [&](const Landing::Landed& landed) {
            atPlace += landed.arrival == Arrival::AtPlace ? 1 : 0;
            if (landed.sender != kCamera)
                counters.packetsForeign.Add();
            else if (landed.packet)
                assembler.OnPacket(*landed.packet, {landed.datagram.size(), landed.arrival}, now);
            else
                assembler.OnPacket(landed.datagram, now);
        });
    }

    FakeSink sink{4, 64 * 48};
    StreamCounters counters;
    BlockAssembler assembler{{}, sink, counters};
    Landing landing;
    std::size_t atPlace = 0;   ///< packets whose data did not need to be copied by the assembler
    std::size_t mostSlots = 0; ///< of the last call
    IVxClock::Time now{std::chrono::hours(1)};
};

} // namespace receive
