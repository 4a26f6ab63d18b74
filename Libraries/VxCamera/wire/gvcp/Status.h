#pragma once

#include <cstdint>
#include <string>

namespace gvcp {

/// Status of an acknowledge or of a stream packet; any 16-bit value may come from the network.
/// Fixed by the protocol.
enum class Status : std::uint16_t {
    Success = 0x0000,
    PacketResend = 0x0100, ///< stream only: this packet is sent again; as good as Success
    NotImplemented = 0x8001,
    InvalidParameter = 0x8002,
    InvalidAddress = 0x8003,
    WriteProtect = 0x8004,
    BadAlignment = 0x8005,
    AccessDenied = 0x8006,
    Busy = 0x8007,
    LocalProblem = 0x8008,
    MessageMismatch = 0x8009,
    InvalidProtocol = 0x800A,
    NoMessage = 0x800B,
    PacketUnavailable = 0x800C,
    DataOverrun = 0x800D,
    InvalidHeader = 0x800E,
    WrongConfiguration = 0x800F,
    PacketNotYetAvailable = 0x8010,
    PacketAndPreviousRemoved = 0x8011,
    PacketRemoved = 0x8012,
    NoReferenceTime = 0x8013,
    PacketTemporarilyUnavailable = 0x8014,
    Overflow = 0x8015,
    ActionLate = 0x8016,
    LeaderTrailerOverflow = 0x8017,
    Error = 0x8FFF,
};

/// @return  true for Success and PacketResend
constexpr bool IsGood(Status status)
{
    return status == Status::Success || status == Status::PacketResend;
}

/// @return  name and number for messages: "access denied (0x8006)", "unknown status (0x1234)"
[[nodiscard]] std::string StatusText(Status status);

} // namespace gvcp
