#pragma once

#include "VxCamera/receive/BlockAssembler.h"
#include "VxCamera/transport/Datagram.h"
#include "VxCamera/wire/gvsp/PacketHeader.h"

#include <array>
#include <cstddef>
#include <functional>
#include <memory>
#include <span>

namespace receive {

/// Lets packets arrive where their data belong.
///
/// Before packets are received, the slots for them are spread: headers into the slot, data straight into the
/// picture, to the places of the packets that should come next. Where another packet came than was expected,
/// its data are moved: to their own place when a few packets are missing in between, else into the slot, from
/// where they take the common way.
///
/// Each packet has a slot. Where the system hands over many packets as one datagram, one slot takes such a
/// run, with the places of many packets.
///
/// Owner:  StreamReceiver's thread.
/// Thread: one.
class Landing {
public:
    // Chosen: more per call than a fast camera sends while one call is at work.
    static constexpr std::size_t kSlots = 64;

    /// A packet that has been settled.
    struct Landed {
        const transport::Ipv4Endpoint& sender;
        const VxExpected<gvsp::Packet>& packet; ///< a failure when it is none
        std::span<const std::byte> datagram;    ///< of data at their place it has gaps
        Arrival arrival = Arrival::InDatagram;
    };

    Landing();

    /// Slots for the packets that come next.
    [[nodiscard]] std::span<transport::Datagram> Prepare(const BlockAssembler& assembler);

    /// Slots without places: for packets of which nothing is known.
    [[nodiscard]] std::span<transport::Datagram> Plain();

    /// Brings the data of what was received to where they belong. Only packets of the camera are moved to a
    /// place.
    /// @param received  how many of the slots
    /// @param isOfCamera  whether a sender is the camera
    void Settle(std::size_t received, const std::function<bool(const transport::Ipv4Endpoint&)>& isOfCamera);

    /// Calls use(Landed) with each packet that has been settled, in the order of their arrival.
    template <typename Use>
    void ForEach(std::size_t received, Use use) const
    {
        for (std::size_t i = 0; i < received; ++i) {
            const transport::Datagram& slot = m_slots[i];
            const std::size_t segments = slot.SegmentCount();
            for (std::size_t k = 0; k < segments; ++k) {
                const auto bytes = slot.Segment(k);
                if (k < slot.bodies.size()) {
                    const std::size_t index = FirstPlaceOf(i) + k;
                    const bool isAtPlace = !m_landedAt[index].empty();
                    use(Landed{slot.sender, m_packets[index], bytes,
                               isAtPlace ? Arrival::AtPlace : Arrival::InDatagram});
                } else {
                    use(Landed{slot.sender, gvsp::ParsePacket(bytes), bytes});
                }
            }
        }
    }

private:
    static constexpr std::size_t kPlaces = kSlots;

    /// Of the slot's first body.
    [[nodiscard]] std::size_t FirstPlaceOf(std::size_t slot) const { return m_isOfRuns ? 0 : slot; }
    void SpreadRun(std::size_t headBytes);
    void SettleSlot(std::size_t slot, bool isOfCamera);
    void SettleSegment(const transport::Datagram& slot, std::size_t segment, std::size_t index);
    [[nodiscard]] std::span<std::byte> TargetOf(const transport::Datagram& slot, std::size_t bytes,
                                                std::size_t index) const;
    void LearnRuns(std::size_t received);

    // Not cleared: pages that no packet reaches are never touched.
    std::unique_ptr<std::byte[]> m_memory;
    std::array<transport::Datagram, kSlots> m_slots{};
    std::array<ExpectedPacket, kPlaces> m_expected{};
    std::size_t m_expectedCount = 0;

    // Of each place that data of a packet may have landed in.
    std::array<std::span<std::byte>, kPlaces> m_places{};
    std::array<std::span<std::byte>, kPlaces> m_landedAt{}; // their place now; empty: in the slot's memory
    std::array<VxExpected<gvsp::Packet>, kPlaces> m_packets;

    bool m_isOfRuns = false;         // what is prepared: one slot for a run, or one slot for each packet
    bool m_areRunsNext = false;      // what will be prepared
    std::size_t m_lateDatagrams = 0; // since that was decided
    std::size_t m_latePackets = 0;
};

} // namespace receive
