#pragma once

#include "VxBase/VxByteWriter.h"
#include "VxBase/VxExpected.h"

#include "VxCamera/wire/gvcp/Status.h"

#include <cstddef>
#include <cstdint>
#include <span>

/// The stream protocol of GigE Vision.
namespace gvsp {

using gvcp::Status;

/// What a packet carries; values that are not listed may come from the network. Fixed by the protocol.
enum class PacketFormat : std::uint8_t {
    Leader = 1,
    Trailer = 2,
    Payload = 3,
    AllIn = 4,
    PayloadH264 = 5,
    PayloadMultiZone = 6,
    PayloadMultiPart = 7,
    PayloadGenDc = 8,
};

/// Whether a packet begins with what a leader tells.
[[nodiscard]] constexpr bool HasLeader(PacketFormat format)
{
    return format == PacketFormat::Leader || format == PacketFormat::AllIn;
}

/// Which of the two header layouts a packet has; every packet tells.
enum class IdMode : std::uint8_t {
    Standard, ///< block id 16 bits, packet id 24 bits, header 8 bytes
    Extended, ///< block id 64 bits, packet id 32 bits, header 20 bytes
};

// Fixed by the protocol.
constexpr std::size_t kStandardHeaderBytes = 8;
constexpr std::size_t kExtendedHeaderBytes = 20;
constexpr std::uint64_t kTestBlockId = 0; // never a picture: a test packet

// Flags of the extended header. Fixed by the protocol.
constexpr std::uint16_t kFlagResendRangeError = 0x0004;
constexpr std::uint16_t kFlagPreviousBlockDropped = 0x0002;
constexpr std::uint16_t kFlagIsResend = 0x0001;

constexpr std::size_t HeaderBytes(IdMode mode)
{
    return mode == IdMode::Extended ? kExtendedHeaderBytes : kStandardHeaderBytes;
}

/// Header of every stream packet.
struct PacketHeader {
    Status status = Status::Success;
    IdMode idMode = IdMode::Standard;
    PacketFormat format = PacketFormat::Payload;
    std::uint16_t flags = 0;    ///< extended header only
    std::uint8_t partCount = 0; ///< extended header of a leader: number of parts or additional zones
    std::uint64_t blockId = 0;  ///< 0: test packet
    std::uint32_t packetId = 0; ///< 0 leader, 1 to n payload, n + 1 trailer

    bool operator==(const PacketHeader&) const = default;
};

/// A packet as received. Borrows the data from the datagram.
struct Packet {
    PacketHeader header;
    std::span<const std::byte> data; ///< all after the header
};

/// Takes a datagram apart; status and format are not judged. Does not allocate.
/// @return  VxError::Truncated
[[nodiscard]] VxExpected<Packet> ParsePacket(std::span<const std::byte> datagram);

/// Standard mode: the low 16 bits of the block id and the low 24 of the packet id are written.
void WritePacketHeader(VxByteWriter& out, const PacketHeader& header);

} // namespace gvsp
