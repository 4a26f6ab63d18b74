#include "VxCamera/wire/gvcp/AckHeader.h"

#include "support/Bytes.h"

#include <gtest/gtest.h>

#include <array>

namespace {

using namespace gvcp;
using bytes::ErrorOf;
using bytes::First;
using bytes::FromHex;

const auto kWritten = FromHex("00 00 00 83 00 04 00 02 | 00 00 00 01");

TEST(AckHeaderTest, ReadsEveryField)
{
    const auto packet = ParseAck(kWritten);

    ASSERT_TRUE(packet);
    EXPECT_EQ(packet->header.status, Status::Success);
    EXPECT_EQ(packet->header.ack, Ack::WriteReg);
    EXPECT_EQ(packet->header.payloadBytes, 4);
    EXPECT_EQ(packet->header.ackId, 2);
    EXPECT_EQ(bytes::Copy(packet->payload), FromHex("00 00 00 01"));
}

TEST(AckHeaderTest, ReadsARefusal)
{
    const auto packet = ParseAck(FromHex("80 06 00 83 00 04 00 02 00 00 00 00"));

    ASSERT_TRUE(packet);
    EXPECT_EQ(packet->header.status, Status::AccessDenied);
}

TEST(AckHeaderTest, IgnoresBytesAfterThePayload)
{
    const auto packet = ParseAck(bytes::Join(kWritten, FromHex("AA BB")));

    ASSERT_TRUE(packet);
    EXPECT_EQ(packet->payload.size(), 4u);
}

TEST(AckHeaderTest, RejectsEveryShorterLengthOfAGoodAnswer)
{
    for (std::size_t length = 0; length < kWritten.size(); ++length)
        EXPECT_EQ(ErrorOf(ParseAck(First(kWritten, length))), VxError::Truncated) << length;
}

TEST(AckHeaderTest, AcceptsARefusalWithAShortPayload)
{
    const auto datagram = FromHex("80 03 00 85 00 08 12 34 | AB CD");

    const auto packet = ParseAck(datagram);

    ASSERT_TRUE(packet);
    EXPECT_EQ(packet->header.status, Status::InvalidAddress);
    EXPECT_EQ(packet->header.payloadBytes, 8);
    EXPECT_EQ(bytes::Copy(packet->payload), FromHex("AB CD"));
}

TEST(AckHeaderTest, RejectsARefusalWithoutAWholeHeader)
{
    EXPECT_EQ(ErrorOf(ParseAck(FromHex("80 03 00 85 00 00 12"))), VxError::Truncated);
}

TEST(AckHeaderTest, WritesAnEmptyAnswer)
{
    const auto datagram = MakeEmptyAck(Status::NotImplemented, Ack::Action, 0x0102);

    EXPECT_EQ(bytes::Copy(datagram.Bytes()), FromHex("80 01 01 01 00 00 01 02"));
}

TEST(AckHeaderTest, ReadsBackWhatItWrites)
{
    bytes::Random random;
    for (int i = 0; i < 1000; ++i) {
        const AckHeader written{.status = random.Number<Status>(),
                                .ack = random.Number<Ack>(),
                                .payloadBytes = 0,
                                .ackId = random.Number<std::uint16_t>()};
        std::array<std::byte, kHeaderBytes> memory{};
        VxByteWriter out(memory);

        WriteAckHeader(out, written);

        ASSERT_TRUE(out.Ok());
        const auto read = ParseAck(memory);
        ASSERT_TRUE(read);
        EXPECT_EQ(read->header, written);
    }
}

} // namespace
