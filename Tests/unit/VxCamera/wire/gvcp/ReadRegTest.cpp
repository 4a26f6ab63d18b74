#include "VxCamera/wire/gvcp/ReadReg.h"

#include "VxCamera/wire/gvcp/AckHeader.h"
#include "VxCamera/wire/gvcp/CommandHeader.h"

#include "support/Bytes.h"

#include <gtest/gtest.h>

namespace {

using namespace gvcp;
using bytes::ErrorOf;
using bytes::First;
using bytes::FromHex;
using Words = std::vector<std::uint32_t>;

TEST(ReadRegTest, ReadsOneAddress)
{
    const auto command = ParseReadRegCommand(FromHex("00 00 0A 00"));

    ASSERT_TRUE(command);
    EXPECT_EQ(command->addresses, Words{0x0A00});
}

TEST(ReadRegTest, ReadsSeveralAddressesInTheirOrder)
{
    const auto command = ParseReadRegCommand(FromHex("00 00 0A 00 | 12 34 56 78 | 00 00 00 04"));

    ASSERT_TRUE(command);
    EXPECT_EQ(command->addresses, (Words{0x0A00, 0x12345678, 4}));
}

TEST(ReadRegTest, RejectsEveryLengthBelowOneAddress)
{
    const auto payload = FromHex("00 00 0A 00");
    for (std::size_t length = 0; length < payload.size(); ++length) {
        EXPECT_EQ(ErrorOf(ParseReadRegCommand(First(payload, length))), VxError::Truncated) << length;
        EXPECT_EQ(ErrorOf(ParseReadRegAck(First(payload, length))), VxError::Truncated) << length;
    }
}

TEST(ReadRegTest, RejectsACutLastWord)
{
    const auto payload = FromHex("00 00 0A 00 | 00 00 0A");

    EXPECT_EQ(ErrorOf(ParseReadRegCommand(payload)), VxError::InvalidData);
    EXPECT_EQ(ErrorOf(ParseReadRegAck(payload)), VxError::InvalidData);
}

TEST(ReadRegTest, TakesAsManyAsADatagramHolds)
{
    const bytes::Vector most(kMaxReadRegisters * 4);
    const bytes::Vector tooMany((kMaxReadRegisters + 1) * 4);

    EXPECT_TRUE(ParseReadRegCommand(most));
    EXPECT_EQ(ErrorOf(ParseReadRegCommand(tooMany)), VxError::InvalidData);
    EXPECT_TRUE(ParseReadRegAck(most));
    EXPECT_EQ(ErrorOf(ParseReadRegAck(tooMany)), VxError::InvalidData);
}

TEST(ReadRegTest, ReadsValues)
{
    const auto ack = ParseReadRegAck(FromHex("00 00 00 02 | FF FE FD FC"));

    ASSERT_TRUE(ack);
    EXPECT_EQ(ack->values, (Words{2, 0xFFFEFDFC}));
}

TEST(ReadRegTest, WritesTheGoldenBytes)
{
    const auto command = MakeReadRegCommand(1, Words{0x0A00});
    const auto ack = MakeReadRegAck(1, Words{0});

    ASSERT_TRUE(command);
    EXPECT_EQ(bytes::Copy(command->Bytes()), FromHex("42 01 00 80 00 04 00 01 00 00 0A 00"));
    ASSERT_TRUE(ack);
    EXPECT_EQ(bytes::Copy(ack->Bytes()), FromHex("00 00 00 81 00 04 00 01 00 00 00 00"));
}

TEST(ReadRegTest, RefusesToWriteNoneOrTooMany)
{
    const Words none;
    const Words tooMany(kMaxReadRegisters + 1);

    EXPECT_EQ(ErrorOf(MakeReadRegCommand(1, none)), VxError::InvalidParameter);
    EXPECT_EQ(ErrorOf(MakeReadRegCommand(1, tooMany)), VxError::InvalidParameter);
    EXPECT_EQ(ErrorOf(MakeReadRegAck(1, none)), VxError::InvalidParameter);
    EXPECT_EQ(ErrorOf(MakeReadRegAck(1, tooMany)), VxError::InvalidParameter);
}

TEST(ReadRegTest, ReadsBackWhatItWrites)
{
    bytes::Random random;
    for (int i = 0; i < 200; ++i) {
        Words written(random.UpTo(kMaxReadRegisters - 1) + 1);
        for (std::uint32_t& word : written)
            word = random.Number<std::uint32_t>();

        const auto commandDatagram = MakeReadRegCommand(1, written);
        const auto ackDatagram = MakeReadRegAck(1, written);

        ASSERT_TRUE(commandDatagram);
        ASSERT_TRUE(ackDatagram);
        const auto command = ParseCommand(commandDatagram->Bytes());
        const auto ack = ParseAck(ackDatagram->Bytes());
        ASSERT_TRUE(command);
        ASSERT_TRUE(ack);
        const auto addresses = ParseReadRegCommand(command->payload);
        const auto values = ParseReadRegAck(ack->payload);
        ASSERT_TRUE(addresses);
        ASSERT_TRUE(values);
        EXPECT_EQ(addresses->addresses, written);
        EXPECT_EQ(values->values, written);
    }
}

} // namespace
