#include "VxCamera/wire/gvcp/WriteMem.h"

#include "VxCamera/wire/gvcp/AckHeader.h"
#include "VxCamera/wire/gvcp/CommandHeader.h"

#include "support/Bytes.h"

#include <gtest/gtest.h>

namespace {

using namespace gvcp;
using bytes::ErrorOf;
using bytes::First;
using bytes::FromHex;

// "cam-left" into the user defined name.
const auto kName = FromHex("63 61 6D 2D 6C 65 66 74 00 00 00 00 00 00 00 00");

TEST(WriteMemTest, ReadsAddressAndData)
{
    const auto payload = bytes::Join(FromHex("00 00 00 E8"), kName);

    const auto command = ParseWriteMemCommand(payload);

    ASSERT_TRUE(command);
    EXPECT_EQ(command->address, 0xE8u);
    EXPECT_EQ(bytes::Copy(command->data), kName);
}

TEST(WriteMemTest, RejectsEveryLengthWithoutData)
{
    const auto address = FromHex("00 00 00 E8");
    for (std::size_t length = 0; length <= address.size(); ++length)
        EXPECT_EQ(ErrorOf(ParseWriteMemCommand(First(address, length))), VxError::Truncated) << length;
}

TEST(WriteMemTest, ReadsTheIndexOfTheAnswer)
{
    const auto ack = ParseWriteMemAck(FromHex("00 00 02 10"));

    ASSERT_TRUE(ack);
    EXPECT_EQ(ack->index, 528);
}

TEST(WriteMemTest, RejectsEveryShorterLengthOfTheAnswer)
{
    const auto payload = FromHex("00 00 00 10");
    for (std::size_t length = 0; length < payload.size(); ++length)
        EXPECT_EQ(ErrorOf(ParseWriteMemAck(First(payload, length))), VxError::Truncated) << length;
}

TEST(WriteMemTest, WritesTheGoldenBytes)
{
    const auto command = MakeWriteMemCommand(4, {.address = 0xE8, .data = kName});

    ASSERT_TRUE(command);
    EXPECT_EQ(bytes::Copy(command->Bytes()),
              FromHex("42 01 00 86 00 14 00 04 00 00 00 E8 63 61 6D 2D 6C 65 66 74 00 00 00 00 00 00 00 00"));
    EXPECT_EQ(bytes::Copy(MakeWriteMemAck(Status::Success, 4, {.index = 16}).Bytes()),
              FromHex("00 00 00 87 00 04 00 04 00 00 00 10"));
}

TEST(WriteMemTest, RefusesToWriteNoneOrTooMany)
{
    const bytes::Vector most(536);
    const bytes::Vector tooMany(537);

    EXPECT_EQ(ErrorOf(MakeWriteMemCommand(1, {.address = 0, .data = {}})), VxError::InvalidParameter);
    EXPECT_TRUE(MakeWriteMemCommand(1, {.address = 0, .data = most}));
    EXPECT_EQ(ErrorOf(MakeWriteMemCommand(1, {.address = 0, .data = tooMany})), VxError::InvalidParameter);
}

TEST(WriteMemTest, ReadsBackWhatItWrites)
{
    bytes::Random random;
    for (int i = 0; i < 200; ++i) {
        const auto address = random.Number<std::uint32_t>();
        const auto data = random.Bytes(random.UpTo(535) + 1);
        const WriteMemAck writtenAck{.index = random.Number<std::uint16_t>()};

        const auto commandDatagram = MakeWriteMemCommand(1, {.address = address, .data = data});
        const auto ackDatagram = MakeWriteMemAck(Status::Success, 1, writtenAck);

        ASSERT_TRUE(commandDatagram);
        const auto command = ParseCommand(commandDatagram->Bytes());
        ASSERT_TRUE(command);
        const auto read = ParseWriteMemCommand(command->payload);
        ASSERT_TRUE(read);
        EXPECT_EQ(read->address, address);
        EXPECT_EQ(bytes::Copy(read->data), data);
        const auto ack = ParseAck(ackDatagram.Bytes());
        ASSERT_TRUE(ack);
        const auto readAck = ParseWriteMemAck(ack->payload);
        ASSERT_TRUE(readAck);
        EXPECT_EQ(*readAck, writtenAck);
    }
}

} // namespace
