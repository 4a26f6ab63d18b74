#include "VxCamera/wire/gvcp/ForceIp.h"

#include "VxCamera/wire/gvcp/CommandHeader.h"

#include "support/Bytes.h"

#include <gtest/gtest.h>

namespace {

using namespace gvcp;
using bytes::ErrorOf;
using bytes::First;
using bytes::FromHex;

const auto kPayload = FromHex("00 00 00 11 22 33 44 55 | 00 00 00 00 00 00 00 00 00 00 00 00 | C0 A8 01 14"
                              "| 00 00 00 00 00 00 00 00 00 00 00 00 | FF FF FF 00"
                              "| 00 00 00 00 00 00 00 00 00 00 00 00 | C0 A8 01 01");
const ForceIpCommand kCommand{.mac = {0x00, 0x11, 0x22, 0x33, 0x44, 0x55},
                              .ipAddress = 0xC0A80114,
                              .subnetMask = 0xFFFFFF00,
                              .defaultGateway = 0xC0A80101};

TEST(ForceIpTest, ReadsEveryField)
{
    const auto command = ParseForceIpCommand(kPayload);

    ASSERT_TRUE(command);
    EXPECT_EQ(command->mac, kCommand.mac);
    EXPECT_EQ(command->ipAddress, kCommand.ipAddress);
    EXPECT_EQ(command->subnetMask, kCommand.subnetMask);
    EXPECT_EQ(command->defaultGateway, kCommand.defaultGateway);
}

TEST(ForceIpTest, RejectsEveryShorterLength)
{
    ASSERT_EQ(kPayload.size(), 56u);
    for (std::size_t length = 0; length < kPayload.size(); ++length)
        EXPECT_EQ(ErrorOf(ParseForceIpCommand(First(kPayload, length))), VxError::Truncated) << length;
}

TEST(ForceIpTest, WritesTheGoldenBytes)
{
    const auto datagram = MakeForceIpCommand(7, DiscoveryAnswer::BroadcastAllowed, kCommand);

    EXPECT_EQ(bytes::Copy(datagram.Bytes()), bytes::Join(FromHex("42 11 00 04 00 38 00 07"), kPayload));
}

TEST(ForceIpTest, CanAskForAUnicastAnswer)
{
    const auto datagram = MakeForceIpCommand(7, DiscoveryAnswer::Unicast, kCommand);

    EXPECT_EQ(bytes::Copy(First(datagram.Bytes(), 2)), FromHex("42 01"));
}

TEST(ForceIpTest, ReadsBackWhatItWrites)
{
    bytes::Random random;
    for (int i = 0; i < 200; ++i) {
        ForceIpCommand written{.mac = {},
                               .ipAddress = random.Number<std::uint32_t>(),
                               .subnetMask = random.Number<std::uint32_t>(),
                               .defaultGateway = random.Number<std::uint32_t>()};
        for (std::uint8_t& part : written.mac)
            part = random.Number<std::uint8_t>();

        const auto datagram = MakeForceIpCommand(1, DiscoveryAnswer::Unicast, written);

        const auto packet = ParseCommand(datagram.Bytes());
        ASSERT_TRUE(packet);
        const auto read = ParseForceIpCommand(packet->payload);
        ASSERT_TRUE(read);
        EXPECT_EQ(*read, written);
    }
}

} // namespace
