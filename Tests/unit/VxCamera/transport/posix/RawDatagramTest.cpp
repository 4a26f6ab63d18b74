#include "VxCamera/transport/posix/RawDatagram.h"

#include "support/Bytes.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace transport {
namespace {

/// "hello" from 192.168.71.20:3956 to 192.168.71.1:50000, with sums made by hand:
/// 4500+0021+1234+4000+4011+C0A8+4714+C0A8+4701 = 2E6CB, E6CD, its complement 1932;
/// C0A8+4714+C0A8+4701+0011+000D and 0F74+C350+000D and 6865+6C6C+6F00 = 42625, 2629, its complement D9D6.
bytes::Vector Hello()
{
    return bytes::FromHex(
        "45 00 0021 1234 4000 40 11 1932 C0A84714 C0A84701 | 0F74 C350 000D D9D6 | 68656C6C6F");
}

bool IsTaken(const bytes::Vector& packet, UdpChecksum checksum = UdpChecksum::Unchecked)
{
    return ParseUdp(packet, checksum).has_value();
}

TEST(RawDatagramTest, GivesPayloadAndSender)
{
    const auto packet = Hello();

    const auto datagram = ParseUdp(packet, UdpChecksum::Unchecked);

    ASSERT_TRUE(datagram);
    EXPECT_TRUE(std::ranges::equal(datagram->payload, bytes::FromHex("68656C6C6F")));
    EXPECT_EQ(datagram->sender, Ipv4Endpoint(Ipv4Address(192, 168, 71, 20), 3956));
}

TEST(RawDatagramTest, PaddingOfTheLinkIsNoPayload)
{
    auto packet = Hello();
    packet.resize(46, std::byte{0xEE}); // what Ethernet sends at least

    const auto datagram = ParseUdp(packet, UdpChecksum::Unchecked);

    ASSERT_TRUE(datagram);
    EXPECT_EQ(datagram->payload.size(), 5u);
}

TEST(RawDatagramTest, OptionsOfTheIpHeaderAreSkipped)
{
    // Two words longer, eight times "no operation": the sum is 200+8+404 more.
    const auto packet = bytes::FromHex("47 00 0029 1234 4000 40 11 1326 C0A84714 C0A84701 0101010101010101 |"
                                       "0F74 C350 000D D9D6 | 68656C6C6F");

    const auto datagram = ParseUdp(packet, UdpChecksum::Unchecked);

    ASSERT_TRUE(datagram);
    EXPECT_EQ(datagram->payload.size(), 5u);
}

TEST(RawDatagramTest, AnyChangedBitIsFound)
{
    for (std::size_t i = 0; i < Hello().size(); ++i) {
        auto packet = Hello();
        packet[i] ^= std::byte{0x04};
        EXPECT_FALSE(IsTaken(packet)) << i;
    }
}

TEST(RawDatagramTest, ATrustedChecksumIsNotMadeAgain)
{
    auto packet = Hello();
    packet.back() ^= std::byte{1};

    EXPECT_TRUE(IsTaken(packet, UdpChecksum::Trusted));
}

TEST(RawDatagramTest, ASenderMayMakeNoChecksum)
{
    auto packet = Hello();
    packet[26] = packet[27] = std::byte{0};
    packet.back() ^= std::byte{1};

    EXPECT_TRUE(IsTaken(packet));
}

TEST(RawDatagramTest, APacketThatIsCutIsNotTaken)
{
    const auto packet = Hello();

    for (std::size_t size = 0; size < packet.size(); ++size)
        EXPECT_FALSE(IsTaken({packet.begin(), packet.begin() + static_cast<std::ptrdiff_t>(size)},
                             UdpChecksum::Trusted))
            << size;
}

// Each with a right checksum of the IP header, so that this is not what is found.
TEST(RawDatagramTest, WhatIsNoWholeUdpDatagramIsNotTaken)
{
    const auto isTaken = [](std::string_view header) {
        auto packet = bytes::FromHex(header);
        const auto rest = Hello();
        packet.insert(packet.end(), rest.begin() + 20, rest.end());
        return IsTaken(packet, UdpChecksum::Trusted);
    };
    EXPECT_TRUE(isTaken("45 00 0021 1234 4000 40 11 1932 C0A84714 C0A84701"));
    EXPECT_FALSE(isTaken("65 00 0021 1234 4000 40 11 F931 C0A84714 C0A84701")); // version 6
    EXPECT_FALSE(isTaken("44 00 0021 1234 4000 40 11 1A32 C0A84714 C0A84701")); // a header of 16 bytes
    EXPECT_FALSE(isTaken("45 00 0021 1234 4000 40 06 193D C0A84714 C0A84701")); // TCP
    EXPECT_FALSE(isTaken("45 00 0021 1234 2000 40 11 3932 C0A84714 C0A84701")); // more fragments
    EXPECT_FALSE(isTaken("45 00 0021 1234 0001 40 11 5931 C0A84714 C0A84701")); // a later fragment
    EXPECT_FALSE(isTaken("45 00 001B 1234 4000 40 11 1938 C0A84714 C0A84701")); // no room for the UDP header
    EXPECT_FALSE(isTaken("45 00 0020 1234 4000 40 11 1933 C0A84714 C0A84701")); // UDP is longer than IP
}

} // namespace
} // namespace transport
