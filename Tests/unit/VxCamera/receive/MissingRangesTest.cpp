#include "VxCamera/receive/MissingRanges.h"

#include "support/Bytes.h"

#include <gtest/gtest.h>

#include <set>
#include <utility>

namespace receive {
namespace {

constexpr IVxClock::Time kNow{std::chrono::hours(1)};

using Pairs = std::vector<std::pair<std::uint32_t, std::uint32_t>>;

Pairs PairsOf(const MissingRanges& missing)
{
    Pairs pairs;
    for (const MissingRange& range : missing.All())
        pairs.emplace_back(range.first, range.last);
    return pairs;
}

TEST(MissingRangesTest, PacketsInOrderLeaveNothing)
{
    MissingRanges missing;
    for (std::uint32_t id = 0; id < 10; ++id)
        EXPECT_EQ(missing.Arrived(id, kNow), std::nullopt);

    EXPECT_TRUE(missing.IsEmpty());
    EXPECT_EQ(missing.Next(), 10u);
}

TEST(MissingRangesTest, WhatIsJumpedOverIsMissing)
{
    MissingRanges missing;
    std::ignore = missing.Arrived(0, kNow);
    std::ignore = missing.Arrived(4, kNow);
    std::ignore = missing.Arrived(6, kNow);

    EXPECT_EQ(PairsOf(missing), (Pairs{{1, 3}, {5, 5}}));
    EXPECT_TRUE(missing.IsMissing(2));
    EXPECT_FALSE(missing.IsMissing(4));
    EXPECT_FALSE(missing.IsMissing(7));
}

TEST(MissingRangesTest, APacketThatComesLateTakesItsPlaceOut)
{
    MissingRanges missing;
    std::ignore = missing.Arrived(9, kNow);
    missing.All()[0].asks = 3;

    ASSERT_TRUE(missing.Arrived(0, kNow));
    ASSERT_TRUE(missing.Arrived(8, kNow));
    const auto middle = missing.Arrived(4, kNow);

    ASSERT_TRUE(middle);
    EXPECT_EQ(middle->asks, 3u);
    EXPECT_EQ(PairsOf(missing), (Pairs{{1, 3}, {5, 7}}));
    EXPECT_EQ(missing.All()[1].asks, 3u); // both halves have been asked for
    EXPECT_EQ(missing.Arrived(4, kNow), std::nullopt);
}

TEST(MissingRangesTest, APacketCanBecomeUseless)
{
    MissingRanges missing;
    for (std::uint32_t id = 0; id < 5; ++id)
        std::ignore = missing.Arrived(id, kNow);

    missing.Lost(3, kNow);
    missing.Lost(1, kNow);
    missing.Lost(1, kNow); // known
    missing.Lost(7, kNow); // has not come yet

    EXPECT_EQ(PairsOf(missing), (Pairs{{1, 1}, {3, 3}}));
}

TEST(MissingRangesTest, TheEndCanBeExpected)
{
    MissingRanges missing;
    std::ignore = missing.Arrived(0, kNow);

    missing.ExpectUpTo(5, kNow);
    missing.ExpectUpTo(5, kNow);
    missing.ExpectUpTo(2, kNow);

    EXPECT_EQ(PairsOf(missing), (Pairs{{1, 5}}));
    missing.EndAt(4);
    EXPECT_EQ(PairsOf(missing), (Pairs{{1, 3}}));
    missing.EndAt(1);
    EXPECT_TRUE(missing.IsEmpty());
}

TEST(MissingRangesTest, TooManyHolesAreNotFollowed)
{
    MissingRanges missing;
    for (std::uint32_t id = 0; id < 3 * MissingRanges::kMostRanges; id += 2)
        std::ignore = missing.Arrived(id, kNow);

    EXPECT_TRUE(missing.IsOverfull());
    EXPECT_EQ(missing.All().size(), MissingRanges::kMostRanges);
    missing.Clear();
    EXPECT_FALSE(missing.IsOverfull());
}

TEST(MissingRangesTest, AgreesWithASetForAnyOrder)
{
    bytes::Random random;
    for (int round = 0; round < 50; ++round) {
        MissingRanges missing;
        std::set<std::uint32_t> arrived;
        std::uint32_t next = 0;
        for (int i = 0; i < 200; ++i) {
            const auto id = static_cast<std::uint32_t>(random.UpTo(300)); // small
            const bool wasMissing = id < next && !arrived.contains(id);
            EXPECT_EQ(missing.Arrived(id, kNow).has_value(), wasMissing);
            arrived.insert(id);
            next = std::max(next, id + 1);
            for (std::uint32_t probe = 0; probe < 305; probe += 7)
                ASSERT_EQ(missing.IsMissing(probe), probe < next && !arrived.contains(probe));
        }
    }
}

TEST(MissingRangesTest, TellsWhetherAPacketOrOneBeforeItIsAskedFor)
{
    MissingRanges missing;
    std::ignore = missing.Arrived(0, kNow);
    EXPECT_FALSE(missing.IsAnyAskedForUpTo(9));
    std::ignore = missing.Arrived(5, kNow); // 1 to 4 are missing
    EXPECT_FALSE(missing.IsAnyAskedForUpTo(9));
    missing.All().front().asks = 1;

    EXPECT_FALSE(missing.IsAnyAskedForUpTo(0));
    EXPECT_TRUE(missing.IsAnyAskedForUpTo(1));
    EXPECT_TRUE(missing.IsAnyAskedForUpTo(5));
}

} // namespace
} // namespace receive
