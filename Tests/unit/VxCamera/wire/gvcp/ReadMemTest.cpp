#include "VxCamera/wire/gvcp/ReadMem.h"

#include "VxCamera/wire/gvcp/AckHeader.h"
#include "VxCamera/wire/gvcp/CommandHeader.h"

#include "support/Bytes.h"

#include <gtest/gtest.h>

namespace {

using namespace gvcp;
using bytes::ErrorOf;
using bytes::First;
using bytes::FromHex;

const auto kUrl = FromHex("00 00 02 00 00 00 02 00");

TEST(ReadMemTest, ReadsAddressAndCount)
{
    const auto command = ParseReadMemCommand(FromHex("12 34 56 78 00 00 02 00"));

    ASSERT_TRUE(command);
    EXPECT_EQ(command->address, 0x12345678u);
    EXPECT_EQ(command->count, 512);
}

TEST(ReadMemTest, LeavesJudgingAddressAndCountToTheDevice)
{
    const auto command = ParseReadMemCommand(FromHex("00 00 00 01 00 00 FF FF"));

    ASSERT_TRUE(command);
    EXPECT_EQ(command->address, 1u);
    EXPECT_EQ(command->count, 0xFFFF);
}

TEST(ReadMemTest, RejectsEveryShorterLength)
{
    for (std::size_t length = 0; length < kUrl.size(); ++length)
        EXPECT_EQ(ErrorOf(ParseReadMemCommand(First(kUrl, length))), VxError::Truncated) << length;
}

TEST(ReadMemTest, ReadsTheData)
{
    const auto payload = FromHex("00 00 02 00 | 4C 6F 63 61");

    const auto ack = ParseReadMemAck(payload);

    ASSERT_TRUE(ack);
    EXPECT_EQ(ack->address, 0x200u);
    EXPECT_EQ(bytes::Copy(ack->data), FromHex("4C 6F 63 61"));
}

TEST(ReadMemTest, RejectsAnAnswerWithoutAWholeAddress)
{
    const auto address = FromHex("00 00 02 00");
    for (std::size_t length = 0; length < address.size(); ++length)
        EXPECT_EQ(ErrorOf(ParseReadMemAck(First(address, length))), VxError::Truncated) << length;
}

TEST(ReadMemTest, WritesTheGoldenBytes)
{
    const auto command = MakeReadMemCommand(3, {.address = 0x200, .count = 512});
    const auto data = FromHex("01 02 03 04");
    const auto ack = MakeReadMemAck(3, {.address = 0x200, .data = data});

    ASSERT_TRUE(command);
    EXPECT_EQ(bytes::Copy(command->Bytes()), FromHex("42 01 00 84 00 08 00 03 00 00 02 00 00 00 02 00"));
    ASSERT_TRUE(ack);
    EXPECT_EQ(bytes::Copy(ack->Bytes()), FromHex("00 00 00 85 00 08 00 03 00 00 02 00 01 02 03 04"));
}

TEST(ReadMemTest, RefusesToAskForNoneOrTooMany)
{
    EXPECT_EQ(ErrorOf(MakeReadMemCommand(1, {.address = 0, .count = 0})), VxError::InvalidParameter);
    EXPECT_TRUE(MakeReadMemCommand(1, {.address = 0, .count = 536}));
    EXPECT_EQ(ErrorOf(MakeReadMemCommand(1, {.address = 0, .count = 537})), VxError::InvalidParameter);
}

TEST(ReadMemTest, RefusesToAnswerWithTooMany)
{
    const bytes::Vector most(536);
    const bytes::Vector tooMany(537);

    const auto ack = MakeReadMemAck(1, {.address = 0, .data = most});

    ASSERT_TRUE(ack);
    EXPECT_EQ(ack->Bytes().size(), kMaxDatagramBytes);
    EXPECT_EQ(ErrorOf(MakeReadMemAck(1, {.address = 0, .data = tooMany})), VxError::InvalidParameter);
}

TEST(ReadMemTest, ReadsBackWhatItWrites)
{
    bytes::Random random;
    for (int i = 0; i < 200; ++i) {
        const ReadMemCommand written{.address = random.Number<std::uint32_t>(),
                                     .count = static_cast<std::uint16_t>(random.UpTo(535) + 1)};
        const auto data = random.Bytes(random.UpTo(536));

        const auto commandDatagram = MakeReadMemCommand(1, written);
        const auto ackDatagram = MakeReadMemAck(1, {.address = written.address, .data = data});

        ASSERT_TRUE(commandDatagram);
        ASSERT_TRUE(ackDatagram);
        const auto command = ParseCommand(commandDatagram->Bytes());
        ASSERT_TRUE(command);
        const auto read = ParseReadMemCommand(command->payload);
        ASSERT_TRUE(read);
        EXPECT_EQ(*read, written);
        const auto ack = ParseAck(ackDatagram->Bytes());
        ASSERT_TRUE(ack);
        const auto readAck = ParseReadMemAck(ack->payload);
        ASSERT_TRUE(readAck);
        EXPECT_EQ(readAck->address, written.address);
        EXPECT_EQ(bytes::Copy(readAck->data), data);
    }
}

} // namespace
