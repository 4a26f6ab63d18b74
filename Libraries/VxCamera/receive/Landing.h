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
/// Each packet has a slot. Before packets are received, the slots of those that should come next are spread:
/// header into the slot, data straight into the picture. Where another packet came than was expected, its
/// data are moved: to their own place when a few packets are missing in between, else into the slot, from
/// where they take the common way.
///
/// Owner:  StreamReceiver's thread.
/// Thread: one.
class Landing {
public:
    // Chosen: more per call than a fast camera sends while one call is at work.
    static constexpr std::size_t kSlots = 64;

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

    /// @return  a packet that has been settled; none when it is no packet
    [[nodiscard]] const VxExpected<gvsp::Packet>& Packet(std::size_t index) const { return m_packets[index]; }
    [[nodiscard]] Arrival ArrivalOf(std::size_t index) const
    {
        return m_slots[index].body.empty() ? Arrival::InDatagram : Arrival::AtPlace;
    }
    [[nodiscard]] const transport::Datagram& Slot(std::size_t index) const { return m_slots[index]; }

private:
    [[nodiscard]] std::span<std::byte> TargetOf(std::size_t index, std::size_t received) const;
    void SettleOne(std::size_t index, std::size_t received, bool isOfCamera);

    // Not cleared: pages that no packet reaches are never touched.
    std::unique_ptr<std::byte[]> m_memory;
    std::array<transport::Datagram, kSlots> m_slots{};
    std::array<ExpectedPacket, kSlots> m_expected{};
    std::size_t m_expectedCount = 0;
    std::array<VxExpected<gvsp::Packet>, kSlots> m_packets;
};

} // namespace receive
