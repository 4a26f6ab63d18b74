#include "VxSimulator/device/AnswerMemory.h"

#include "support/Bytes.h"

#include <gtest/gtest.h>

namespace {

using namespace simulator;
using bytes::FromHex;
using transport::Ipv4Address;
using transport::Ipv4Endpoint;

const auto kCommand = FromHex("42 01 00 82 00 08 00 02 00 00 0A 00 00 00 00 02");
const gvcp::Datagram kAnswer(FromHex("00 00 00 83 00 04 00 02 00 00 00 01"));

Ipv4Endpoint Application(std::uint16_t port)
{
    return {Ipv4Address::Loopback(), port};
}

TEST(AnswerMemoryTest, GivesTheAnswerOfTheSameCommand)
{
    AnswerMemory memory;
    memory.Remember(Application(1), kCommand, kAnswer);

    const auto answer = memory.AnswerFor(Application(1), kCommand);

    ASSERT_TRUE(answer);
    EXPECT_EQ(bytes::Copy(answer->Bytes()), bytes::Copy(kAnswer.Bytes()));
}

TEST(AnswerMemoryTest, KnowsNothingOfOtherCommands)
{
    AnswerMemory memory;
    memory.Remember(Application(1), kCommand, kAnswer);
    auto otherId = kCommand;
    otherId[7] = std::byte{3};
    auto otherValue = kCommand;
    otherValue.back() = std::byte{0};

    EXPECT_FALSE(memory.AnswerFor(Application(1), otherId));
    EXPECT_FALSE(memory.AnswerFor(Application(1), otherValue));
    EXPECT_FALSE(memory.AnswerFor(Application(2), kCommand));
}

TEST(AnswerMemoryTest, RemembersTheLastCommandOfEachApplication)
{
    AnswerMemory memory;
    auto next = kCommand;
    next[7] = std::byte{3};
    memory.Remember(Application(1), kCommand, kAnswer);
    memory.Remember(Application(2), kCommand, kAnswer);
    memory.Remember(Application(1), next, kAnswer);

    EXPECT_FALSE(memory.AnswerFor(Application(1), kCommand));
    EXPECT_TRUE(memory.AnswerFor(Application(1), next));
    EXPECT_TRUE(memory.AnswerFor(Application(2), kCommand));
}

TEST(AnswerMemoryTest, ForgetsTheOldestApplication)
{
    AnswerMemory memory;
    constexpr auto kLast = static_cast<std::uint16_t>(AnswerMemory::kApplications + 1);
    for (std::uint16_t port = 1; port <= kLast; ++port)
        memory.Remember(Application(port), kCommand, kAnswer);

    EXPECT_FALSE(memory.AnswerFor(Application(1), kCommand));
    EXPECT_TRUE(memory.AnswerFor(Application(2), kCommand));
    EXPECT_TRUE(memory.AnswerFor(Application(kLast), kCommand));
}

} // namespace
