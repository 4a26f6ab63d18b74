#include "VxCamera/receive/ResendPolicy.h"

#include <gtest/gtest.h>

#include <tuple>
#include <utility>
#include <vector>

namespace receive {
namespace {

using namespace std::chrono_literals;
using Asked = std::vector<std::pair<std::uint32_t, std::uint32_t>>;

class Requests final : public IResendRequests {
public:
    void Ask(std::uint32_t first, std::uint32_t last) override { asked.emplace_back(first, last); }
    Asked asked;
};

class ResendPolicyTest : public testing::Test {
protected:
    ResendPolicyTest() { std::ignore = m_missing.Arrived(0, m_now); }

    /// Lets a packet arrive, so that those before it are missing.
    void Arrive(std::uint32_t id)
    {
        if (const auto was = m_missing.Arrived(id, m_now))
            std::ignore = m_policy.OnArrival(*was, m_now);
    }
    Asked AskAfter(IVxClock::Time::duration duration)
    {
        m_now += duration;
        Requests requests;
        m_policy.Ask(m_missing, m_asking, m_blockPackets, m_now, requests);
        return requests.asked;
    }

    /// Packet 1 is lost, asked for, and comes.
    void HaveAnswered()
    {
        Arrive(2);
        ASSERT_EQ(AskAfter(1ms), (Asked{{1, 1}}));
        m_now += 5ms;
        Arrive(1);
        m_asking = {};
    }

    ResendPolicy m_policy;
    MissingRanges m_missing;
    BlockAsking m_asking;
    std::uint64_t m_blockPackets = 1000;
    IVxClock::Time m_now{1h};
};

TEST_F(ResendPolicyTest, AHoleIsAskedForAfterAShortTimeAsOneRange)
{
    Arrive(5);
    EXPECT_EQ(m_policy.NextDue(m_missing, m_asking, m_now), m_now + 1ms);

    EXPECT_EQ(AskAfter(999us), Asked{});
    EXPECT_EQ(AskAfter(1us), (Asked{{1, 4}}));
    EXPECT_EQ(AskAfter(1ms), Asked{}); // the answer is on its way
}

TEST_F(ResendPolicyTest, PacketsThatOvertookEachOtherAreNotAskedFor)
{
    Arrive(2);
    m_now += 500us;
    Arrive(1);

    EXPECT_EQ(AskAfter(1ms), Asked{});
    EXPECT_EQ(m_policy.NextDue(m_missing, m_asking, m_now), std::nullopt);
}

TEST_F(ResendPolicyTest, WithoutAnAnswerItAsksAgainUntilItGivesUp)
{
    HaveAnswered();
    Arrive(4);
    ASSERT_EQ(AskAfter(1ms).size(), 1u);
    int asks = 1;
    for (int i = 0; i < 100; ++i) {
        EXPECT_FALSE(asks < 16 && m_policy.IsHopeless(m_missing, m_asking, m_now)) << i;
        asks += static_cast<int>(AskAfter(5ms).size());
    }

    EXPECT_EQ(asks, 16);
    EXPECT_TRUE(m_policy.IsHopeless(m_missing, m_asking, m_now));
}

TEST_F(ResendPolicyTest, ACameraThatHasNeverAnsweredIsWaitedForOnceOnly)
{
    Arrive(2);
    for (int asks = 0; asks < 7; ++asks) {
        EXPECT_FALSE(m_policy.IsHopeless(m_missing, m_asking, m_now)) << asks;
        const auto due = m_policy.NextDue(m_missing, m_asking, m_now);
        ASSERT_TRUE(due);
        EXPECT_EQ(AskAfter(*due - m_now).size(), 1u) << asks;
    }
    EXPECT_EQ(m_policy.NextDue(m_missing, m_asking, m_now), m_now + 5ms); // before the next request
    EXPECT_TRUE(m_policy.IsHopeless(m_missing, m_asking, m_now + 5ms));

    m_missing.Clear(); // the next block
    m_asking = {};
    Arrive(0);
    Arrive(2);
    EXPECT_EQ(AskAfter(1ms), (Asked{{1, 1}}));
    EXPECT_FALSE(m_policy.IsHopeless(m_missing, m_asking, m_now + 4999us));
    EXPECT_TRUE(m_policy.IsHopeless(m_missing, m_asking, m_now + 5ms));
}

TEST_F(ResendPolicyTest, AnAnswerEndsTheJudgementThatNoneComes)
{
    Arrive(2);
    for (int i = 0; i < 20; ++i)
        std::ignore = AskAfter(20ms);
    ASSERT_TRUE(m_policy.IsHopeless(m_missing, m_asking, m_now + 20ms));
    Arrive(1);

    m_asking = {};
    Arrive(4);
    ASSERT_EQ(AskAfter(1ms), (Asked{{3, 3}}));
    EXPECT_FALSE(m_policy.IsHopeless(m_missing, m_asking, m_now + 20ms));
}

TEST_F(ResendPolicyTest, ACameraThatHasNeverAnsweredIsAskedOnceForEachPacket)
{
    Arrive(2);
    for (int i = 0; i < 20; ++i)
        std::ignore = AskAfter(20ms);
    Arrive(4);

    EXPECT_EQ(AskAfter(1ms), (Asked{{3, 3}}));
    EXPECT_EQ(m_policy.NextDue(m_missing, m_asking, m_now), m_now + 5ms);
    EXPECT_EQ(AskAfter(1s), Asked{});
    m_policy.BeginAnew(); // another acquisition of the same camera
    EXPECT_EQ(AskAfter(1s), Asked{});
}

TEST_F(ResendPolicyTest, ACameraThatHasNeverAnsweredIsNotWaitedForWhenTheSecondsBudgetIsUsedUp)
{
    Arrive(2);
    for (int i = 0; i < 10; ++i)
        std::ignore = AskAfter(20ms);
    m_policy.SetSettings({.packetsPerSecond = 1});
    m_asking = {};
    for (std::uint32_t id = 4; id <= 400; id += 2) // more than can be saved up
        Arrive(id);
    const std::size_t asked = AskAfter(1ms).size();
    ASSERT_GT(asked, 0u);
    ASSERT_LT(asked, 199u);

    EXPECT_FALSE(m_policy.IsHopeless(m_missing, m_asking, m_now));
    EXPECT_TRUE(m_policy.IsHopeless(m_missing, m_asking, m_now + 5ms));
}

TEST_F(ResendPolicyTest, AnAcquisitionBeginsWithoutAPause)
{
    HaveAnswered();
    Arrive(4);
    for (int i = 0; i < 10; ++i)
        std::ignore = AskAfter(20ms);
    ASSERT_EQ(AskAfter(2ms), Asked{}); // the pause of a camera that answers nothing
    m_policy.BeginAnew();

    m_missing.Clear();
    m_asking = {};
    Arrive(0);
    Arrive(2);
    ASSERT_EQ(AskAfter(1ms).size(), 1u);
    EXPECT_EQ(AskAfter(15ms).size(), 1u);
}

TEST_F(ResendPolicyTest, ARefusalEndsAPause)
{
    Arrive(2);
    Arrive(4);
    for (int i = 0; i < 4; ++i)
        std::ignore = AskAfter(20ms);
    ASSERT_EQ(AskAfter(5ms), Asked{}); // the pause of a camera that answers nothing
    m_policy.OnRefusal(m_now);

    EXPECT_EQ(AskAfter(4999us), Asked{}); // answers may come in a row now
    EXPECT_EQ(AskAfter(1us), (Asked{{1, 1}}));
}

TEST_F(ResendPolicyTest, ACameraThatAnswersNothingIsProbedForOneRangeAfterTheOtherAndMoreAndMoreSlowly)
{
    for (std::uint32_t id = 2; id <= 20; id += 2)
        Arrive(id);
    EXPECT_EQ(AskAfter(1ms).size(), 10u);
    EXPECT_EQ(AskAfter(5ms), (Asked{{1, 1}}));
    EXPECT_EQ(AskAfter(4ms), Asked{});
    EXPECT_EQ(AskAfter(1ms), (Asked{{1, 1}}));
    EXPECT_EQ(AskAfter(9ms), Asked{});
    EXPECT_EQ(AskAfter(1ms), (Asked{{1, 1}}));
    EXPECT_EQ(AskAfter(19ms), Asked{});
    EXPECT_EQ(AskAfter(1ms), (Asked{{1, 1}}));
    Arrive(22);
    EXPECT_EQ(AskAfter(1ms), (Asked{{21, 21}})); // for the first time
}

TEST_F(ResendPolicyTest, BehindAPauseAnswersAreWaitedForBeforeTheRestIsAskedForAgain)
{
    Arrive(2);
    std::ignore = AskAfter(1ms);
    m_now += 1ms;
    Arrive(1);
    ASSERT_EQ(m_policy.AnswerTimeout(), 3ms);
    for (std::uint32_t id = 4; id <= 20; id += 2)
        Arrive(id);
    std::ignore = AskAfter(1ms);
    std::ignore = AskAfter(3ms);

    m_now += 50ms;
    Arrive(3);
    EXPECT_EQ(AskAfter(1ms), Asked{});
    for (std::uint32_t id = 5; id < 19; id += 2)
        Arrive(id);
    EXPECT_EQ(AskAfter(1ms), Asked{});
    EXPECT_EQ(AskAfter(1ms), (Asked{{19, 19}})); // its answer was lost
    EXPECT_EQ(m_policy.AnswerTimeout(), 3ms);    // the pause is not how it usually answers
}

TEST_F(ResendPolicyTest, AnAnswerThatWasLostOnceIsNoPause)
{
    Arrive(2);
    std::ignore = AskAfter(1ms);
    m_now += 1ms;
    Arrive(1);
    Arrive(4);
    Arrive(6);
    EXPECT_EQ(AskAfter(1ms), (Asked{{3, 3}, {5, 5}}));
    EXPECT_EQ(AskAfter(3ms), (Asked{{3, 3}}));
    m_now += 1ms;
    Arrive(3);
    EXPECT_EQ(AskAfter(0ms), (Asked{{5, 5}})); // no wait for more answers
}

TEST_F(ResendPolicyTest, AnswersToWhatWasAskedForAreWaitedForWhenTheBudgetIsUsedUp)
{
    Arrive(2);
    std::ignore = AskAfter(1ms);
    Arrive(1); // the camera answers
    m_blockPackets = 40;
    Arrive(23);
    EXPECT_EQ(AskAfter(1ms), (Asked{{3, 22}}));
    EXPECT_EQ(AskAfter(2ms), Asked{}); // as often again would be too much
    ASSERT_TRUE(m_asking.isGivenUp);
    EXPECT_FALSE(m_policy.IsHopeless(m_missing, m_asking, m_now));
    EXPECT_EQ(m_policy.NextDue(m_missing, m_asking, m_now), m_now + 18ms);
    EXPECT_TRUE(m_policy.IsHopeless(m_missing, m_asking, m_now + 18ms));
    EXPECT_EQ(m_policy.NextDue(m_missing, m_asking, m_now + 18ms), std::nullopt);

    m_asking.isRefused = true;
    EXPECT_TRUE(m_policy.IsHopeless(m_missing, m_asking, m_now));
}

TEST_F(ResendPolicyTest, AnswersThatComeTwiceOrTooLateAreAnswers)
{
    for (int block = 0; block < 100; ++block) {
        m_missing.Clear();
        m_asking = {};
        Arrive(0);
        Arrive(2);
        std::ignore = AskAfter(20ms);
        m_policy.OnUselessAnswer(m_now);
    }
    EXPECT_EQ(m_policy.BudgetScale(), 1.0);
}

TEST_F(ResendPolicyTest, TheTimeOfAnswersIsLearnt)
{
    EXPECT_EQ(m_policy.AnswerTimeout(), 5ms);
    for (std::uint32_t id = 2; id < 100; id += 2) {
        Arrive(id);
        ASSERT_EQ(AskAfter(1ms).size(), 1u);
        m_now += 8ms;
        Arrive(id - 1);
    }

    EXPECT_GT(m_policy.AnswerTimeout(), 8ms);
    EXPECT_LT(m_policy.AnswerTimeout(), 10ms);
}

TEST_F(ResendPolicyTest, TheTimeOfAnswersStaysWithinItsLimits)
{
    for (std::uint32_t id = 2; id < 100; id += 2) {
        Arrive(id);
        std::ignore = AskAfter(1ms);
        m_now += id < 50 ? 10us : 90ms;
        Arrive(id - 1);
        EXPECT_GE(m_policy.AnswerTimeout(), 2ms);
        EXPECT_LE(m_policy.AnswerTimeout(), 20ms);
    }
    EXPECT_EQ(m_policy.AnswerTimeout(), 20ms);
}

TEST_F(ResendPolicyTest, ABlockHasABudget)
{
    Arrive(200); // 199 of 1000
    EXPECT_EQ(AskAfter(1ms).size(), 1u);
    Arrive(300); // with these it is more than a quarter

    EXPECT_EQ(AskAfter(1ms), Asked{});
    EXPECT_TRUE(m_asking.isGivenUp);
    EXPECT_TRUE(m_policy.IsHopeless(m_missing, m_asking, m_now));
    EXPECT_EQ(m_policy.NextDue(m_missing, m_asking, m_now), std::nullopt);
}

TEST_F(ResendPolicyTest, ARangeLargerThanCanBeSavedUpIsAskedForAndPaidForAfterwards)
{
    m_blockPackets = 40'000;
    Arrive(6'001); // 6,000 packets; 5,000 can be saved up
    EXPECT_EQ(AskAfter(1ms), (Asked{{1, 6'000}}));
    for (std::uint32_t id = 1; id <= 6'000; ++id)
        Arrive(id);
    Arrive(6'101); // 99 more

    EXPECT_EQ(AskAfter(10ms), Asked{}); // 20,000 a second: 800 are owed
    EXPECT_EQ(AskAfter(46ms), (Asked{{6'002, 6'100}})) << "paid";
}

TEST_F(ResendPolicyTest, ASmallBlockMayLoseAll)
{
    m_blockPackets = 12;
    Arrive(11);

    EXPECT_EQ(AskAfter(1ms), (Asked{{1, 10}}));
}

TEST_F(ResendPolicyTest, ASecondHasABudget)
{
    ResendSettings settings;
    settings.packetsPerSecond = 1000;
    m_policy.SetSettings(settings);
    std::uint64_t asked = 0;
    for (int block = 0; block < 1000; ++block) { // one in a millisecond
        m_missing.Clear();
        m_asking = {};
        Arrive(0);
        Arrive(11);
        for (const auto& [first, last] : AskAfter(1ms))
            asked += last - first + 1;
        for (std::uint32_t id = 1; id < 11; ++id)
            Arrive(id);
    }

    EXPECT_GE(asked, 600u);
    EXPECT_LE(asked, 1250u); // with what was saved up before
}

TEST_F(ResendPolicyTest, WhatTheSecondDoesNotAllowIsTriedAgain)
{
    ResendSettings settings;
    settings.packetsPerSecond = 128; // 32 can be saved up
    m_policy.SetSettings(settings);
    Arrive(30);
    ASSERT_EQ(AskAfter(1ms).size(), 1u);
    Arrive(40);

    EXPECT_EQ(AskAfter(1ms), Asked{});
    EXPECT_FALSE(m_asking.isGivenUp);
    EXPECT_EQ(m_policy.NextDue(m_missing, m_asking, m_now), m_now + 1ms);
}

TEST_F(ResendPolicyTest, FewAnswersShrinkTheBudgetsAndManyRestoreThem)
{
    const auto ask = [&](int blocks, bool isAnswered) {
        for (int i = 0; i < blocks; ++i) {
            m_missing.Clear();
            m_asking = {};
            Arrive(0);
            Arrive(2);
            std::ignore = AskAfter(20ms);
            if (isAnswered)
                Arrive(1);
        }
    };
    EXPECT_EQ(m_policy.BudgetScale(), 1.0);
    ask(200, false);
    EXPECT_EQ(m_policy.BudgetScale(), 1.0 / 64);
    ask(300, true);
    EXPECT_EQ(m_policy.BudgetScale(), 1.0);
}

TEST_F(ResendPolicyTest, ABudgetThatAllowsNothingGrowsAgain)
{
    for (int i = 0; i < 200; ++i) {
        m_missing.Clear();
        m_asking = {};
        Arrive(0);
        Arrive(101); // a hundred packets at once
        std::ignore = AskAfter(20ms);
    }
    EXPECT_LT(m_policy.BudgetScale(), 1.0);

    std::size_t asked = 0;
    for (int i = 0; i < 300; ++i) {
        m_missing.Clear();
        m_asking = {};
        Arrive(0);
        Arrive(101);
        asked += AskAfter(20ms).size();
        for (std::uint32_t id = 1; id < 101; ++id)
            Arrive(id);
    }

    EXPECT_GT(asked, 0u);
    EXPECT_EQ(m_policy.BudgetScale(), 1.0);
}

TEST_F(ResendPolicyTest, SwitchedOffItAsksForNothing)
{
    ResendSettings settings;
    settings.isOn = false;
    m_policy.SetSettings(settings);
    Arrive(5);

    EXPECT_EQ(AskAfter(1s), Asked{});
    EXPECT_TRUE(m_policy.IsHopeless(m_missing, m_asking, m_now));
}

} // namespace
} // namespace receive
