#include "VxCamera/transport/posix/RawDatagram.h"

#include <algorithm>
#include <array>
#include <cstdint>

#include "VxBase/VxByteOrder.h"

namespace transport {

namespace {

// Fixed by IPv4 and UDP (RFC 791, RFC 768).
constexpr std::size_t kLeastIpHeader = 20;
constexpr std::size_t kUdpHeader = 8;
constexpr std::uint8_t kUdp = 17;
constexpr std::uint16_t kFragmentBits = 0x3FFF; // "more fragments", and where this one belongs

template <typename T>
T Load(std::span<const std::byte> bytes, std::size_t offset)
{
    return VxLoadBe<T>(bytes.subspan(offset).first<sizeof(T)>());
}

/// The sum of the Internet checksum (RFC 1071), to be folded. An odd last byte counts as if a zero followed.
std::uint64_t SumOf(std::span<const std::byte> bytes)
{
    std::uint64_t sum = 0;
    for (; bytes.size() >= sizeof(std::uint32_t); bytes = bytes.subspan(sizeof(std::uint32_t)))
        sum += Load<std::uint32_t>(bytes, 0);
    std::array<std::byte, sizeof(std::uint32_t)> rest{};
    std::ranges::copy(bytes, rest.begin());
    return sum + Load<std::uint32_t>(rest, 0);
}

bool IsRight(std::uint64_t sum)
{
    constexpr std::uint64_t kAllOnes = 0xFFFF;
    while (sum > kAllOnes)
        sum = (sum >> 16) + (sum & kAllOnes);
    return sum == kAllOnes;
}

/// @param udp  header and payload, as long as the header says
bool IsUdpIntact(std::span<const std::byte> ipHeader, std::span<const std::byte> udp)
{
    if (Load<std::uint16_t>(udp, 6) == 0) // the sender made no checksum
        return true;
    const auto addresses = ipHeader.subspan(12, 8);
    return IsRight(SumOf(addresses) + kUdp + udp.size() + SumOf(udp));
}

/// What the headers of a packet tell.
struct Headers {
    std::span<const std::byte> ip;
    std::size_t udpBytes = 0; // header and payload
    Ipv4Endpoint sender;
};

std::optional<Headers> ParseHeaders(std::span<const std::byte> packet)
{
    if (packet.size() < kLeastIpHeader || Load<std::uint8_t>(packet, 0) >> 4 != 4)
        return std::nullopt;
    const std::size_t headerBytes = std::size_t{4} * (Load<std::uint8_t>(packet, 0) & 0xF);
    const std::size_t totalBytes = Load<std::uint16_t>(packet, 2);
    const bool isDatagram =
        headerBytes >= kLeastIpHeader && totalBytes >= headerBytes + kUdpHeader &&
        packet.size() >= headerBytes + kUdpHeader && (Load<std::uint16_t>(packet, 6) & kFragmentBits) == 0 &&
        Load<std::uint8_t>(packet, 9) == kUdp && IsRight(SumOf(packet.first(headerBytes)));
    if (!isDatagram)
        return std::nullopt;
    const auto udp = packet.subspan(headerBytes);
    const std::size_t udpBytes = Load<std::uint16_t>(udp, 4);
    if (udpBytes < kUdpHeader || udpBytes > totalBytes - headerBytes)
        return std::nullopt;
    return Headers{packet.first(headerBytes),
                   udpBytes,
                   {Ipv4Address(Load<std::uint32_t>(packet, 12)), Load<std::uint16_t>(udp, 0)}};
}

} // namespace

std::optional<RawDatagram> ParseUdp(std::span<const std::byte> packet, UdpChecksum checksum)
{
    const auto headers = ParseHeaders(packet);
    if (!headers || packet.size() < headers->ip.size() + headers->udpBytes)
        return std::nullopt;
    const auto udp = packet.subspan(headers->ip.size(), headers->udpBytes);
    if (checksum == UdpChecksum::Unchecked && !IsUdpIntact(headers->ip, udp))
        return std::nullopt;
    return RawDatagram{udp.subspan(kUdpHeader), udp.size() - kUdpHeader, headers->sender};
}

std::optional<RawDatagram> ParseBeginningOfUdp(std::span<const std::byte> packet)
{
    const auto headers = ParseHeaders(packet);
    if (!headers)
        return std::nullopt;
    const auto udp = packet.subspan(headers->ip.size());
    return RawDatagram{udp.first(std::min(udp.size(), headers->udpBytes)).subspan(kUdpHeader),
                       headers->udpBytes - kUdpHeader, headers->sender};
}

} // namespace transport
