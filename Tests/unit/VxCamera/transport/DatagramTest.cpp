#include "VxCamera/transport/Datagram.h"

#include "support/Bytes.h"

#include <gtest/gtest.h>

#include <array>

namespace transport {
namespace {

using bytes::Copy;
using bytes::FromHex;

/// A datagram with a head of 2 bytes, a body of 3, and room for 5 behind the head.
struct Spread {
    std::array<std::byte, 7> memory{};
    std::array<std::byte, 3> body{};
    Datagram datagram{.memory = memory, .body = body, .headBytes = 2};
};

TEST(DatagramTest, FillsHeadBodyAndRestAndJoinsThem)
{
    const auto all = FromHex("0102 030405 0607");
    for (std::size_t size = 0; size <= all.size(); ++size) {
        Spread spread;

        spread.datagram.Fill(bytes::First(all, size));

        EXPECT_EQ(spread.datagram.size, size);
        EXPECT_FALSE(spread.datagram.isTruncated);
        EXPECT_EQ(Copy(spread.datagram.Head()), Copy(bytes::First(all, std::min<std::size_t>(size, 2))));
        spread.datagram.Join();
        EXPECT_EQ(Copy(spread.datagram.Bytes()), Copy(bytes::First(all, size)));
    }
}

TEST(DatagramTest, WhatDoesNotFitIsCutAndMarked)
{
    Spread spread;
    spread.datagram.Fill(bytes::Vector(11, std::byte{1}));
    EXPECT_TRUE(spread.datagram.isTruncated);
    EXPECT_EQ(spread.datagram.size, 10u);

    std::array<std::byte, 4> memory{};
    Datagram plain{.memory = memory};
    plain.Fill(bytes::Vector(5, std::byte{1}));
    EXPECT_TRUE(plain.isTruncated);
    EXPECT_EQ(plain.size, 4u);
}

TEST(DatagramTest, JoiningKeepsWithinTheMemory)
{
    Spread spread;
    spread.datagram.Fill(bytes::Vector(10, std::byte{1}));

    spread.datagram.Join(); // 7 of the 10 bytes fit

    EXPECT_EQ(spread.datagram.size, 7u);
    EXPECT_TRUE(spread.datagram.isTruncated);
}

} // namespace
} // namespace transport
