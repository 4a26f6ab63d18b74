#include "VxCamera/control/CommandExchange.h"

#include "support/Bytes.h"

#include <gtest/gtest.h>

namespace control {
namespace {

using namespace std::chrono_literals;
using State = CommandExchange::State;

constexpr transport::Ipv4Endpoint kCamera{transport::Ipv4Address(192, 168, 1, 20), 3956};
constexpr CommandSettings kSettings{300ms, 3};
const IVxClock::Time kStart{1h};

CommandExchange ReadRegisterWithId5()
{
    return {{kCamera, 5, gvcp::Ack::ReadReg}, kSettings, kStart, kStart + 60s};
}

const auto kAnswer = bytes::FromHex("0000 0081 0004 0005 00000002");

TEST(CommandExchangeTest, AcceptsTheAnswerOfTheCamera)
{
    auto exchange = ReadRegisterWithId5();

    EXPECT_EQ(exchange.OnDatagram(kCamera, kAnswer, kStart), State::Answered);

    EXPECT_EQ(exchange.Answer().header.status, gvcp::Status::Success);
    EXPECT_EQ(exchange.Answer().payload.size(), 4u);
}

TEST(CommandExchangeTest, AnErrorWithoutBodyIsAnAnswer)
{
    auto exchange = ReadRegisterWithId5();

    EXPECT_EQ(exchange.OnDatagram(kCamera, bytes::FromHex("8006 0081 0000 0005"), kStart), State::Answered);

    EXPECT_EQ(exchange.Answer().header.status, gvcp::Status::AccessDenied);
}

TEST(CommandExchangeTest, IgnoresAnotherSender)
{
    auto exchange = ReadRegisterWithId5();

    EXPECT_EQ(exchange.OnDatagram({transport::Ipv4Address(192, 168, 1, 21), 3956}, kAnswer, kStart),
              State::Waiting);
    EXPECT_EQ(exchange.OnDatagram({kCamera.address, 3957}, kAnswer, kStart), State::Waiting);
}

TEST(CommandExchangeTest, IgnoresTheAnswerToAnotherCommand)
{
    auto exchange = ReadRegisterWithId5();

    EXPECT_EQ(exchange.OnDatagram(kCamera, bytes::FromHex("0000 0081 0004 0004 00000002"), kStart),
              State::Waiting);
    EXPECT_EQ(exchange.OnDatagram(kCamera, bytes::FromHex("0000 0083 0004 0005 00000001"), kStart),
              State::Waiting);
}

TEST(CommandExchangeTest, IgnoresWhatIsNoAcknowledge)
{
    auto exchange = ReadRegisterWithId5();

    for (std::size_t size = 0; size < kAnswer.size(); ++size)
        EXPECT_EQ(exchange.OnDatagram(kCamera, bytes::First(kAnswer, size), kStart), State::Waiting) << size;
}

TEST(CommandExchangeTest, SendsAgainAfterEachTimeoutThenGivesUp)
{
    auto exchange = ReadRegisterWithId5();
    auto now = kStart;

    for (unsigned i = 0; i < kSettings.retries; ++i) {
        EXPECT_EQ(exchange.WaitUntil(), now + 300ms);
        EXPECT_EQ(exchange.OnTime(now + 299ms), State::Waiting);
        now += 300ms;
        EXPECT_EQ(exchange.OnTime(now), State::SendAgain);
    }

    EXPECT_EQ(exchange.OnTime(now + 299ms), State::Waiting);
    EXPECT_EQ(exchange.OnTime(now + 300ms), State::TimedOut);
}

TEST(CommandExchangeTest, ALateAnswerStillCounts)
{
    auto exchange = ReadRegisterWithId5();
    ASSERT_EQ(exchange.OnTime(kStart + 300ms), State::SendAgain);

    EXPECT_EQ(exchange.OnDatagram(kCamera, kAnswer, kStart + 310ms), State::Answered);
}

TEST(CommandExchangeTest, PendingLengthensTheWaitAndEndsTheRetries)
{
    auto exchange = ReadRegisterWithId5();

    EXPECT_EQ(exchange.OnDatagram(kCamera, bytes::FromHex("0000 0089 0004 0005 0000 07D0"), kStart + 1ms),
              State::Pending);

    EXPECT_EQ(exchange.WaitUntil(), kStart + 1ms + 2000ms + 300ms); // 0x07D0 ms and the way of the answer
    EXPECT_EQ(exchange.OnTime(exchange.WaitUntil() - 1ms), State::Waiting);
    EXPECT_EQ(exchange.OnTime(exchange.WaitUntil()), State::TimedOut);
}

TEST(CommandExchangeTest, PendingOfAnotherCommandIsIgnored)
{
    auto exchange = ReadRegisterWithId5();

    std::ignore = exchange.OnDatagram(kCamera, bytes::FromHex("0000 0089 0004 0006 0000 07D0"), kStart);

    EXPECT_EQ(exchange.WaitUntil(), kStart + 300ms);
}

TEST(CommandExchangeTest, RepetitionsEndWithTheTimeThatTheCommandHas)
{
    CommandExchange exchange({kCamera, 5, gvcp::Ack::ReadReg}, kSettings, kStart, kStart + 450ms);

    EXPECT_EQ(exchange.OnTime(kStart + 300ms), State::SendAgain);
    EXPECT_EQ(exchange.WaitUntil(), kStart + 450ms);
    EXPECT_EQ(exchange.OnTime(kStart + 450ms), State::TimedOut);
}

TEST(CommandExchangeTest, PendingForEverEndsWithTheTimeThatTheCommandHas)
{
    auto exchange = ReadRegisterWithId5();
    auto now = kStart;

    for (int i = 0; i < 50; ++i) {
        std::ignore = exchange.OnDatagram(kCamera, bytes::FromHex("0000 0089 0004 0005 0000 FFFF"), now);
        now = exchange.WaitUntil() - 1ms;
    }

    EXPECT_EQ(exchange.WaitUntil(), kStart + 60s);
    EXPECT_EQ(exchange.OnTime(kStart + 60s), State::TimedOut);
}

TEST(CommandExchangeTest, BusyIsNoAnswer)
{
    auto exchange = ReadRegisterWithId5();

    EXPECT_EQ(exchange.OnDatagram(kCamera, bytes::FromHex("8007 0081 0000 0005"), kStart), State::Busy);
}

} // namespace
} // namespace control
