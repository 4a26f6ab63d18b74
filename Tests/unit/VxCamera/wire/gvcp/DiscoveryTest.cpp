#include "VxCamera/wire/gvcp/Discovery.h"

#include "VxCamera/wire/gvcp/AckHeader.h"

#include "support/Bytes.h"

#include <gtest/gtest.h>

namespace {

using namespace gvcp;
using bytes::ErrorOf;
using bytes::First;
using bytes::FromHex;

// Text fields in hexadecimal digits, filled with NUL.
const auto kAck = FromHex("00 02 00 01 | 80 00 00 01 | 00 00 | 00 11 22 AA BB CC"
                          "| 00 00 00 07 | 00 00 00 05 | 00 00 00 00 00 00 00 00 00 00 00 00"
                          "| C0 A8 01 14 | 00 00 00 00 00 00 00 00 00 00 00 00"
                          "| FF FF FF 00 | 00 00 00 00 00 00 00 00 00 00 00 00"
                          "| C0 A8 01 01"
                          // "Maker"
                          "| 4D 61 6B 65 72 00 00 00 00 00 00 00 00 00 00 00"
                          "  00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00"
                          // "Model"
                          "| 4D 6F 64 65 6C 00 00 00 00 00 00 00 00 00 00 00"
                          "  00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00"
                          // "1.0"
                          "| 31 2E 30 00 00 00 00 00 00 00 00 00 00 00 00 00"
                          "  00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00"
                          // "info"
                          "| 69 6E 66 6F 00 00 00 00 00 00 00 00 00 00 00 00"
                          "  00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00"
                          "  00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00"
                          // "0123456789abcdef": fills its field, no NUL
                          "| 30 31 32 33 34 35 36 37 38 39 61 62 63 64 65 66"
                          // "left"
                          "| 6C 65 66 74 00 00 00 00 00 00 00 00 00 00 00 00");

TEST(DiscoveryTest, CommandHasNoPayload)
{
    const auto datagram = MakeDiscoveryCommand(0xFFFF, DiscoveryAnswer::BroadcastAllowed);

    EXPECT_EQ(bytes::Copy(datagram.Bytes()), FromHex("42 11 00 02 00 00 FF FF"));
}

TEST(DiscoveryTest, CommandCanAskForAUnicastAnswer)
{
    const auto datagram = MakeDiscoveryCommand(1, DiscoveryAnswer::Unicast);

    EXPECT_EQ(bytes::Copy(datagram.Bytes()), FromHex("42 01 00 02 00 00 00 01"));
}

TEST(DiscoveryTest, ReadsVersionAndMode)
{
    const auto ack = ParseDiscoveryAck(kAck);

    ASSERT_TRUE(ack);
    EXPECT_EQ(ack->majorVersion, 2);
    EXPECT_EQ(ack->minorVersion, 1);
    EXPECT_EQ(ack->deviceMode, 0x80000001u);
}

TEST(DiscoveryTest, ReadsTheMacFromOffset10)
{
    const auto ack = ParseDiscoveryAck(kAck);

    ASSERT_TRUE(ack);
    EXPECT_EQ(ack->mac, (MacAddress{0x00, 0x11, 0x22, 0xAA, 0xBB, 0xCC}));
}

TEST(DiscoveryTest, ReadsTheNetworkSetUp)
{
    const auto ack = ParseDiscoveryAck(kAck);

    ASSERT_TRUE(ack);
    EXPECT_EQ(ack->supportedIpConfiguration, 7u);
    EXPECT_EQ(ack->currentIpConfiguration, 5u);
    EXPECT_EQ(ack->ipAddress, 0xC0A80114u);
    EXPECT_EQ(ack->subnetMask, 0xFFFFFF00u);
    EXPECT_EQ(ack->defaultGateway, 0xC0A80101u);
}

TEST(DiscoveryTest, ReadsTheTexts)
{
    const auto ack = ParseDiscoveryAck(kAck);

    ASSERT_TRUE(ack);
    EXPECT_EQ(ack->manufacturerName, "Maker");
    EXPECT_EQ(ack->modelName, "Model");
    EXPECT_EQ(ack->deviceVersion, "1.0");
    EXPECT_EQ(ack->manufacturerInfo, "info");
    EXPECT_EQ(ack->userDefinedName, "left");
}

TEST(DiscoveryTest, ReadsATextThatFillsItsField)
{
    const auto ack = ParseDiscoveryAck(kAck);

    ASSERT_TRUE(ack);
    EXPECT_EQ(ack->serialNumber, "0123456789abcdef");
}

TEST(DiscoveryTest, RejectsEveryShorterLength)
{
    ASSERT_EQ(kAck.size(), kDiscoveryAckBytes);
    for (std::size_t length = 0; length < kAck.size(); ++length)
        EXPECT_EQ(ErrorOf(ParseDiscoveryAck(First(kAck, length))), VxError::Truncated) << length;
}

TEST(DiscoveryTest, IgnoresBytesAfterTheLastField)
{
    const auto ack = ParseDiscoveryAck(bytes::Join(kAck, FromHex("FF FF")));

    ASSERT_TRUE(ack);
    EXPECT_EQ(ack->userDefinedName, "left");
}

TEST(DiscoveryTest, WritesTheGoldenBytes)
{
    const DiscoveryAck ack{.majorVersion = 2,
                           .minorVersion = 1,
                           .deviceMode = 0x80000001,
                           .mac = {0x00, 0x11, 0x22, 0xAA, 0xBB, 0xCC},
                           .supportedIpConfiguration = 7,
                           .currentIpConfiguration = 5,
                           .ipAddress = 0xC0A80114,
                           .subnetMask = 0xFFFFFF00,
                           .defaultGateway = 0xC0A80101,
                           .manufacturerName = "Maker",
                           .modelName = "Model",
                           .deviceVersion = "1.0",
                           .manufacturerInfo = "info",
                           .serialNumber = "0123456789abcdef is too long",
                           .userDefinedName = "left"};

    const auto datagram = MakeDiscoveryAck(0xFFFF, ack);

    EXPECT_EQ(bytes::Copy(datagram.Bytes()), bytes::Join(FromHex("00 00 00 03 00 F8 FF FF"), kAck));
}

TEST(DiscoveryTest, ReadsBackWhatItWrites)
{
    bytes::Random random;
    const auto text = [&random](std::size_t longest) {
        std::string result(random.UpTo(longest), '\0');
        for (char& c : result)
            c = static_cast<char>('!' + random.UpTo('~' - '!')); // printable
        return result;
    };
    for (int i = 0; i < 200; ++i) {
        DiscoveryAck written{.majorVersion = random.Number<std::uint16_t>(),
                             .minorVersion = random.Number<std::uint16_t>(),
                             .deviceMode = random.Number<std::uint32_t>(),
                             .mac = {},
                             .supportedIpConfiguration = random.Number<std::uint32_t>(),
                             .currentIpConfiguration = random.Number<std::uint32_t>(),
                             .ipAddress = random.Number<std::uint32_t>(),
                             .subnetMask = random.Number<std::uint32_t>(),
                             .defaultGateway = random.Number<std::uint32_t>(),
                             .manufacturerName = text(32),
                             .modelName = text(32),
                             .deviceVersion = text(32),
                             .manufacturerInfo = text(48),
                             .serialNumber = text(16),
                             .userDefinedName = text(16)};
        for (std::uint8_t& part : written.mac)
            part = random.Number<std::uint8_t>();

        const auto datagram = MakeDiscoveryAck(1, written);

        const auto packet = ParseAck(datagram.Bytes());
        ASSERT_TRUE(packet);
        const auto read = ParseDiscoveryAck(packet->payload);
        ASSERT_TRUE(read);
        EXPECT_EQ(*read, written);
    }
}

} // namespace
