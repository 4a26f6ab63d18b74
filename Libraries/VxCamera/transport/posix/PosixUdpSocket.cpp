#include "VxCamera/transport/posix/PosixUdpSocket.h"

#include "VxCamera/transport/posix/PosixInterfaceList.h"

#include <linux/sock_diag.h>
#include <netinet/udp.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <limits>
#include <string>
#include <tuple>
#include <utility>

namespace transport {

namespace {

using Clock = std::chrono::steady_clock;

// Chosen: what one system call takes at most; more would only lengthen the arrays below.
constexpr std::size_t kMostPerCall = 64;

// All slots with a body each, or one with as many as there can be.
constexpr std::size_t kMostPieces = 3 * kMostPerCall;
static_assert(kMostPieces > 2 * Datagram::kMostBodies);

// Chosen: how long a full send queue may take to drain before the datagram counts as not sent.
constexpr auto kSendQueueWait = std::chrono::milliseconds(20);

VxResult SetOption(int socket, int level, int option, int value, const char* what)
{
    if (::setsockopt(socket, level, option, &value, sizeof value) != 0)
        return SystemFailure(what, errno);
    return VxResult::Ok();
}

void AskForReceiveBuffer(int socket, std::size_t bytes)
{
    constexpr std::size_t kLargest = std::numeric_limits<int>::max();
    const int value = static_cast<int>(std::min(bytes, kLargest)); // fits, it was cut
    // The first form goes past the system-wide limit and needs a privilege; the second is cut at that limit.
    if (::setsockopt(socket, SOL_SOCKET, SO_RCVBUFFORCE, &value, sizeof value) != 0)
        ::setsockopt(socket, SOL_SOCKET, SO_RCVBUF, &value, sizeof value);
}

VxResult Configure(int socket, const UdpSocketOptions& options)
{
    if (options.sharing == PortSharing::Shared) {
        if (const auto set = SetOption(socket, SOL_SOCKET, SO_REUSEADDR, 1, "share a UDP port"); !set.IsOK())
            return set;
        // Without this a socket gets the groups that any other program on the machine has joined.
        if (const auto set = SetOption(socket, IPPROTO_IP, IP_MULTICAST_ALL, 0, "select multicast groups");
            !set.IsOK())
            return set;
    }
    if (options.isBroadcastAllowed) {
        if (const auto set = SetOption(socket, SOL_SOCKET, SO_BROADCAST, 1, "allow broadcast"); !set.IsOK())
            return set;
    }
    if (options.interfaceIndex != 0) {
        // In network byte order, unlike every other interface number of this system.
        const auto index = static_cast<int>(htonl(options.interfaceIndex)); // the same 32 bits
        if (const auto set = SetOption(socket, IPPROTO_IP, IP_UNICAST_IF, index, "choose the interface");
            !set.IsOK())
            return set;
    }
    if (options.receiveBufferBytes > 0)
        AskForReceiveBuffer(socket, options.receiveBufferBytes);
    if (!options.multicastInterface.IsUnspecified()) {
        in_addr address{htonl(options.multicastInterface.Value())};
        if (::setsockopt(socket, IPPROTO_IP, IP_MULTICAST_IF, &address, sizeof address) != 0)
            return SystemFailure("send multicast from " + options.multicastInterface.ToString(), errno);
    }
    return VxResult::Ok();
}

VxExpected<Ipv4Endpoint> Bind(int socket, const Ipv4Endpoint& local)
{
    sockaddr_in address = ToSystem(local);
    if (::bind(socket, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
        if (errno == EADDRINUSE)
            return VxResult(VxError::PortInUse,
                            "UDP port " + local.ToString() + " is used by another program");
        return SystemFailure("bind UDP port " + local.ToString(), errno);
    }
    socklen_t length = sizeof address;
    if (::getsockname(socket, reinterpret_cast<sockaddr*>(&address), &length) != 0)
        return SystemFailure("read the UDP port", errno);
    return FromSystem(address);
}

/// @return  null: the system has no ring for this socket, or not for this process
std::unique_ptr<PacketRing> OpenRing(int socket, const UdpSocketOptions& options, const Ipv4Endpoint& local)
{
    const bool isPossible = options.isRingWanted && options.isCoalescing &&
                            options.sharing == PortSharing::Exclusive && !options.isBroadcastReceived &&
                            !local.address.IsUnspecified();
    if (!isPossible)
        return nullptr;
    const auto interfaces = PosixInterfaceList().Interfaces();
    if (!interfaces)
        return nullptr;
    // All addresses of the loopback network are the loopback interface's.
    const auto found = std::ranges::find_if(*interfaces, [&](const NetworkInterface& each) {
        return each.address == local.address || (each.isLoopback && local.address.IsLoopback());
    });
    if (found == interfaces->end() || found->index == 0)
        return nullptr;
    const DatagramRoute route{found->index, local};
    auto ring = PacketRing::Open(route);
    // In this order a datagram that comes meanwhile comes twice, and is not lost.
    if (!ring || !LeaveOut(socket, route).IsOK())
        return nullptr;
    return std::move(*ring);
}

/// How many datagrams for a socket the system has dropped so far, by its filter or otherwise.
std::uint32_t DroppedOf(int socket)
{
    std::array<std::uint32_t, SK_MEMINFO_VARS> counts{};
    socklen_t length = sizeof counts;
    ::getsockopt(socket, SOL_SOCKET, SO_MEMINFO, counts.data(), &length);
    return counts[SK_MEMINFO_DROPS];
}

/// What the system tells of a datagram beside its bytes.
struct Note {
    // Not cleared: the system writes it.
    alignas(cmsghdr) std::array<std::byte, CMSG_SPACE(sizeof(int))> memory;
};

/// @param message  received
/// @return  length of the datagrams that came as this one; 0: it is one
std::size_t SegmentBytesOf(msghdr& message)
{
    const cmsghdr* const note = message.msg_controllen > 0 ? CMSG_FIRSTHDR(&message) : nullptr;
    if (note == nullptr || note->cmsg_level != IPPROTO_UDP || note->cmsg_type != UDP_GRO)
        return 0;
    int bytes = 0;
    std::memcpy(&bytes, CMSG_DATA(note), sizeof bytes);
    return static_cast<std::size_t>(std::max(bytes, 0));
}

/// What the system is told of a datagram that is sent, beside its bytes.
///
/// Owner:  the scope that sends it.
/// Thread: one.
class SendNotes {
public:
    /// @param message  borrows this until it is sent
    template <typename Value>
    void Add(msghdr& message, int type, int level, const Value& value)
    {
        const cmsghdr header{.cmsg_len = CMSG_LEN(sizeof value), .cmsg_level = level, .cmsg_type = type};
        std::memcpy(m_memory.data() + m_used, &header, sizeof header);
        std::memcpy(m_memory.data() + m_used + CMSG_LEN(0), &value, sizeof value);
        m_used += CMSG_SPACE(sizeof value);
        message.msg_control = m_memory.data();
        message.msg_controllen = m_used;
    }

private:
    static constexpr std::size_t kBytes = CMSG_SPACE(sizeof(in_pktinfo)) + CMSG_SPACE(sizeof(std::uint16_t));
    alignas(cmsghdr) std::array<std::byte, kBytes> m_memory{};
    std::size_t m_used = 0;
};

} // namespace

VxExpected<std::unique_ptr<PosixUdpSocket>> PosixUdpSocket::Open(const UdpSocketOptions& options)
{
    FileDescriptor socket(::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK, IPPROTO_UDP));
    if (!socket.IsValid())
        return SystemFailure("open a UDP socket", errno);
    FileDescriptor wakeEvent(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK));
    if (!wakeEvent.IsValid())
        return SystemFailure("open an event", errno);
    if (auto configured = Configure(socket.Get(), options); !configured.IsOK())
        return configured;
    // Linux hands a broadcast to nobody who is bound to the address of an interface.
    const bool isBoundToAll = options.isBroadcastReceived && !options.local.address.IsUnspecified();
    auto local =
        Bind(socket.Get(), {isBoundToAll ? Ipv4Address() : options.local.address, options.local.port});
    if (!local)
        return local.Error();
    local->address = options.local.address;
    const auto sendFrom = isBoundToAll ? options.local.address : Ipv4Address();
    auto ring = OpenRing(socket.Get(), options, *local);
    // A system that does not know the switch hands over each datagram alone.
    const bool isCoalescing = options.isCoalescing && (ring == nullptr || ring->HasRoomForRuns()) &&
                              SetOption(socket.Get(), IPPROTO_UDP, UDP_GRO, 1, "coalesce datagrams").IsOK();
    return std::make_unique<PosixUdpSocket>(std::move(socket), std::move(wakeEvent), std::move(ring),
                                            Manner{*local, sendFrom, options.isSendingAtOnce, isCoalescing});
}

PosixUdpSocket::PosixUdpSocket(FileDescriptor socket, FileDescriptor wakeEvent,
                               std::unique_ptr<PacketRing> ring, const Manner& manner)
    : m_socket(std::move(socket)),
      m_wakeEvent(std::move(wakeEvent)),
      m_ring(std::move(ring)),
      m_local(manner.local),
      m_sendFrom(manner.sendFrom),
      m_isSendingAtOnce(manner.isSendingAtOnce),
      m_isCoalescing(manner.isCoalescing)
{
}

VxResult PosixUdpSocket::SendTo(std::span<const std::byte> bytes, const Ipv4Endpoint& destination)
{
    const int error = Send(bytes, 0, destination);
    return error == 0 ? VxResult::Ok() : SystemFailure("send to " + destination.ToString(), error);
}

std::size_t PosixUdpSocket::SendRun(std::span<const std::byte> bytes, std::size_t segmentBytes,
                                    const Ipv4Endpoint& destination)
{
    // As many as older systems take, and as fit in what the system handles as one datagram.
    constexpr std::size_t kMostSegments = 64;
    constexpr std::size_t kMostBytes = 65507; // fixed by UDP over IPv4
    const std::size_t most = std::clamp<std::size_t>(kMostBytes / segmentBytes, 1, kMostSegments);
    std::size_t sent = 0;
    while (!bytes.empty()) {
        const auto now = bytes.first(std::min(bytes.size(), most * segmentBytes));
        // A system that does not know such runs refuses, and so does one whose network is not for them.
        const bool isRun = now.size() > segmentBytes && Send(now, segmentBytes, destination) == 0;
        sent += isRun ? (now.size() + segmentBytes - 1) / segmentBytes
                      : IUdpSocket::SendRun(now, segmentBytes, destination);
        bytes = bytes.subspan(now.size());
    }
    return sent;
}

/// @param segmentBytes  the system makes datagrams of this length of the bytes; 0: they are one
/// @return  errno of the failure; 0: sent
int PosixUdpSocket::Send(std::span<const std::byte> bytes, std::size_t segmentBytes,
                         const Ipv4Endpoint& destination)
{
    sockaddr_in address = ToSystem(destination);
    iovec memory{const_cast<std::byte*>(bytes.data()), bytes.size()}; // only read from
    msghdr message{};
    message.msg_name = &address;
    message.msg_namelen = sizeof address;
    message.msg_iov = &memory;
    message.msg_iovlen = 1;
    SendNotes notes;
    if (!m_sendFrom.IsUnspecified()) {
        in_pktinfo source{};
        source.ipi_spec_dst.s_addr = htonl(m_sendFrom.Value());
        notes.Add(message, IP_PKTINFO, IPPROTO_IP, source);
    }
    if (segmentBytes > 0) // not longer than a datagram can be, so it fits
        notes.Add(message, UDP_SEGMENT, IPPROTO_UDP, static_cast<std::uint16_t>(segmentBytes));
    const auto send = [&] { return ::sendmsg(m_socket.Get(), &message, MSG_NOSIGNAL) >= 0; };
    int error = send() ? 0 : errno;
    const auto isQueueFull = [&] { return error == EAGAIN || error == EWOULDBLOCK || error == EINTR; };
    const auto deadline = Clock::now() + kSendQueueWait;
    for (bool isOver = m_isSendingAtOnce; isQueueFull() && !isOver;) {
        isOver = Clock::now() >= deadline; // once more when this thread stood still
        pollfd waiting{m_socket.Get(), POLLOUT, 0};
        ::poll(&waiting, 1, static_cast<int>(kSendQueueWait.count())); // some milliseconds
        error = send() ? 0 : errno;
    }
    return error;
}

VxExpected<std::size_t> PosixUdpSocket::Receive(std::span<Datagram> datagrams,
                                                std::chrono::microseconds timeout)
{
    const auto deadline = Clock::now() + timeout;
    for (;;) {
        if (m_isWoken.exchange(false))
            return VxError::Aborted;
        auto received = ReceiveWhatIsThere(datagrams);
        if (received || received.Error().Code() != VxError::Timeout)
            return received;
        const auto rest = deadline - Clock::now();
        if (rest <= rest.zero())
            return VxError::Timeout;
        if (auto waited = WaitForData(rest); !waited.IsOK())
            return waited;
    }
}

VxExpected<std::size_t> PosixUdpSocket::ReceiveWhatIsThere(std::span<Datagram> datagrams)
{
    // Chosen: to look at the socket costs as much as to take a few packets from a ring.
    constexpr unsigned kMostRingOnly = 32;
    const bool isSocketDue = m_takenFromRing >= kMostRingOnly;
    const std::size_t taken = IsRingUsed() && !isSocketDue ? m_ring->Take(datagrams) : 0;
    if (taken > 0) {
        m_ringWatch.hasTaken = true;
        ++m_takenFromRing;
        return taken;
    }
    m_takenFromRing = 0;
    auto received = ReceiveFromSocket(datagrams); // with a ring: what came through another interface
    const bool isEmpty = !received && received.Error().Code() == VxError::Timeout;
    return isSocketDue && isEmpty ? ReceiveWhatIsThere(datagrams) : std::move(received);
}

VxExpected<std::size_t> PosixUdpSocket::ReceiveFromSocket(std::span<Datagram> datagrams)
{
    std::array<mmsghdr, kMostPerCall> messages; // the first ones are set below, here and in the next three
    std::array<iovec, kMostPieces> pieces;
    std::array<sockaddr_in, kMostPerCall> senders;
    std::array<Note, kMostPerCall> notes;
    std::size_t used = 0; // pieces
    std::size_t count = 0;
    for (; count < std::min(datagrams.size(), kMostPerCall); ++count) {
        const Datagram& datagram = datagrams[count];
        if (used + datagram.PieceCount() > kMostPieces)
            break;
        msghdr& message = messages[count].msg_hdr;
        message = {};
        message.msg_iov = &pieces[used];
        message.msg_iovlen = datagram.PieceCount();
        message.msg_name = &senders[count];
        message.msg_namelen = sizeof senders[count];
        if (m_isCoalescing) {
            message.msg_control = notes[count].memory.data();
            message.msg_controllen = notes[count].memory.size();
        }
        datagram.ForEachPiece([&](std::span<std::byte> piece) {
            pieces[used++] = {piece.data(), piece.size()};
        });
    }
    const int received =
        ::recvmmsg(m_socket.Get(), messages.data(), static_cast<unsigned>(count), MSG_DONTWAIT, nullptr);
    if (received < 0) {
        const bool isTransient =
            errno == EAGAIN || errno == EWOULDBLOCK || errno == EINTR || errno == ECONNREFUSED;
        return isTransient ? VxResult(VxError::Timeout)
                           : SystemFailure("receive at " + m_local.ToString(), errno);
    }
    const auto filled = static_cast<std::size_t>(received); // not negative, tested above
    for (std::size_t i = 0; i < filled; ++i) {
        datagrams[i].size = messages[i].msg_len;
        datagrams[i].isTruncated = (messages[i].msg_hdr.msg_flags & MSG_TRUNC) != 0;
        datagrams[i].segmentBytes = SegmentBytesOf(messages[i].msg_hdr);
        datagrams[i].sender = FromSystem(senders[i]);
    }
    return filled;
}

VxResult PosixUdpSocket::WaitForData(std::chrono::nanoseconds timeout)
{
    if (IsRingUsed())
        WatchRing();
    std::array<pollfd, kDescriptors + 1> waiting{};
    std::ranges::copy(WhatToWaitFor(), waiting.begin());
    waiting.back() = {IsRingUsed() ? m_ring->Handle() : -1, POLLIN, 0}; // the system skips -1
    const timespec limit = ToTimespec(timeout);
    const int signalled = ::ppoll(waiting.data(), waiting.size(), &limit, nullptr);
    if (signalled < 0 && errno != EINTR)
        return SystemFailure("wait at " + m_local.ToString(), errno);
    if (signalled > 0)
        std::ignore = IsReady(std::span(waiting).first<kDescriptors>()); // Receive looks for itself
    if ((waiting.back().revents & POLLERR) != 0)
        m_ring->ForgetErrors();
    return VxResult::Ok();
}

std::array<pollfd, PosixUdpSocket::kDescriptors> PosixUdpSocket::WhatToWaitFor() const
{
    return {pollfd{m_socket.Get(), POLLIN, 0}, pollfd{m_wakeEvent.Get(), POLLIN, 0}};
}

bool PosixUdpSocket::IsReady(std::span<const pollfd, kDescriptors> polled) const
{
    if (polled[1].revents != 0) {
        eventfd_t count = 0;
        ::eventfd_read(m_wakeEvent.Get(), &count);
    }
    return polled[0].revents != 0 || m_isWoken;
}

/// Does without the ring when it gets nothing of what the filter keeps from the socket: where the system
/// changes packets on their way (translated addresses, encryption), both see others.
void PosixUdpSocket::WatchRing()
{
    constexpr std::chrono::seconds kPeriod{1}; // chosen: as long as a user waits for a first picture
    constexpr std::uint32_t kMostUnseen = 8;   // chosen: some are dropped for other reasons, as a checksum
    const auto now = Clock::now();
    if (now - m_ringWatch.since < kPeriod)
        return;
    const std::uint32_t dropped = DroppedOf(m_socket.Get());
    const bool isUnseen = !m_ringWatch.hasTaken && dropped - m_ringWatch.dropped >= kMostUnseen;
    // A burst that has begun meanwhile has been dropped here because it lies there.
    if (isUnseen && !m_ring->IsPacketThere()) {
        LeaveOutNothing(m_socket.Get());
        m_isRingLeft = true;
    }
    m_ringWatch = {now, dropped, false};
}

void PosixUdpSocket::Gather(std::chrono::microseconds duration)
{
    // Else the system lengthens each sleep by up to 50 us; of this thread only, and it takes no time.
    ::prctl(PR_SET_TIMERSLACK, 1UL);
    pollfd waiting{m_wakeEvent.Get(), POLLIN, 0};
    const timespec limit = ToTimespec(duration);
    ::ppoll(&waiting, 1, &limit, nullptr); // whatever ends it: what is there is received next
}

void PosixUdpSocket::Wake()
{
    m_isWoken = true;
    ::eventfd_write(m_wakeEvent.Get(), 1);
}

std::size_t PosixUdpSocket::ReceiveBufferBytes() const
{
    if (IsRingUsed())
        return m_ring->MemoryBytes();
    int value = 0;
    socklen_t length = sizeof value;
    if (::getsockopt(m_socket.Get(), SOL_SOCKET, SO_RCVBUF, &value, &length) != 0 || value < 0)
        return 0;
    return static_cast<std::size_t>(value); // not negative, tested above
}

VxResult PosixUdpSocket::JoinGroup(Ipv4Address group, Ipv4Address interfaceAddress)
{
    return ChangeMembership(IP_ADD_MEMBERSHIP, group, interfaceAddress);
}

VxResult PosixUdpSocket::LeaveGroup(Ipv4Address group, Ipv4Address interfaceAddress)
{
    return ChangeMembership(IP_DROP_MEMBERSHIP, group, interfaceAddress);
}

VxResult PosixUdpSocket::ChangeMembership(int option, Ipv4Address group, Ipv4Address interfaceAddress)
{
    const ip_mreq membership{{htonl(group.Value())}, {htonl(interfaceAddress.Value())}};
    if (::setsockopt(m_socket.Get(), IPPROTO_IP, option, &membership, sizeof membership) == 0)
        return VxResult::Ok();
    const std::string action = option == IP_ADD_MEMBERSHIP ? "join" : "leave";
    return SystemFailure(
        action + " multicast group " + group.ToString() + " on " + interfaceAddress.ToString(), errno);
}

} // namespace transport
