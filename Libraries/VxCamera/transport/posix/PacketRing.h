#pragma once

#include "VxBase/VxExpected.h"
#include "VxCamera/transport/Datagram.h"
#include "VxCamera/transport/posix/DatagramFilter.h"
#include "VxCamera/transport/posix/PosixSystem.h"

#include <cstddef>
#include <memory>
#include <span>

namespace transport {

/// Memory that this process shares with the system: slots into which the system lays the packets of a route
/// as they come in, below its own UDP, and from which they are taken without asking it.
///
/// Packets longer than jumbo frames have no slot: they are runs of datagrams from this machine, or datagrams
/// put together of fragments. The system keeps them, and the slot tells that one is there.
///
/// Owner:  PosixUdpSocket.
/// Thread: one at a time.
class PacketRing final {
public:
    /// @return  NETWORK_ERROR with the system's reason: it has no such rings, or not for this process (it
    /// must have the right to see raw packets, CAP_NET_RAW)
    [[nodiscard]] static VxExpected<std::unique_ptr<PacketRing>> Open(const DatagramRoute& route);

    /// @param memory  mapped, to be unmapped
    /// @param hasRoomForRuns  see HasRoomForRuns
    /// @param longPacket  room for the longest packet
    PacketRing(FileDescriptor socket, std::span<std::byte> memory, bool hasRoomForRuns,
               std::unique_ptr<std::byte[]> longPacket);
    PacketRing(const PacketRing&) = delete;
    PacketRing& operator=(const PacketRing&) = delete;
    ~PacketRing();

    /// Takes as many datagrams as are there and as there is room for, in the order in which they came.
    /// @return  how many; the first ones are filled
    std::size_t Take(std::span<Datagram> datagrams);

    /// Readable while packets are there; borrowed.
    [[nodiscard]] int Handle() const { return m_socket.Get(); }

    /// What the system has laid there, and nobody has taken.
    [[nodiscard]] bool IsPacketThere() const;

    /// Forgets that the interface went down; until then Handle is readable all the time.
    void ForgetErrors() const;

    /// Memory for packets that wait.
    [[nodiscard]] std::size_t MemoryBytes() const { return m_memory.size(); }

    /// Whether as many bytes may wait that came in runs, which have no slots. Otherwise nobody should make
    /// the system collect runs. Constant.
    [[nodiscard]] bool HasRoomForRuns() const { return m_hasRoomForRuns; }

private:
    bool TakeNext(Datagram& datagram);
    bool TakeFromSlot(std::span<const std::byte> slot, Datagram& datagram) const;
    bool TakeLong(std::span<const std::byte> slot, Datagram& datagram);
    bool TakeSpread(std::size_t inFront, std::size_t payloadBytes, Datagram& datagram) const;
    bool TakeChecked(std::size_t inFront, Datagram& datagram);
    [[nodiscard]] std::span<std::byte> SlotAt(std::size_t index) const;
    void FetchAhead() const;

    const FileDescriptor m_socket;
    const std::span<std::byte> m_memory; // mapped
    const std::size_t m_slotCount;
    const bool m_hasRoomForRuns;
    std::size_t m_next = 0; // the slot that is filled next, or holds the oldest packet
    const std::unique_ptr<std::byte[]> m_longPacket; // where one whose checksum must be made lies
};

} // namespace transport
