#pragma once

#include "VxCamera/transport/ISocketFactory.h"
#include "VxCamera/transport/posix/PacketRing.h"
#include "VxCamera/transport/posix/PosixSystem.h"

#include <poll.h>

#include <array>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <memory>
#include <span>

namespace transport {

/// A UDP socket of a POSIX system. Owner and thread: see IUdpSocket.
class PosixUdpSocket final : public IUdpSocket {
public:
    /// Where it is, and how it sends.
    struct Manner {
        Ipv4Endpoint local;
        Ipv4Address sendFrom; ///< 0.0.0.0 = the one it is bound to
        bool isSendingAtOnce = false;
        bool isCoalescing = false; ///< the system has agreed to it
    };

    [[nodiscard]] static VxExpected<std::unique_ptr<PosixUdpSocket>> Open(const UdpSocketOptions& options);

    /// @param ring  takes what comes through one interface; null: everything comes to the socket itself
    PosixUdpSocket(FileDescriptor socket, FileDescriptor wakeEvent, std::unique_ptr<PacketRing> ring,
                   const Manner& manner);

    VxResult SendTo(std::span<const std::byte> bytes, const Ipv4Endpoint& destination) override;
    std::size_t SendRun(std::span<const std::byte> bytes, std::size_t segmentBytes,
                        const Ipv4Endpoint& destination) override;
    VxExpected<std::size_t> Receive(std::span<Datagram> datagrams,
                                    std::chrono::microseconds timeout) override;
    void Gather(std::chrono::microseconds duration) override;
    void Wake() override;

    /// What poll tells of a socket: whether datagrams have come, and whether it is woken.
    static constexpr std::size_t kDescriptors = 2;
    [[nodiscard]] std::array<pollfd, kDescriptors> WhatToWaitFor() const;

    /// Whether a Receive would not wait; takes back what a Wake before an earlier Receive has left.
    /// @param polled  what WhatToWaitFor gave, after a poll
    [[nodiscard]] bool IsReady(std::span<const pollfd, kDescriptors> polled) const;

    [[nodiscard]] Ipv4Endpoint LocalEndpoint() const override { return m_local; }
    [[nodiscard]] bool IsBacklogNear() const override { return IsRingUsed(); }
    /// Of a ring: its memory.
    [[nodiscard]] std::size_t ReceiveBufferBytes() const override;
    VxResult JoinGroup(Ipv4Address group, Ipv4Address interfaceAddress) override;
    VxResult LeaveGroup(Ipv4Address group, Ipv4Address interfaceAddress) override;

private:
    int Send(std::span<const std::byte> bytes, std::size_t segmentBytes, const Ipv4Endpoint& destination);
    VxExpected<std::size_t> ReceiveWhatIsThere(std::span<Datagram> datagrams);
    VxExpected<std::size_t> ReceiveFromSocket(std::span<Datagram> datagrams);
    VxResult WaitForData(std::chrono::nanoseconds timeout);
    [[nodiscard]] bool IsRingUsed() const { return m_ring != nullptr && !m_isRingLeft; }
    void WatchRing();
    VxResult ChangeMembership(int option, Ipv4Address group, Ipv4Address interfaceAddress);

    const FileDescriptor m_socket;
    const FileDescriptor m_wakeEvent;
    const std::unique_ptr<PacketRing> m_ring; // null: none
    const Ipv4Endpoint m_local;
    const Ipv4Address m_sendFrom;
    const bool m_isSendingAtOnce;
    const bool m_isCoalescing;

    /// Since when, and how many datagrams the system had dropped then. The receiving thread's.
    struct RingWatch {
        std::chrono::steady_clock::time_point since;
        std::uint32_t dropped = 0;
        bool hasTaken = false;
    };
    RingWatch m_ringWatch;
    unsigned m_takenFromRing = 0;           // times, since the socket was looked at; the receiving thread's
    std::atomic<bool> m_isRingLeft = false; // set by the receiving thread

    std::atomic<bool> m_isWoken =
        false; // set before the event is, so that a consumed wake leaves no second one
};

} // namespace transport
