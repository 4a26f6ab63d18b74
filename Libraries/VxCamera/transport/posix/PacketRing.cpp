#include "VxCamera/transport/posix/PacketRing.h"

#include "VxCamera/transport/posix/RawDatagram.h"

#include <arpa/inet.h>
#include <linux/if_ether.h>
#include <linux/if_packet.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <sys/uio.h>
#include <sys/utsname.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <tuple>
#include <utility>

namespace transport {

namespace {

/// Fixed by virtio (its header for a packet; the system's own file of it is not C++), in this machine's byte
/// order.
struct RunHeader {
    std::uint8_t flags;
    std::uint8_t kind;
    std::uint16_t headerBytes;
    std::uint16_t segmentBytes; // payload of each datagram
    std::uint16_t checksumStart;
    std::uint16_t checksumOffset;
};
static_assert(sizeof(RunHeader) == 10);

// Fixed by virtio: a packet that stands for several UDP datagrams.
constexpr std::uint8_t kRunOfDatagrams = 5;

// Fixed by Linux 5.13; headers before do not have it.
constexpr std::uint32_t kFanoutIgnoreOutgoing = 0x4000; // PACKET_FANOUT_FLAG_IGNORE_OUTGOING

// A frame of the usual 9,000 bytes, the link's header with two tags (22 bytes), and what Linux puts in front
// of it: 90 bytes in all before the IP header.
constexpr std::size_t kSlotBytes = 9'216;
static_assert(kSlotBytes % TPACKET_ALIGNMENT == 0);

// Chosen: what the system takes in one piece, where it can. A power of two, as it takes nothing else; 28
// slots leave little of it.
constexpr std::size_t kBlockBytes = std::size_t{256} << 10;
constexpr std::size_t kSlotsOfBlock = kBlockBytes / kSlotBytes;

// Chosen: 7,168 packets. They are 86 ms at 1 Gbit/s when of 1,500 bytes, and half a second when of 9,000. A
// socket's buffer of 16 MiB holds twice as many small ones.
constexpr std::size_t kMemoryBytes = std::size_t{64} << 20;

// Fixed by IPv4: the length of a packet has 16 bits. In front of it the system puts a RunHeader and the
// link's.
constexpr std::size_t kLongestPacket = 65'535;
constexpr std::size_t kMostInFront = 64; // chosen: longer than any link's header
constexpr std::size_t kHeaders = 20 + 8; // of IP and UDP; a route has no packets with options of IP

// Measured: fetching the next slots saves a tenth of the receiver's time amid many packets of 1,500 bytes.
// Where each is taken as it comes, it makes the last one of a block come 13 us later: the system writes a
// slot more slowly that has been looked at just before. Where more than some are there, many are.
constexpr std::size_t kBeginning = 4;

template <typename T>
VxResult SetOption(int socket, int option, const T& value, const char* what)
{
    if (::setsockopt(socket, SOL_PACKET, option, &value, sizeof value) != 0)
        return SystemFailure(what, errno);
    return VxResult::Ok();
}

/// Before Linux 6.2 the system drops runs of datagrams instead of saying that they are some.
bool DoesSystemTellOfRuns()
{
    utsname system{};
    unsigned major = 0;
    unsigned minor = 0;
    if (::uname(&system) != 0 || std::sscanf(system.release, "%u.%u", &major, &minor) != 2)
        return false;
    return major > 6 || (major == 6 && minor >= 2);
}

VxResult Configure(int socket, const DatagramRoute& route)
{
    tpacket_req memory{};
    memory.tp_block_size = kBlockBytes;
    memory.tp_block_nr = kMemoryBytes / kBlockBytes;
    memory.tp_frame_size = kSlotBytes;
    memory.tp_frame_nr = kMemoryBytes / kBlockBytes * kSlotsOfBlock;
    if (auto set = SetOption(socket, PACKET_VERSION, int{TPACKET_V2}, "choose a kind of packet ring");
        !set.IsOK())
        return set;
    if (auto set = SetOption(socket, PACKET_VNET_HDR, 1, "be told of runs of datagrams"); !set.IsOK())
        return set;
    if (auto set = SetOption(socket, PACKET_COPY_THRESH, 1, "keep long packets"); !set.IsOK())
        return set;
    if (auto set = TakeOnly(socket, route); !set.IsOK())
        return set;
    return SetOption(socket, PACKET_RX_RING, memory, "share memory for packets");
}

/// From here on packets come.
VxResult Begin(int socket, std::uint32_t interfaceIndex)
{
    sockaddr_ll address{};
    address.sll_family = AF_PACKET;
    address.sll_protocol = htons(ETH_P_IP);
    address.sll_ifindex = static_cast<int>(interfaceIndex); // the system's own number
    if (::bind(socket, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0)
        return SystemFailure("watch a network interface", errno);
    // A group of this socket alone: only members of groups get datagrams put together of their fragments.
    const std::uint32_t group =
        (PACKET_FANOUT_HASH | PACKET_FANOUT_FLAG_DEFRAG | PACKET_FANOUT_FLAG_UNIQUEID | kFanoutIgnoreOutgoing)
        << 16;
    return SetOption(socket, PACKET_FANOUT, group, "put fragments together");
}

tpacket2_hdr HeaderOf(std::span<const std::byte> slot)
{
    tpacket2_hdr header{};
    std::memcpy(&header, slot.data(), sizeof header);
    return header;
}

std::atomic_ref<std::uint32_t> StatusOf(std::span<std::byte> slot)
{
    static_assert(offsetof(tpacket2_hdr, tp_status) == 0);
    return std::atomic_ref(*reinterpret_cast<std::uint32_t*>(slot.data()));
}

/// @param slot  of a packet; headers and the beginning are always there
/// @return  from the IP header on, as much as is there; empty: the slot makes no sense
std::span<const std::byte> PacketIn(std::span<const std::byte> slot, const tpacket2_hdr& header)
{
    const std::size_t end = std::size_t{header.tp_mac} + header.tp_snaplen;
    const bool isPlausible = header.tp_mac >= sizeof(RunHeader) && header.tp_net >= header.tp_mac &&
                             header.tp_net <= end && end <= slot.size();
    return isPlausible ? slot.first(end).subspan(header.tp_net) : std::span<const std::byte>();
}

UdpChecksum ChecksumOf(const tpacket2_hdr& header)
{
    const bool isTrusted = (header.tp_status & (TP_STATUS_CSUM_VALID | TP_STATUS_CSUMNOTREADY)) != 0;
    return isTrusted ? UdpChecksum::Trusted : UdpChecksum::Unchecked;
}

/// @return  length of the datagrams that came as this packet; 0: it is one
std::size_t SegmentBytesOf(std::span<const std::byte> slot, const tpacket2_hdr& header)
{
    RunHeader run{};
    std::memcpy(&run, slot.data() + header.tp_mac - sizeof run, sizeof run);
    return run.kind == kRunOfDatagrams ? run.segmentBytes : 0;
}

/// Receives a packet that the system keeps.
///
/// That the interface went down is told once, in place of the packet, which then is still there. After any
/// other failure it is gone, and the next one is another slot's.
/// @return  its bytes; -1: it is not there
ssize_t ReceiveKept(int socket, msghdr& message)
{
    const auto received = ::recvmsg(socket, &message, MSG_DONTWAIT);
    return received < 0 && errno == ENETDOWN ? ::recvmsg(socket, &message, MSG_DONTWAIT) : received;
}

/// Asks for memory for packets that have no slot, beside the ring.
/// @return  whether the system grants as much as the ring has: without CAP_NET_ADMIN it usually does not
bool AskForRoom(int socket)
{
    const int wanted = kMemoryBytes;
    if (::setsockopt(socket, SOL_SOCKET, SO_RCVBUFFORCE, &wanted, sizeof wanted) != 0)
        ::setsockopt(socket, SOL_SOCKET, SO_RCVBUF, &wanted, sizeof wanted);
    int granted = 0;
    socklen_t length = sizeof granted;
    return ::getsockopt(socket, SOL_SOCKET, SO_RCVBUF, &granted, &length) == 0 && granted >= wanted;
}

} // namespace

VxExpected<std::unique_ptr<PacketRing>> PacketRing::Open(const DatagramRoute& route)
{
    if (!DoesSystemTellOfRuns())
        return VxResult(VxError::NetworkError, "a packet ring needs Linux 6.2 or later");
    FileDescriptor socket(::socket(AF_PACKET, SOCK_RAW | SOCK_CLOEXEC | SOCK_NONBLOCK, 0)); // 0: nothing yet
    if (!socket.IsValid())
        return SystemFailure("open a packet socket", errno);
    if (auto configured = Configure(socket.Get(), route); !configured.IsOK())
        return configured;
    const bool hasRoomForRuns = AskForRoom(socket.Get());
    auto longPacket = std::make_unique<std::byte[]>(kMostInFront + kLongestPacket);
    void* const memory = ::mmap(nullptr, kMemoryBytes, PROT_READ | PROT_WRITE, MAP_SHARED, socket.Get(), 0);
    if (memory == MAP_FAILED)
        return SystemFailure("map a packet ring", errno);
    const int handle = socket.Get();
    auto ring = std::make_unique<PacketRing>(std::move(socket),
                                             std::span(static_cast<std::byte*>(memory), kMemoryBytes),
                                             hasRoomForRuns, std::move(longPacket));
    if (auto begun = Begin(handle, route.interfaceIndex); !begun.IsOK())
        return begun;
    return ring;
}

PacketRing::PacketRing(FileDescriptor socket, std::span<std::byte> memory, bool hasRoomForRuns,
                       std::unique_ptr<std::byte[]> longPacket)
    : m_socket(std::move(socket)),
      m_memory(memory),
      m_slotCount(memory.size() / kBlockBytes * kSlotsOfBlock),
      m_hasRoomForRuns(hasRoomForRuns),
      m_longPacket(std::move(longPacket))
{
}

PacketRing::~PacketRing()
{
    ::munmap(m_memory.data(), m_memory.size());
}

std::size_t PacketRing::Take(std::span<Datagram> datagrams)
{
    std::size_t filled = 0;
    // Packets that are no datagrams fill no place: somebody who sends nothing else must not hold up whoever
    // waits.
    for (std::size_t looked = 0; looked < 2 * datagrams.size() && filled < datagrams.size(); ++looked) {
        if (!IsPacketThere())
            break;
        if (looked >= kBeginning)
            FetchAhead();
        filled += TakeNext(datagrams[filled]) ? 1 : 0;
    }
    return filled;
}

bool PacketRing::IsPacketThere() const
{
    return (StatusOf(SlotAt(m_next)).load(std::memory_order_acquire) & TP_STATUS_USER) != 0;
}

/// @return  false: it is no intact datagram, and is dropped
bool PacketRing::TakeNext(Datagram& datagram)
{
    const auto slot = SlotAt(m_next);
    const bool isLong = (HeaderOf(slot).tp_status & TP_STATUS_COPY) != 0;
    const bool isIntact = isLong ? TakeLong(slot, datagram) : TakeFromSlot(slot, datagram);
    StatusOf(slot).store(TP_STATUS_KERNEL, std::memory_order_release);
    m_next = m_next + 1 == m_slotCount ? 0 : m_next + 1;
    return isIntact;
}

bool PacketRing::TakeFromSlot(std::span<const std::byte> slot, Datagram& datagram) const
{
    const tpacket2_hdr header = HeaderOf(slot);
    const auto found = ParseUdp(PacketIn(slot, header), ChecksumOf(header));
    if (!found)
        return false;
    datagram.Fill(found->payload);
    datagram.segmentBytes = SegmentBytesOf(slot, header);
    datagram.sender = found->sender;
    return true;
}

/// Takes a packet of which the slot has the beginning, and the system the whole.
bool PacketRing::TakeLong(std::span<const std::byte> slot, Datagram& datagram)
{
    const tpacket2_hdr header = HeaderOf(slot);
    const auto beginning = ParseBeginningOfUdp(PacketIn(slot, header));
    const std::size_t inFront = sizeof(RunHeader) + header.tp_net - header.tp_mac;
    if (!beginning || inFront > kMostInFront) {
        msghdr nothing{};
        std::ignore = ReceiveKept(m_socket.Get(), nothing); // to be rid of it
        return false;
    }
    const bool isTrusted = ChecksumOf(header) == UdpChecksum::Trusted;
    if (!(isTrusted ? TakeSpread(inFront, beginning->payloadBytes, datagram)
                    : TakeChecked(inFront, datagram)))
        return false;
    datagram.segmentBytes = SegmentBytesOf(slot, header);
    datagram.sender = beginning->sender;
    return true;
}

/// @param inFront  bytes in front of the IP header
/// @param payloadBytes  of the datagram
bool PacketRing::TakeSpread(std::size_t inFront, std::size_t payloadBytes, Datagram& datagram) const
{
    const std::size_t headBytes = inFront + kHeaders;
    std::array<std::byte, kMostInFront + kHeaders> head; // written by the system
    std::array<iovec, 1 + 2 * Datagram::kMostBodies + 1> pieces;
    pieces[0] = {head.data(), headBytes};
    std::size_t count = 1;
    datagram.ForEachPiece([&](std::span<std::byte> piece) {
        pieces[count++] = {piece.data(), piece.size()};
    });
    msghdr message{};
    message.msg_iov = pieces.data();
    message.msg_iovlen = count;
    const auto received = ReceiveKept(m_socket.Get(), message);
    if (received < 0 || static_cast<std::size_t>(received) < headBytes)
        return false;
    const auto bytes = static_cast<std::size_t>(received) - headBytes; // not negative, tested above
    datagram.size = std::min(bytes, payloadBytes);                     // what follows is padding
    datagram.isTruncated = datagram.size < payloadBytes;
    return true;
}

/// @param inFront  bytes in front of the IP header
bool PacketRing::TakeChecked(std::size_t inFront, Datagram& datagram)
{
    iovec memory{m_longPacket.get(), kMostInFront + kLongestPacket};
    msghdr message{};
    message.msg_iov = &memory;
    message.msg_iovlen = 1;
    const auto received = ReceiveKept(m_socket.Get(), message);
    if (received < 0 || static_cast<std::size_t>(received) < inFront)
        return false;
    const std::span<const std::byte> all(m_longPacket.get(), static_cast<std::size_t>(received));
    const auto whole = ParseUdp(all.subspan(inFront), UdpChecksum::Unchecked);
    if (!whole)
        return false;
    datagram.Fill(whole->payload);
    return true;
}

void PacketRing::ForgetErrors() const
{
    int error = 0;
    socklen_t length = sizeof error;
    ::getsockopt(m_socket.Get(), SOL_SOCKET, SO_ERROR, &error, &length); // reading takes it back
}

/// Has a later slot brought near.
void PacketRing::FetchAhead() const
{
    constexpr std::size_t kAhead = 3; // chosen: the time of so many packets is longer than fetching takes
    constexpr std::size_t kLineBytes = 64;
    constexpr std::size_t kLines =
        4; // headers, and the beginning of the payload; what follows comes by itself
    const std::byte* const slot = SlotAt((m_next + kAhead) % m_slotCount).data();
    for (std::size_t line = 0; line < kLines; ++line)
        __builtin_prefetch(slot + line * kLineBytes);
}

std::span<std::byte> PacketRing::SlotAt(std::size_t index) const
{
    const std::size_t place = index / kSlotsOfBlock * kBlockBytes + index % kSlotsOfBlock * kSlotBytes;
    return m_memory.subspan(place, kSlotBytes);
}

} // namespace transport
