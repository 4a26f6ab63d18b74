#include "VxCamera/wire/gvcp/PacketResend.h"

#include "support/Bytes.h"

#include <gtest/gtest.h>

namespace {

using namespace gvcp;
using bytes::ErrorOf;
using bytes::First;
using bytes::FromHex;

const auto kStandard = FromHex("42 00 00 40 00 0C 00 05 00 00 12 34 00 00 00 07 00 00 00 09");
const auto kExtended = FromHex("42 10 00 40 00 14 00 06 00 00 00 00 00 00 00 07 00 00 00 09"
                               "00 00 00 01 00 00 12 34");

VxExpected<PacketResendCommand> Parse(std::span<const std::byte> datagram)
{
    const auto packet = ParseCommand(datagram);
    if (!packet)
        return packet.Error();
    return ParsePacketResendCommand(*packet);
}

TEST(PacketResendTest, ReadsStandardIds)
{
    const auto command = Parse(kStandard);

    ASSERT_TRUE(command);
    EXPECT_EQ(command->idWidth, IdWidth::Standard);
    EXPECT_EQ(command->channel, 0);
    EXPECT_EQ(command->blockId, 0x1234u);
    EXPECT_EQ(command->firstPacketId, 7u);
    EXPECT_EQ(command->lastPacketId, 9u);
}

TEST(PacketResendTest, ReadsExtendedIds)
{
    const auto command = Parse(kExtended);

    ASSERT_TRUE(command);
    EXPECT_EQ(command->idWidth, IdWidth::Extended);
    EXPECT_EQ(command->channel, 0);
    EXPECT_EQ(command->blockId, 0x100001234u);
    EXPECT_EQ(command->firstPacketId, 7u);
    EXPECT_EQ(command->lastPacketId, 9u);
}

TEST(PacketResendTest, ReadsTheChannel)
{
    const auto command = Parse(FromHex("42 00 00 40 00 0C 00 05 01 02 12 34 00 00 00 07 00 00 00 09"));

    ASSERT_TRUE(command);
    EXPECT_EQ(command->channel, 0x0102);
}

TEST(PacketResendTest, StandardPacketIdsHave24Bits)
{
    const auto command = Parse(FromHex("42 00 00 40 00 0C 00 05 00 00 12 34 FF 00 00 07 FF FF FF FF"));

    ASSERT_TRUE(command);
    EXPECT_EQ(command->firstPacketId, 7u);
    EXPECT_EQ(command->lastPacketId, 0xFFFFFFu);
}

TEST(PacketResendTest, RejectsEveryShorterLength)
{
    for (const auto& datagram : {kStandard, kExtended}) {
        const auto packet = ParseCommand(datagram);
        ASSERT_TRUE(packet);
        for (std::size_t length = 0; length < packet->payload.size(); ++length) {
            const CommandPacket cut{.header = packet->header, .payload = First(packet->payload, length)};
            EXPECT_EQ(ErrorOf(ParsePacketResendCommand(cut)), VxError::Truncated) << length;
        }
    }
}

TEST(PacketResendTest, WritesTheGoldenBytes)
{
    const PacketResendCommand standard{
        .idWidth = IdWidth::Standard, .channel = 0, .blockId = 0x1234, .firstPacketId = 7, .lastPacketId = 9};
    const PacketResendCommand extended{.idWidth = IdWidth::Extended,
                                       .channel = 0,
                                       .blockId = 0x100001234,
                                       .firstPacketId = 7,
                                       .lastPacketId = 9};

    EXPECT_EQ(bytes::Copy(MakePacketResendCommand(5, standard).Bytes()), kStandard);
    EXPECT_EQ(bytes::Copy(MakePacketResendCommand(6, extended).Bytes()), kExtended);
}

TEST(PacketResendTest, ReadsBackWhatItWrites)
{
    bytes::Random random;
    for (int i = 0; i < 500; ++i) {
        const bool isExtended = i % 2 != 0;
        PacketResendCommand written{.idWidth = isExtended ? IdWidth::Extended : IdWidth::Standard,
                                    .channel = random.Number<std::uint16_t>(),
                                    .blockId = random.Number<std::uint64_t>(),
                                    .firstPacketId = random.Number<std::uint32_t>(),
                                    .lastPacketId = random.Number<std::uint32_t>()};
        if (!isExtended) {
            written.blockId &= 0xFFFF;
            written.firstPacketId &= 0xFFFFFF;
            written.lastPacketId &= 0xFFFFFF;
        }

        const auto read = Parse(MakePacketResendCommand(1, written).Bytes());

        ASSERT_TRUE(read);
        EXPECT_EQ(*read, written);
    }
}

} // namespace
