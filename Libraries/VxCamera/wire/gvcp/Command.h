#pragma once

#include <cstddef>
#include <cstdint>

/// The control protocol of GigE Vision: command codes, flags and limits.
namespace gvcp {

/// Command code; any 16-bit value may come from the network. Fixed by the protocol.
enum class Command : std::uint16_t {
    Discovery = 0x0002,
    ForceIp = 0x0004,
    PacketResend = 0x0040,
    ReadReg = 0x0080,
    WriteReg = 0x0082,
    ReadMem = 0x0084,
    WriteMem = 0x0086,
    Event = 0x00C0,
    EventData = 0x00C2,
    Action = 0x0100,
};

/// Acknowledge code; any 16-bit value may come from the network. Fixed by the protocol.
enum class Ack : std::uint16_t {
    Discovery = 0x0003,
    ForceIp = 0x0005,
    PacketResend = 0x0041,
    ReadReg = 0x0081,
    WriteReg = 0x0083,
    ReadMem = 0x0085,
    WriteMem = 0x0087,
    Pending = 0x0089,
    Event = 0x00C1,
    EventData = 0x00C3,
    Action = 0x0101,
};

/// @return  the code that answers a command: the next number. Only Ack::Pending answers no command of its
/// own.
constexpr Ack AckOf(Command command)
{
    return static_cast<Ack>(static_cast<std::uint16_t>(command) + 1);
}

// All below: fixed by the protocol.

constexpr std::uint16_t kPort = 3956; // of every device

// Flags of a command.
constexpr std::uint8_t kAckRequired = 0x01;
constexpr std::uint8_t kBroadcastAckAllowed = 0x10; // discovery and force IP
constexpr std::uint8_t kExtendedIds = 0x10;         // packet resend and events

constexpr std::size_t kHeaderBytes = 8;
constexpr std::size_t kMaxDatagramBytes = 548; // 576 with the headers of IP and UDP
constexpr std::size_t kMaxPayloadBytes = kMaxDatagramBytes - kHeaderBytes;
constexpr std::size_t kMaxMemoryBytes = kMaxPayloadBytes - 4; // of one READMEM or WRITEMEM
constexpr std::size_t kMaxReadRegisters = kMaxPayloadBytes / 4;
constexpr std::size_t kMaxWriteRegisters = kMaxPayloadBytes / 8;
constexpr std::size_t kAlignment = 4; // of every address and count

/// @return  the request id after this one; 0 is never used
constexpr std::uint16_t NextRequestId(std::uint16_t requestId)
{
    return requestId == 0xFFFF ? std::uint16_t{1} : static_cast<std::uint16_t>(requestId + 1); // below 0xFFFF
}

} // namespace gvcp
