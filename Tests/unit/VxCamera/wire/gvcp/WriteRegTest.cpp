#include "VxCamera/wire/gvcp/WriteReg.h"

#include "VxCamera/wire/gvcp/AckHeader.h"
#include "VxCamera/wire/gvcp/CommandHeader.h"

#include "support/Bytes.h"

#include <gtest/gtest.h>

namespace {

using namespace gvcp;
using bytes::ErrorOf;
using bytes::First;
using bytes::FromHex;
using Writes = std::vector<RegisterValue>;

const auto kTakeControl = FromHex("00 00 0A 00 00 00 00 02");

TEST(WriteRegTest, ReadsAddressAndValue)
{
    const auto command = ParseWriteRegCommand(kTakeControl);

    ASSERT_TRUE(command);
    EXPECT_EQ(command->writes, (Writes{{.address = 0x0A00, .value = 2}}));
}

TEST(WriteRegTest, ReadsSeveralWritesInTheirOrder)
{
    const auto command = ParseWriteRegCommand(bytes::Join(kTakeControl, FromHex("12 34 56 78 9A BC DE F0")));

    ASSERT_TRUE(command);
    EXPECT_EQ(command->writes,
              (Writes{{.address = 0x0A00, .value = 2}, {.address = 0x12345678, .value = 0x9ABCDEF0}}));
}

TEST(WriteRegTest, RejectsEveryShorterLength)
{
    for (std::size_t length = 0; length < kTakeControl.size(); ++length)
        EXPECT_EQ(ErrorOf(ParseWriteRegCommand(First(kTakeControl, length))), VxError::Truncated) << length;
}

TEST(WriteRegTest, RejectsACutLastWrite)
{
    const auto payload = bytes::Join(kTakeControl, FromHex("00 00 0A 00"));

    EXPECT_EQ(ErrorOf(ParseWriteRegCommand(payload)), VxError::InvalidData);
}

TEST(WriteRegTest, TakesAsManyAsADatagramHolds)
{
    EXPECT_TRUE(ParseWriteRegCommand(bytes::Vector(kMaxWriteRegisters * 8)));
    EXPECT_EQ(ErrorOf(ParseWriteRegCommand(bytes::Vector((kMaxWriteRegisters + 1) * 8))),
              VxError::InvalidData);
}

TEST(WriteRegTest, ReadsTheIndexOfTheAnswer)
{
    const auto ack = ParseWriteRegAck(FromHex("00 00 12 34"));

    ASSERT_TRUE(ack);
    EXPECT_EQ(ack->index, 0x1234);
}

TEST(WriteRegTest, RejectsEveryShorterLengthOfTheAnswer)
{
    const auto payload = FromHex("00 00 00 01");
    for (std::size_t length = 0; length < payload.size(); ++length)
        EXPECT_EQ(ErrorOf(ParseWriteRegAck(First(payload, length))), VxError::Truncated) << length;
}

TEST(WriteRegTest, WritesTheGoldenBytes)
{
    const auto command = MakeWriteRegCommand(2, Writes{{.address = 0x0A00, .value = 2}});

    ASSERT_TRUE(command);
    EXPECT_EQ(bytes::Copy(command->Bytes()), FromHex("42 01 00 82 00 08 00 02 00 00 0A 00 00 00 00 02"));
    EXPECT_EQ(bytes::Copy(MakeWriteRegAck(Status::Success, 2, {.index = 1}).Bytes()),
              FromHex("00 00 00 83 00 04 00 02 00 00 00 01"));
    EXPECT_EQ(bytes::Copy(MakeWriteRegAck(Status::AccessDenied, 2, {.index = 0}).Bytes()),
              FromHex("80 06 00 83 00 04 00 02 00 00 00 00"));
}

TEST(WriteRegTest, RefusesToWriteNoneOrTooMany)
{
    EXPECT_EQ(ErrorOf(MakeWriteRegCommand(1, Writes{})), VxError::InvalidParameter);
    EXPECT_EQ(ErrorOf(MakeWriteRegCommand(1, Writes(kMaxWriteRegisters + 1))), VxError::InvalidParameter);
}

TEST(WriteRegTest, ReadsBackWhatItWrites)
{
    bytes::Random random;
    for (int i = 0; i < 200; ++i) {
        Writes written(random.UpTo(kMaxWriteRegisters - 1) + 1);
        for (RegisterValue& write : written)
            write = {.address = random.Number<std::uint32_t>(), .value = random.Number<std::uint32_t>()};
        const WriteRegAck writtenAck{.index = random.Number<std::uint16_t>()};

        const auto commandDatagram = MakeWriteRegCommand(1, written);
        const auto ackDatagram = MakeWriteRegAck(Status::Success, 1, writtenAck);

        ASSERT_TRUE(commandDatagram);
        const auto command = ParseCommand(commandDatagram->Bytes());
        ASSERT_TRUE(command);
        const auto read = ParseWriteRegCommand(command->payload);
        ASSERT_TRUE(read);
        EXPECT_EQ(read->writes, written);
        const auto ack = ParseAck(ackDatagram.Bytes());
        ASSERT_TRUE(ack);
        const auto readAck = ParseWriteRegAck(ack->payload);
        ASSERT_TRUE(readAck);
        EXPECT_EQ(*readAck, writtenAck);
    }
}

} // namespace
