#include "VxCamera/wire/gvcp/CommandHeader.h"

#include "support/Bytes.h"

#include <gtest/gtest.h>

#include <array>

namespace {

using namespace gvcp;
using bytes::ErrorOf;
using bytes::First;
using bytes::FromHex;

const auto kReadCcp = FromHex("42 01 00 80 00 04 00 01 | 00 00 0A 00");

TEST(CommandHeaderTest, ReadsEveryField)
{
    const auto packet = ParseCommand(kReadCcp);

    ASSERT_TRUE(packet);
    EXPECT_EQ(packet->header.flags, kAckRequired);
    EXPECT_EQ(packet->header.command, Command::ReadReg);
    EXPECT_EQ(packet->header.payloadBytes, 4);
    EXPECT_EQ(packet->header.requestId, 1);
    EXPECT_EQ(bytes::Copy(packet->payload), FromHex("00 00 0A 00"));
}

TEST(CommandHeaderTest, KeepsFlagsAndCodesItDoesNotKnow)
{
    const auto packet = ParseCommand(FromHex("42 FF FE DC 00 00 BA 98"));

    ASSERT_TRUE(packet);
    EXPECT_EQ(packet->header.flags, 0xFF);
    EXPECT_EQ(packet->header.command, static_cast<Command>(0xFEDC));
    EXPECT_EQ(packet->header.requestId, 0xBA98);
}

TEST(CommandHeaderTest, IgnoresBytesAfterThePayload)
{
    const auto packet = ParseCommand(bytes::Join(kReadCcp, FromHex("AA BB")));

    ASSERT_TRUE(packet);
    EXPECT_EQ(packet->payload.size(), 4u);
}

TEST(CommandHeaderTest, RejectsEveryShorterLength)
{
    for (std::size_t length = 0; length < kReadCcp.size(); ++length)
        EXPECT_EQ(ErrorOf(ParseCommand(First(kReadCcp, length))), VxError::Truncated) << length;
}

TEST(CommandHeaderTest, RejectsAnotherKey)
{
    EXPECT_EQ(ErrorOf(ParseCommand(FromHex("43 01 00 80 00 00 00 01"))), VxError::InvalidData);
}

TEST(CommandHeaderTest, RejectsRequestIdZero)
{
    EXPECT_EQ(ErrorOf(ParseCommand(FromHex("42 01 00 80 00 00 00 00"))), VxError::InvalidData);
}

TEST(CommandHeaderTest, ReadsBackWhatItWrites)
{
    bytes::Random random;
    for (int i = 0; i < 1000; ++i) {
        const CommandHeader written{.flags = random.Number<std::uint8_t>(),
                                    .command = random.Number<Command>(),
                                    .payloadBytes = 0,
                                    .requestId = static_cast<std::uint16_t>(random.UpTo(0xFFFE) + 1)};
        std::array<std::byte, kHeaderBytes> memory{};
        VxByteWriter out(memory);

        WriteCommandHeader(out, written);

        ASSERT_TRUE(out.Ok());
        const auto read = ParseCommand(memory);
        ASSERT_TRUE(read);
        EXPECT_EQ(read->header, written);
    }
}

} // namespace
