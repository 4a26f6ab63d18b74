#include "VxCamera/wire/gvsp/PacketHeader.h"

#include "support/Bytes.h"

#include <gtest/gtest.h>

#include <array>

namespace {

using namespace gvsp;
using bytes::ErrorOf;
using bytes::First;
using bytes::FromHex;

const auto kStandard = FromHex("00 00 12 34 03 00 00 01");
const auto kExtended = FromHex("00 00 00 00 81 00 00 00 00 00 00 00 00 00 12 34 00 00 00 00");

TEST(PacketHeaderTest, ReadsAStandardHeader)
{
    const auto packet = ParsePacket(kStandard);

    ASSERT_TRUE(packet);
    EXPECT_EQ(packet->header.status, Status::Success);
    EXPECT_EQ(packet->header.idMode, IdMode::Standard);
    EXPECT_EQ(packet->header.format, PacketFormat::Payload);
    EXPECT_EQ(packet->header.blockId, 0x1234u);
    EXPECT_EQ(packet->header.packetId, 1u);
    EXPECT_TRUE(packet->data.empty());
}

TEST(PacketHeaderTest, ReadsAnExtendedHeader)
{
    const auto packet = ParsePacket(kExtended);

    ASSERT_TRUE(packet);
    EXPECT_EQ(packet->header.status, Status::Success);
    EXPECT_EQ(packet->header.idMode, IdMode::Extended);
    EXPECT_EQ(packet->header.format, PacketFormat::Leader);
    EXPECT_EQ(packet->header.flags, 0);
    EXPECT_EQ(packet->header.blockId, 0x1234u);
    EXPECT_EQ(packet->header.packetId, 0u);
    EXPECT_TRUE(packet->data.empty());
}

TEST(PacketHeaderTest, StandardPacketIdsHave24Bits)
{
    const auto packet = ParsePacket(FromHex("00 00 FF FF 03 FE DC BA"));

    ASSERT_TRUE(packet);
    EXPECT_EQ(packet->header.blockId, 0xFFFFu);
    EXPECT_EQ(packet->header.packetId, 0xFEDCBAu);
}

TEST(PacketHeaderTest, ExtendedIdsHave64And32Bits)
{
    const auto packet = ParsePacket(FromHex("00 00 00 00 83 00 00 00 FE DC BA 98 76 54 32 10 89 AB CD EF"));

    ASSERT_TRUE(packet);
    EXPECT_EQ(packet->header.blockId, 0xFEDCBA9876543210u);
    EXPECT_EQ(packet->header.packetId, 0x89ABCDEFu);
}

TEST(PacketHeaderTest, ReadsFlagsAndPartCountOfAnExtendedLeader)
{
    const auto packet = ParsePacket(FromHex("01 00 00 03 81 00 00 1F 00 00 00 00 00 00 00 01 00 00 00 00"));

    ASSERT_TRUE(packet);
    EXPECT_EQ(packet->header.status, Status::PacketResend);
    EXPECT_EQ(packet->header.flags, kFlagIsResend | kFlagPreviousBlockDropped);
    EXPECT_EQ(packet->header.partCount, 31);
}

TEST(PacketHeaderTest, ReadsAnErrorStatus)
{
    const auto packet = ParsePacket(FromHex("80 0C 12 34 03 00 00 07"));

    ASSERT_TRUE(packet);
    EXPECT_EQ(packet->header.status, Status::PacketUnavailable);
}

TEST(PacketHeaderTest, DataAreAllBytesAfterTheHeader)
{
    const auto standard = bytes::Join(kStandard, FromHex("AA BB CC"));
    const auto extended = bytes::Join(kExtended, FromHex("DD EE"));

    const auto standardPacket = ParsePacket(standard);
    const auto extendedPacket = ParsePacket(extended);

    ASSERT_TRUE(standardPacket);
    EXPECT_EQ(bytes::Copy(standardPacket->data), FromHex("AA BB CC"));
    ASSERT_TRUE(extendedPacket);
    EXPECT_EQ(bytes::Copy(extendedPacket->data), FromHex("DD EE"));
}

TEST(PacketHeaderTest, RejectsEveryShorterLength)
{
    for (const auto& header : {kStandard, kExtended})
        for (std::size_t length = 0; length < header.size(); ++length)
            EXPECT_EQ(ErrorOf(ParsePacket(First(header, length))), VxError::Truncated) << length;
}

TEST(PacketHeaderTest, WritesTheGoldenBytes)
{
    std::array<std::byte, kStandardHeaderBytes + kExtendedHeaderBytes> memory{};
    VxByteWriter out(memory);

    WritePacketHeader(out, {.format = PacketFormat::Payload, .blockId = 0x1234, .packetId = 1});
    WritePacketHeader(out, {.idMode = IdMode::Extended, .format = PacketFormat::Leader, .blockId = 0x1234});

    EXPECT_TRUE(out.Ok());
    EXPECT_EQ(bytes::Copy(memory), bytes::Join(kStandard, kExtended));
}

TEST(PacketHeaderTest, ReadsBackWhatItWrites)
{
    bytes::Random random;
    for (int i = 0; i < 1000; ++i) {
        const bool isExtended = i % 2 != 0;
        PacketHeader written{.status = random.Number<Status>(),
                             .idMode = isExtended ? IdMode::Extended : IdMode::Standard,
                             .format = static_cast<PacketFormat>(random.UpTo(15)),
                             .blockId = random.Number<std::uint64_t>(),
                             .packetId = random.Number<std::uint32_t>()};
        if (isExtended) {
            written.flags = random.Number<std::uint16_t>();
            written.partCount = static_cast<std::uint8_t>(random.UpTo(31));
        } else {
            written.blockId &= 0xFFFF;
            written.packetId &= 0xFFFFFF;
        }
        std::array<std::byte, kExtendedHeaderBytes> memory{};
        VxByteWriter out(memory);

        WritePacketHeader(out, written);

        ASSERT_TRUE(out.Ok());
        ASSERT_EQ(out.Written().size(), HeaderBytes(written.idMode));
        const auto read = ParsePacket(out.Written());
        ASSERT_TRUE(read);
        EXPECT_EQ(read->header, written);
    }
}

} // namespace
