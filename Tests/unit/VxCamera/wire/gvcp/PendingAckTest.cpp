#include "VxCamera/wire/gvcp/PendingAck.h"

#include "VxCamera/wire/gvcp/AckHeader.h"

#include "support/Bytes.h"

#include <gtest/gtest.h>

namespace {

using namespace gvcp;
using bytes::ErrorOf;
using bytes::First;
using bytes::FromHex;
using std::chrono::milliseconds;

TEST(PendingAckTest, ReadsTheTimeInMilliseconds)
{
    const auto ack = ParsePendingAck(FromHex("00 00 03 E8"));

    ASSERT_TRUE(ack);
    EXPECT_EQ(ack->timeToCompletion, milliseconds(1000));
}

TEST(PendingAckTest, RejectsEveryShorterLength)
{
    const auto payload = FromHex("00 00 03 E8");
    for (std::size_t length = 0; length < payload.size(); ++length)
        EXPECT_EQ(ErrorOf(ParsePendingAck(First(payload, length))), VxError::Truncated) << length;
}

TEST(PendingAckTest, WritesTheGoldenBytes)
{
    EXPECT_EQ(bytes::Copy(MakePendingAck(4, {.timeToCompletion = milliseconds(1000)}).Bytes()),
              FromHex("00 00 00 89 00 04 00 04 00 00 03 E8"));
}

TEST(PendingAckTest, ClampsTheTime)
{
    EXPECT_EQ(bytes::Copy(MakePendingAck(4, {.timeToCompletion = milliseconds(65536)}).Bytes()),
              FromHex("00 00 00 89 00 04 00 04 00 00 FF FF"));
    EXPECT_EQ(bytes::Copy(MakePendingAck(4, {.timeToCompletion = milliseconds(-1)}).Bytes()),
              FromHex("00 00 00 89 00 04 00 04 00 00 00 00"));
}

TEST(PendingAckTest, ReadsBackWhatItWrites)
{
    bytes::Random random;
    for (int i = 0; i < 200; ++i) {
        const PendingAck written{.timeToCompletion = milliseconds(random.UpTo(65535))};

        const auto datagram = MakePendingAck(1, written);

        const auto packet = ParseAck(datagram.Bytes());
        ASSERT_TRUE(packet);
        const auto read = ParsePendingAck(packet->payload);
        ASSERT_TRUE(read);
        EXPECT_EQ(*read, written);
    }
}

} // namespace
