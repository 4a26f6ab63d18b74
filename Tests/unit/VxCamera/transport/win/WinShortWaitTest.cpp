#include "VxCamera/transport/win/WinUdpSocket.h"

#include "CoarseTimers.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <memory>
#include <span>
#include <vector>

namespace transport {
namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

constexpr auto kShort = std::chrono::microseconds(2ms);
constexpr auto kForever = std::chrono::microseconds(1h); // longer than any test may take
constexpr auto kNeverTick = 10s; // far longer than any short wait, also on a busy machine
constexpr int kTries = 50;
constexpr int kMany = kTries / 2; // on a busy machine the time of some is over before they wait

UdpSocketOptions Options(bool hasShortWaits)
{
    UdpSocketOptions options;
    options.local.address = Ipv4Address::Loopback();
    options.hasShortWaits = hasShortWaits;
    return options;
}

class WinShortWaitTest : public testing::Test {
protected:
    void Open(bool hasShortWaits, std::unique_ptr<ITimerSystem> timers)
    {
        auto event = MakeSocketEvent();
        ASSERT_TRUE(event);
        auto socket = WinUdpSocket::Open(Options(hasShortWaits), *event, nullptr, std::move(timers));
        ASSERT_TRUE(socket) << socket.Result().GetDescription().Narrow();
        m_socket = *std::move(socket);
    }
    void Open() { Open(true, std::make_unique<CoarseTimers>(m_notes)); }
    void Close() { m_socket.reset(); }

    VxError Receive(std::chrono::microseconds timeout)
    {
        return m_socket->Receive({&m_datagram, 1}, timeout).Result().Code();
    }
    void Send() { EXPECT_TRUE(m_socket->SendTo(m_memory, m_socket->LocalEndpoint()).IsOK()); }

    /// Waits for nothing, again and again.
    /// @return  the median
    std::chrono::microseconds ShortWaits()
    {
        std::vector<Clock::duration> took;
        for (int i = 0; i < kTries && !HasFailure(); ++i) {
            const auto begin = Clock::now();
            EXPECT_EQ(Receive(kShort), VxError::Timeout);
            took.push_back(Clock::now() - begin);
            EXPECT_GE(took.back(), kShort);
            EXPECT_LT(took.back(), kNeverTick);
        }
        const auto middle = took.begin() + static_cast<std::ptrdiff_t>(took.size() / 2); // a few
        std::ranges::nth_element(took, middle);
        const auto median = std::chrono::duration_cast<std::chrono::microseconds>(*middle);
        RecordProperty("medianUs", static_cast<int>(median.count())); // a few thousand
        return median;
    }

    TimerNotes m_notes;
    std::unique_ptr<WinUdpSocket> m_socket;
    std::array<std::byte, 16> m_memory{};
    Datagram m_datagram{m_memory};
};

TEST_F(WinShortWaitTest, EndsLongBeforeTheSystemsTick)
{
    m_notes.tick = kNeverTick;
    ASSERT_NO_FATAL_FAILURE(Open());

    ShortWaits();

    EXPECT_EQ(m_notes.flags, std::vector<DWORD>{CoarseTimers::kHighResolution}); // one timer, made once
    EXPECT_EQ(m_notes.ticksBegun, 0);
    EXPECT_GE(m_notes.timedWaits, kMany);
    EXPECT_EQ(m_notes.timedWaits, m_notes.waits);
}

TEST_F(WinShortWaitTest, ADatagramEndsItAtOnce)
{
    ASSERT_NO_FATAL_FAILURE(Open());
    m_notes.onWait = [this] { Send(); };

    EXPECT_EQ(Receive(kForever), VxError::Ok);

    EXPECT_EQ(m_datagram.size, m_memory.size());
    EXPECT_EQ(m_notes.timedWaits, m_notes.waits);
}

TEST_F(WinShortWaitTest, AWakeEndsItAtOnce)
{
    ASSERT_NO_FATAL_FAILURE(Open());
    m_notes.onWait = [this] { m_socket->Wake(); };

    EXPECT_EQ(Receive(kForever), VxError::Aborted);
    EXPECT_EQ(m_notes.timedWaits, m_notes.waits);
}

TEST_F(WinShortWaitTest, ATimerThatWasSetForAnEarlierWaitDoesNotEndALaterOne)
{
    m_notes.tick = kNeverTick;
    ASSERT_NO_FATAL_FAILURE(Open());
    m_notes.onWait = [this] { Send(); };
    ASSERT_EQ(Receive(100ms), VxError::Ok); // the timer stays set
    const auto begin = Clock::now();

    EXPECT_EQ(Receive(150ms), VxError::Timeout);

    EXPECT_GE(Clock::now() - begin, 150ms);
    EXPECT_LT(Clock::now() - begin, kNeverTick);
}

TEST_F(WinShortWaitTest, ASystemWithoutHighResolutionGivesAnOrdinaryTimerAndAShortTickWhileTheSocketLives)
{
    m_notes.tick = kNeverTick; // shows that it is the timer that ends the waits
    m_notes.knowsHighResolution = false;
    ASSERT_NO_FATAL_FAILURE(Open());

    ShortWaits();

    EXPECT_EQ(m_notes.flags, (std::vector<DWORD>{CoarseTimers::kHighResolution, 0}));
    EXPECT_EQ(m_notes.timedWaits, m_notes.waits);
    EXPECT_EQ(m_notes.ticksBegun, 1);
    EXPECT_EQ(m_notes.ticksEnded, 0);
    Close();
    EXPECT_EQ(m_notes.ticksEnded, 1);
}

TEST_F(WinShortWaitTest, ATickThatWasRefusedIsNotEnded)
{
    m_notes.knowsHighResolution = false;
    m_notes.grantsShortTick = false;
    ASSERT_NO_FATAL_FAILURE(Open());

    EXPECT_EQ(Receive(kShort), VxError::Timeout);

    Close();
    EXPECT_EQ(m_notes.ticksEnded, 0);
}

TEST_F(WinShortWaitTest, ASystemWithoutTimersEndsItByItself)
{
    m_notes.hasTimers = false;
    ASSERT_NO_FATAL_FAILURE(Open());
    ShortWaits();

    EXPECT_EQ(m_notes.sets, 0);
    EXPECT_GE(m_notes.waits, kMany);
    EXPECT_EQ(m_notes.timedWaits, 0);
    EXPECT_EQ(m_notes.ticksBegun, 1);
}

TEST_F(WinShortWaitTest, ATimerThatCannotBeSetIsNotWaitedFor)
{
    m_notes.setsTimers = false;
    ASSERT_NO_FATAL_FAILURE(Open());
    ShortWaits();

    EXPECT_GE(m_notes.sets, kMany);
    EXPECT_EQ(m_notes.timedWaits, 0);
}

TEST_F(WinShortWaitTest, ASocketWhoseWaitsAreLongAsksForNoTimer)
{
    ASSERT_NO_FATAL_FAILURE(Open(false, std::make_unique<CoarseTimers>(m_notes)));

    EXPECT_EQ(Receive(kShort), VxError::Timeout);

    EXPECT_TRUE(m_notes.flags.empty());
    EXPECT_EQ(m_notes.ticksBegun, 0);
    EXPECT_EQ(m_notes.waits, 0);
}

TEST_F(WinShortWaitTest, OfTheRealSystemEndsWithinMilliseconds)
{
    ASSERT_NO_FATAL_FAILURE(Open(true, std::make_unique<WinTimerSystem>()));

    // A wait of the system's own tick would take 8 ms in the mean and 16 at most.
    EXPECT_LT(ShortWaits(), 8ms);
}

TEST(WinTimerSystemTest, TheRealSystemHasATimerAndAShortTick)
{
    WinTimerSystem system;

    EXPECT_NE(system.MakeTimer(0).Get(), nullptr);
    ASSERT_TRUE(system.BeginShortTick());
    system.EndShortTick();
}

/// A system in which no time passes: each wait ends as a test says.
class ScriptedTimers final : public ITimerSystem {
public:
    struct Script {
        std::vector<DWORD> ends; // of the waits, the next one last
        std::vector<std::chrono::nanoseconds> set;
    };
    explicit ScriptedTimers(Script& script) : m_script(script) {}

    KernelHandle MakeTimer(DWORD flags) override { return m_real.MakeTimer(flags); }
    bool BeginShortTick() override { return false; }
    void EndShortTick() override {}
    bool Set(HANDLE, std::chrono::nanoseconds duration) override
    {
        m_script.set.push_back(duration);
        return true;
    }
    DWORD Wait(std::span<const HANDLE>, DWORD) override
    {
        if (m_script.ends.empty())
            return WAIT_FAILED;
        const DWORD end = m_script.ends.back();
        m_script.ends.pop_back();
        return end;
    }

private:
    Script& m_script;
    WinTimerSystem m_real;
};

class WinWaitTimerTest : public testing::Test {
protected:
    static constexpr DWORD kEvent = WAIT_OBJECT_0;
    static constexpr DWORD kTimer = WAIT_OBJECT_0 + 1;

    /// @param ends  of the system's waits, the last one first
    DWORD WaitFor(std::chrono::hours rest, std::vector<DWORD> ends)
    {
        m_script.ends = std::move(ends);
        return m_timer.WaitFor(m_event.Get(), m_begin + rest);
    }

    const Clock::time_point m_begin = Clock::now();
    const KernelHandle m_event{::CreateEventW(nullptr, FALSE, FALSE, nullptr)};
    ScriptedTimers::Script m_script;
    WinWaitTimer m_timer{std::make_unique<ScriptedTimers>(m_script)};
};

TEST_F(WinWaitTimerTest, IsSetAnewOnlyWhenItWouldEndTooLate)
{
    EXPECT_EQ(WaitFor(2h, {kEvent}), kEvent);
    EXPECT_EQ(WaitFor(3h, {kEvent}), kEvent); // ends early at worst
    ASSERT_EQ(m_script.set.size(), 1u);
    EXPECT_GT(m_script.set[0], 1h);

    EXPECT_EQ(WaitFor(1h, {kEvent}), kEvent);
    ASSERT_EQ(m_script.set.size(), 2u);
    EXPECT_LE(m_script.set[1], 1h);
}

TEST_F(WinWaitTimerTest, WaitsOnAfterATimerThatWasSetForLess)
{
    EXPECT_EQ(WaitFor(1h, {kEvent}), kEvent);
    EXPECT_EQ(WaitFor(3h, {kEvent, kTimer}), kEvent);

    ASSERT_EQ(m_script.set.size(), 2u);
    EXPECT_GT(m_script.set[1], 2h);
    EXPECT_TRUE(m_script.ends.empty());
}

TEST_F(WinWaitTimerTest, TellsThatTheTimeIsOverWithoutAWait)
{
    EXPECT_EQ(WaitFor(0h, {}), static_cast<DWORD>(WAIT_TIMEOUT));
}

TEST_F(WinWaitTimerTest, TellsThatAWaitFailed)
{
    EXPECT_EQ(WaitFor(1h, {WAIT_FAILED}), WAIT_FAILED);
}

} // namespace
} // namespace transport
