#include "VxCamera/transport/win/WinUdpSocket.h"

#include <winsock2.h>
#include <ws2tcpip.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <limits>
#include <string>
#include <utility>

namespace transport {

namespace {

using Clock = std::chrono::steady_clock;

// Fixed by Windows (mstcpip.h). When on, a peer's "port unreachable" or "time to live exceeded" fails the
// next receive.
constexpr DWORD kReportConnectionReset = 0x9800000C; // SIO_UDP_CONNRESET
constexpr DWORD kReportNetworkReset = 0x9800000F;    // SIO_UDP_NETRESET

// Chosen: how long a full send queue may take to drain before the datagram counts as not sent.
constexpr auto kSendQueueWait = std::chrono::milliseconds(20);

VxResult SetOption(SOCKET socket, int level, int option, DWORD value, const char* what)
{
    if (::setsockopt(socket, level, option, reinterpret_cast<const char*>(&value), sizeof value) != 0)
        return SystemFailure(what, ::WSAGetLastError());
    return VxResult::Ok();
}

/// A system that does not know the switch does not report resets either; Receive passes over them in any
/// case.
void SwitchOffResetReports(SOCKET socket)
{
    for (const DWORD report : {kReportConnectionReset, kReportNetworkReset}) {
        BOOL isOn = FALSE;
        DWORD returned = 0;
        ::WSAIoctl(socket, report, &isOn, sizeof isOn, nullptr, 0, &returned, nullptr, nullptr);
    }
}

void AskForReceiveBuffer(SOCKET socket, std::size_t bytes)
{
    constexpr std::size_t kLargest = std::numeric_limits<int>::max();
    const int value = static_cast<int>(std::min(bytes, kLargest)); // fits, it was cut
    ::setsockopt(socket, SOL_SOCKET, SO_RCVBUF, reinterpret_cast<const char*>(&value), sizeof value);
}

/// The options interfaceIndex and isBroadcastReceived need nothing here: Windows sends through the interface
/// whose address a socket is bound to, and hands it what is broadcast on that interface.
VxResult Configure(SOCKET socket, const UdpSocketOptions& options)
{
    SwitchOffResetReports(socket);
    const int sharing = options.sharing == PortSharing::Shared ? SO_REUSEADDR : SO_EXCLUSIVEADDRUSE;
    if (const auto set = SetOption(socket, SOL_SOCKET, sharing, TRUE, "choose the sharing of a UDP port");
        !set.IsOK())
        return set;
    if (options.isBroadcastAllowed) {
        if (const auto set = SetOption(socket, SOL_SOCKET, SO_BROADCAST, TRUE, "allow broadcast");
            !set.IsOK())
            return set;
    }
    if (options.receiveBufferBytes > 0)
        AskForReceiveBuffer(socket, options.receiveBufferBytes);
    if (!options.multicastInterface.IsUnspecified()) {
        const DWORD address = ::htonl(options.multicastInterface.Value());
        return SetOption(socket, IPPROTO_IP, IP_MULTICAST_IF, address, "choose the multicast interface");
    }
    return VxResult::Ok();
}

VxExpected<Ipv4Endpoint> Bind(SOCKET socket, const Ipv4Endpoint& local)
{
    sockaddr_in address = ToSystem(local);
    if (::bind(socket, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
        const int error = ::WSAGetLastError();
        // The second is what a port gives that another program holds exclusively.
        if (error == WSAEADDRINUSE || error == WSAEACCES)
            return VxResult(VxError::PortInUse,
                            "UDP port " + local.ToString() + " is used by another program");
        return SystemFailure("bind UDP port " + local.ToString(), error);
    }
    int length = sizeof address;
    if (::getsockname(socket, reinterpret_cast<sockaddr*>(&address), &length) != 0)
        return SystemFailure("read the UDP port", ::WSAGetLastError());
    return FromSystem(address);
}

using Pieces = std::array<WSABUF, 2 * Datagram::kMostBodies + 1>;

WSABUF ToSystem(std::span<std::byte> memory)
{
    return {static_cast<ULONG>(memory.size()), // a datagram's room is far below 4 GiB
            reinterpret_cast<char*>(memory.data())};
}

/// @return  how many of the pieces are used
DWORD SpreadOver(Pieces& pieces, const Datagram& datagram)
{
    DWORD count = 0;
    datagram.ForEachPiece([&](std::span<std::byte> piece) { pieces[count++] = ToSystem(piece); });
    return count;
}

// Fixed by UDP over IPv4: no datagram is longer, so who has room for any has room for any run.
constexpr DWORD kMostRunBytes = 65507;

// Chosen: for what is asked for, and once more.
constexpr std::size_t kNoteBytes = 2 * WSA_CMSG_SPACE(sizeof(DWORD));

/// @param notes  control messages of a datagram
/// @return  length of the datagrams that came as this one; 0: they do not tell
std::size_t SegmentBytesOf(std::span<const std::byte> notes)
{
    constexpr std::size_t kDataOffset = WSA_CMSG_LEN(0);
    while (notes.size() >= kDataOffset) {
        WSACMSGHDR header{};
        std::memcpy(&header, notes.data(), sizeof header);
        if (header.cmsg_len < kDataOffset || header.cmsg_len > notes.size())
            return 0;
        const auto data = notes.subspan(kDataOffset, header.cmsg_len - kDataOffset);
        DWORD bytes = 0;
        if (header.cmsg_level == IPPROTO_UDP && header.cmsg_type == kCoalescedInfo &&
            data.size() >= sizeof bytes) {
            std::memcpy(&bytes, data.data(), sizeof bytes);
            return bytes;
        }
        notes = notes.subspan(std::min<std::size_t>(WSA_CMSGHDR_ALIGN(header.cmsg_len), notes.size()));
    }
    return 0;
}

} // namespace

VxExpected<std::unique_ptr<WinUdpSocket>> WinUdpSocket::Open(const UdpSocketOptions& options,
                                                             std::shared_ptr<const KernelHandle> event,
                                                             std::unique_ptr<IRunReceiver> runs,
                                                             std::unique_ptr<ITimerSystem> timers)
{
    WinsockUse winsock;
    if (auto started = winsock.Result(); !started.IsOK())
        return started;
    SocketHandle socket(::WSASocketW(AF_INET, SOCK_DGRAM, IPPROTO_UDP, nullptr, 0,
                                     WSA_FLAG_OVERLAPPED | WSA_FLAG_NO_HANDLE_INHERIT));
    if (!socket.IsValid())
        return SystemFailure("open a UDP socket", ::WSAGetLastError());
    Parts parts{std::move(winsock), std::move(event), std::move(socket), nullptr, nullptr};
    const SOCKET handle = parts.socket.Get();
    if (auto configured = Configure(handle, options); !configured.IsOK())
        return configured;
    const auto local = Bind(handle, options.local);
    if (!local)
        return local.Error();
    // A system that does not know of runs hands over each datagram alone.
    if (options.isCoalescing && runs->Ask(handle, kMostRunBytes))
        parts.runs = std::move(runs);
    if (options.hasShortWaits)
        parts.timer = std::make_unique<WinWaitTimer>(std::move(timers));
    // Makes the socket non-blocking, too.
    if (::WSAEventSelect(handle, parts.event->Get(), FD_READ) != 0)
        return SystemFailure("watch a UDP socket", ::WSAGetLastError());
    return std::make_unique<WinUdpSocket>(std::move(parts), *local, options.isSendingAtOnce);
}

WinUdpSocket::WinUdpSocket(Parts parts, const Ipv4Endpoint& local, bool isSendingAtOnce)
    : m_parts(std::move(parts)), m_local(local), m_isSendingAtOnce(isSendingAtOnce)
{
}

VxResult WinUdpSocket::SendTo(std::span<const std::byte> bytes, const Ipv4Endpoint& destination)
{
    const sockaddr_in address = ToSystem(destination);
    const SOCKET socket = m_parts.socket.Get();
    const auto send = [&]() -> int {
        // A datagram is shorter than 64 KiB; a longer one is refused by the system, also when cut by this
        // cast.
        const int sent =
            ::sendto(socket, reinterpret_cast<const char*>(bytes.data()), static_cast<int>(bytes.size()), 0,
                     reinterpret_cast<const sockaddr*>(&address), sizeof address);
        return sent < 0 ? ::WSAGetLastError() : 0;
    };
    int error = send();
    const auto deadline = Clock::now() + kSendQueueWait;
    for (bool isOver = m_isSendingAtOnce; error == WSAEWOULDBLOCK && !isOver;) {
        isOver = Clock::now() >= deadline; // once more when this thread stood still
        fd_set waiting{};
        waiting.fd_count = 1;
        waiting.fd_array[0] = socket;
        timeval limit{0,
                      static_cast<long>(std::chrono::microseconds(kSendQueueWait).count())}; // below a second
        ::select(0, nullptr, &waiting, nullptr, &limit);
        error = send();
    }
    return error == 0 ? VxResult::Ok() : SystemFailure("send to " + destination.ToString(), error);
}

VxExpected<std::size_t> WinUdpSocket::Receive(std::span<Datagram> datagrams,
                                              std::chrono::microseconds timeout)
{
    const auto deadline = Clock::now() + timeout;
    // The last look found nothing, so the event tells of whatever has come since: to look again first would
    // cost a call of the system for each wait. An event of several sockets may have told somebody else.
    bool isWaitingFirst = m_isEmpty && timeout.count() > 0 && m_parts.event.use_count() == 1;
    for (;;) {
        if (m_isWoken.exchange(false))
            return VxError::Aborted;
        const bool isLooking = !std::exchange(isWaitingFirst, false);
        if (isLooking) {
            auto received = ReceiveWhatIsThere(datagrams);
            if (received || received.Error().Code() != VxError::Timeout)
                return received;
        }
        if (deadline <= Clock::now()) {
            if (isLooking)
                return VxError::Timeout;
            continue; // this thread stood still: much may have come
        }
        if (!WillBeTold())
            continue;
        if (auto waited = WaitForData(deadline); !waited.IsOK())
            return waited;
        m_isEmpty = false; // the event may have told of data, and tells once
    }
}

VxExpected<std::size_t> WinUdpSocket::ReceiveWhatIsThere(std::span<Datagram> datagrams)
{
    std::size_t filled = 0;
    for (Datagram& datagram : datagrams) {
        auto received = IsTakingRuns() ? ReceiveRun(datagram) : ReceiveOne(datagram);
        if (received.IsOK()) {
            ++filled;
            continue;
        }
        if (filled > 0)
            break; // what is wrong will show at the next call
        return received;
    }
    return filled;
}

VxResult WinUdpSocket::ReceiveOne(Datagram& datagram)
{
    sockaddr_in sender{};
    int senderLength = sizeof sender;
    Pieces memory; // the first ones are set
    const DWORD pieces = SpreadOver(memory, datagram);
    DWORD size = 0;
    DWORD flags = 0;
    const int failed = ::WSARecvFrom(m_parts.socket.Get(), memory.data(), pieces, &size, &flags,
                                     reinterpret_cast<sockaddr*>(&sender), &senderLength, nullptr, nullptr);
    const int error = failed != 0 ? ::WSAGetLastError() : 0;
    if (auto judged = Judge(error); !judged.IsOK())
        return judged;
    datagram.isTruncated = error == WSAEMSGSIZE;
    datagram.size = datagram.isTruncated ? datagram.memory.size() : size;
    datagram.segmentBytes = 0;
    datagram.sender = FromSystem(sender);
    return VxResult::Ok();
}

/// The same where the system may hand over several datagrams as one. One that agreed to it, and then does not
/// do it, is not asked again.
VxResult WinUdpSocket::ReceiveRun(Datagram& datagram)
{
    if (!m_isSpreading)
        datagram.bodies = {};
    sockaddr_in sender{};
    Pieces memory; // the first ones are set
    // Cleared: a system that has nothing to tell may leave the length as it was.
    alignas(WSACMSGHDR) std::array<std::byte, kNoteBytes> notes{};
    WSAMSG message{};
    message.name = reinterpret_cast<sockaddr*>(&sender);
    message.namelen = sizeof sender;
    message.lpBuffers = memory.data();
    message.dwBufferCount = SpreadOver(memory, datagram);
    message.Control = ToSystem(notes);
    DWORD received = 0;
    const int error = m_parts.runs->Receive(m_parts.socket.Get(), message, received);
    // How many pieces a system takes shows when it refuses.
    if (error == WSAEINVAL && !datagram.bodies.empty()) {
        m_isSpreading = false;
        return ReceiveRun(datagram);
    }
    auto judged = Judge(error);
    if (judged.Code() == VxError::NetworkError && !m_hasTakenRun) {
        m_parts.runs->Ask(m_parts.socket.Get(), 0);
        m_areRunsRefused = true;
        return ReceiveOne(datagram);
    }
    if (!judged.IsOK())
        return judged;
    m_hasTakenRun = true;
    // A message whose notes were cut says nothing of how long its datagrams are, and is whole otherwise.
    const bool areNotesCut = (message.dwFlags & MSG_CTRUNC) != 0;
    const bool isCut = (message.dwFlags & MSG_TRUNC) != 0 || (error == WSAEMSGSIZE && !areNotesCut);
    const std::size_t room = datagram.memory.size();
    datagram.isTruncated = isCut || areNotesCut;
    datagram.size = isCut ? room : std::min<std::size_t>(received, room);
    const std::size_t noteBytes = std::min<std::size_t>(message.Control.len, notes.size());
    const std::size_t segmentBytes = SegmentBytesOf(std::span(notes).first(noteBytes));
    datagram.segmentBytes = segmentBytes < datagram.size ? segmentBytes : 0;
    datagram.sender = FromSystem(sender);
    return VxResult::Ok();
}

/// @param error  of a receiving call
/// @return  OK: a datagram is there, whole or cut; TIMEOUT: none; NETWORK_ERROR
VxResult WinUdpSocket::Judge(int error)
{
    m_isEmpty = error == WSAEWOULDBLOCK;
    switch (error) {
    case 0:
    case WSAEMSGSIZE:
        return VxResult::Ok();
    case WSAEWOULDBLOCK:
    case WSAECONNRESET:
    case WSAENETRESET:
        return VxError::Timeout;
    default:
        return SystemFailure("receive at " + m_local.ToString(), error);
    }
}

/// Whether nothing is there, so that the event tells of what comes next.
///
/// An event that has told tells again once a receiving call has looked after it. The documentation names the
/// calls that count as such, and the one that receives runs is not among them: here another one looks.
bool WinUdpSocket::WillBeTold()
{
    if (!IsTakingRuns())
        return true;
    std::byte memory{};
    WSABUF piece = ToSystem({&memory, 1});
    DWORD size = 0;
    DWORD flags = MSG_PEEK;
    const int failed =
        ::WSARecvFrom(m_parts.socket.Get(), &piece, 1, &size, &flags, nullptr, nullptr, nullptr, nullptr);
    return failed != 0 && ::WSAGetLastError() != WSAEMSGSIZE;
}

VxResult WinUdpSocket::WaitForData(Clock::time_point deadline)
{
    const HANDLE event = m_parts.event->Get();
    const DWORD waited = m_parts.timer ? m_parts.timer->WaitFor(event, deadline)
                                       : ::WaitForSingleObject(event, ToWaitMs(deadline - Clock::now()));
    if (waited == WAIT_FAILED)
        return SystemFailure("wait at " + m_local.ToString(),
                             static_cast<int>(::GetLastError())); // codes are small
    return VxResult::Ok();
}

void WinUdpSocket::Wake()
{
    m_isWoken = true;
    ::SetEvent(m_parts.event->Get());
}

std::size_t WinUdpSocket::ReceiveBufferBytes() const
{
    int value = 0;
    int length = sizeof value;
    const int failed =
        ::getsockopt(m_parts.socket.Get(), SOL_SOCKET, SO_RCVBUF, reinterpret_cast<char*>(&value), &length);
    return failed != 0 || value < 0 ? 0 : static_cast<std::size_t>(value); // not negative, tested
}

VxResult WinUdpSocket::JoinGroup(Ipv4Address group, Ipv4Address interfaceAddress)
{
    return ChangeMembership(IP_ADD_MEMBERSHIP, group, interfaceAddress);
}

VxResult WinUdpSocket::LeaveGroup(Ipv4Address group, Ipv4Address interfaceAddress)
{
    return ChangeMembership(IP_DROP_MEMBERSHIP, group, interfaceAddress);
}

VxResult WinUdpSocket::ChangeMembership(int option, Ipv4Address group, Ipv4Address interfaceAddress)
{
    ip_mreq membership{};
    membership.imr_multiaddr.s_addr = ::htonl(group.Value());
    membership.imr_interface.s_addr = ::htonl(interfaceAddress.Value());
    const int failed = ::setsockopt(m_parts.socket.Get(), IPPROTO_IP, option,
                                    reinterpret_cast<const char*>(&membership), sizeof membership);
    if (failed == 0)
        return VxResult::Ok();
    const std::string action = option == IP_ADD_MEMBERSHIP ? "join" : "leave";
    return SystemFailure(action + " multicast group " + group.ToString() + " on " +
                             interfaceAddress.ToString(),
                         ::WSAGetLastError());
}

} // namespace transport
