#pragma once

#include "VxCamera/wire/gvsp/PacketHeader.h"

namespace receive {

constexpr bool IsPayload(gvsp::PacketFormat format)
{
    switch (format) {
    case gvsp::PacketFormat::Payload:
    case gvsp::PacketFormat::PayloadH264:
    case gvsp::PacketFormat::PayloadMultiZone:
    case gvsp::PacketFormat::PayloadMultiPart:
    case gvsp::PacketFormat::PayloadGenDc:
        return true;
    default:
        return false;
    }
}

constexpr bool IsReadable(gvsp::PacketFormat format)
{
    return format == gvsp::PacketFormat::Leader || format == gvsp::PacketFormat::Trailer ||
           format == gvsp::PacketFormat::AllIn || IsPayload(format);
}

/// Whether the packet only tells that another one cannot be sent now.
constexpr bool IsResendDelay(gvsp::Status status)
{
    return status == gvsp::Status::PacketNotYetAvailable ||
           status == gvsp::Status::PacketTemporarilyUnavailable;
}

/// Whether the packet only tells that another one cannot be sent again.
constexpr bool IsResendRefusal(gvsp::Status status)
{
    return status == gvsp::Status::PacketUnavailable || status == gvsp::Status::PacketAndPreviousRemoved ||
           status == gvsp::Status::PacketRemoved;
}

/// Such packets carry nothing, and their format is any.
constexpr bool IsAboutResend(gvsp::Status status)
{
    return IsResendDelay(status) || IsResendRefusal(status);
}

constexpr bool IsSentAgain(const gvsp::PacketHeader& header)
{
    return header.status == gvsp::Status::PacketResend || (header.flags & gvsp::kFlagIsResend) != 0;
}

} // namespace receive
