#include "VxCamera/transport/Datagram.h"

#include "support/Bytes.h"

#include <gtest/gtest.h>

#include <array>

namespace transport {
namespace {

using bytes::Copy;
using bytes::FromHex;

/// A datagram with two bodies of 3 and 2 bytes, heads of 2 bytes, and room for 3 behind them.
struct Spread {
    std::array<std::byte, 12> memory{};
    std::array<std::byte, 3> first{};
    std::array<std::byte, 2> second{};
    std::array<std::span<std::byte>, 2> bodies{first, second};
    Datagram datagram{.memory = memory, .bodies = bodies, .headBytes = 2};
};

TEST(DatagramTest, FillsHeadsBodiesAndRestAndJoinsThem)
{
    const auto all = FromHex("0102 030405 0607 0809 0A0B0C");
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

TEST(DatagramTest, WhatLiesInMemoryLiesWhereItWouldWithoutBodies)
{
    Spread spread;
    spread.datagram.Fill(FromHex("0102 030405 0607 0809 0A0B0C"));

    EXPECT_EQ(Copy(spread.memory), FromHex("0102 000000 0607 0000 0A0B0C"));
    EXPECT_EQ(Copy(spread.first), FromHex("030405"));
    EXPECT_EQ(Copy(spread.second), FromHex("0809"));
    spread.datagram.Join(1);
    EXPECT_EQ(Copy(spread.memory), FromHex("0102 000000 0607 0809 0A0B0C"));
}

TEST(DatagramTest, WhatDoesNotFitIsCutAndMarked)
{
    Spread spread;
    spread.datagram.Fill(bytes::Vector(13, std::byte{1}));
    EXPECT_TRUE(spread.datagram.isTruncated);
    EXPECT_EQ(spread.datagram.size, 12u);

    std::array<std::byte, 4> memory{};
    Datagram plain{.memory = memory};
    plain.Fill(bytes::Vector(5, std::byte{1}));
    EXPECT_TRUE(plain.isTruncated);
    EXPECT_EQ(plain.size, 4u);
}

TEST(DatagramTest, ItsSegmentsAreEquallyLongButForTheLast)
{
    std::array<std::byte, 8> memory{};
    Datagram datagram{.memory = memory};
    datagram.Fill(FromHex("010203 040506 0708"));
    EXPECT_EQ(datagram.SegmentCount(), 1u);
    EXPECT_EQ(Copy(datagram.Segment(0)), FromHex("0102030405060708"));

    datagram.segmentBytes = 3;
    ASSERT_EQ(datagram.SegmentCount(), 3u);
    EXPECT_EQ(Copy(datagram.Segment(1)), FromHex("040506"));
    EXPECT_EQ(Copy(datagram.Segment(2)), FromHex("0708"));

    datagram.segmentBytes = 4;
    EXPECT_EQ(datagram.SegmentCount(), 2u);
    datagram.size = 0;
    EXPECT_EQ(datagram.SegmentCount(), 1u);
    EXPECT_TRUE(datagram.Segment(0).empty());
}

} // namespace
} // namespace transport
