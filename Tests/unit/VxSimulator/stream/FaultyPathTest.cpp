#include "VxSimulator/stream/FaultyPath.h"

#include "VxSimulator/stream/SeededRandomSource.h"

#include <gtest/gtest.h>

#include <deque>

namespace {

using namespace simulator;

/// Chance as the test says; 1 when nothing more is said.
class ScriptedRandomSource final : public IRandomSource {
public:
    explicit ScriptedRandomSource(std::deque<double> numbers) : m_numbers(std::move(numbers)) {}

    double Next() override
    {
        if (m_numbers.empty())
            return 1;
        const double next = m_numbers.front();
        m_numbers.pop_front();
        return next;
    }

private:
    std::deque<double> m_numbers;
};

/// Sends packets 0 to count - 1 and tells what comes out.
std::vector<int> PassAll(FaultyPath& path, int count)
{
    std::vector<int> out;
    for (int i = 0; i < count; ++i) {
        const std::array packet{static_cast<std::byte>(i)};
        path.Pass(packet, [&](std::span<const std::byte> each) { out.push_back(static_cast<int>(each[0])); });
    }
    return out;
}

std::vector<int> PassAll(const VxSimulatorFaults& faults, std::deque<double> chance, int count)
{
    ScriptedRandomSource random(std::move(chance));
    FaultyPath path(faults, random);
    return PassAll(path, count);
}

TEST(FaultyPathTest, WithoutFaultsEverythingComesOut)
{
    EXPECT_EQ(PassAll(VxSimulatorFaults{}, {}, 5), (std::vector{0, 1, 2, 3, 4}));
}

TEST(FaultyPathTest, DropsPackets)
{
    EXPECT_EQ(PassAll({.dropShare = 0.5}, {0.9, 0.4, 0.6}, 3), (std::vector{0, 2}));
}

TEST(FaultyPathTest, SendsPacketsTwice)
{
    EXPECT_EQ(PassAll({.duplicateShare = 0.5}, {0.9, 0.4, 0.6}, 3), (std::vector{0, 1, 1, 2}));
}

TEST(FaultyPathTest, ExchangesNeighbours)
{
    EXPECT_EQ(PassAll({.reorderShare = 0.5}, {0.9, 0.4, 0.6, 0.6}, 4), (std::vector{0, 2, 1, 3}));
}

TEST(FaultyPathTest, DelaysPacketsByTwentyPackets)
{
    const auto out = PassAll({.delayShare = 0.5}, {0.4}, 25);

    ASSERT_EQ(out.size(), 25u);
    EXPECT_EQ(out[0], 1);
    EXPECT_EQ(out[19], 20);
    EXPECT_EQ(out[20], 0);
    EXPECT_EQ(out[21], 21);
}

TEST(FaultyPathTest, LetsHeldPacketsOutAtTheEnd)
{
    ScriptedRandomSource random({0.4});
    FaultyPath path({.delayShare = 0.5}, random);
    auto out = PassAll(path, 3);
    ASSERT_EQ(out, (std::vector{1, 2}));

    path.Flush([&](std::span<const std::byte> each) { out.push_back(static_cast<int>(each[0])); });

    EXPECT_EQ(out, (std::vector{1, 2, 0}));
    EXPECT_EQ(PassAll(path, 1), (std::vector{0})) << "nothing is held any more";
}

TEST(FaultyPathTest, CountsWhatItDrops)
{
    ScriptedRandomSource random({0.4, 0.6, 0.4, 0.4});
    FaultyPath path({.dropShare = 0.5}, random);
    PassAll(path, 3);
    EXPECT_EQ(path.Dropped(), 2u);

    EXPECT_TRUE(path.Loses({}));
    EXPECT_FALSE(path.Loses({}));
    EXPECT_EQ(path.Dropped(), 3u);
}

TEST(FaultyPathTest, DropsWhatTheNetworkCannotCarry)
{
    ScriptedRandomSource random({});
    FaultyPath path({.largestPacketBytes = 576}, random);
    const std::vector<std::byte> fits(576 - 28); // IP and UDP take 28
    const std::vector<std::byte> tooLarge(576 - 28 + 1);

    EXPECT_FALSE(path.Loses(fits));
    EXPECT_TRUE(path.Loses(tooLarge));
    EXPECT_TRUE(path.IsTooLarge(tooLarge));
    EXPECT_EQ(path.Dropped(), 1u);
}

TEST(FaultyPathTest, DropsAboutItsShare)
{
    SeededRandomSource random(1);
    FaultyPath path({.dropShare = 0.1}, random);
    for (int i = 0; i < 10000; ++i)
        static_cast<void>(path.Loses({}));

    // Four standard deviations (30) to each side.
    EXPECT_NEAR(static_cast<double>(path.Dropped()), 1000, 120);
}

TEST(SeededRandomSourceTest, GivesTheSameNumbersForTheSameSeed)
{
    SeededRandomSource a(7);
    SeededRandomSource b(7);
    SeededRandomSource other(8);
    bool isDifferent = false;
    for (int i = 0; i < 100; ++i) {
        const double number = a.Next();
        EXPECT_EQ(number, b.Next());
        isDifferent = isDifferent || number != other.Next();
        EXPECT_GE(number, 0);
        EXPECT_LT(number, 1);
    }
    EXPECT_TRUE(isDifferent);
}

} // namespace
