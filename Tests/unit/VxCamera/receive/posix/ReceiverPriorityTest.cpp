#include "VxCamera/receive/StreamReceiver.h"

#include "unit/VxCamera/receive/FakeSink.h"

#include "support/Latch.h"
#include "support/Niceness.h"
#include "support/network/FakeClock.h"

#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <span>
#include <thread>
#include <utility>

namespace receive {
namespace {

/// What a test wants to know of the thread that waits at a socket.
struct WaitNotes {
    Latch hasBegun{1};
    int niceness = 0;
    id_t thread = 0;
};

/// A socket to which nothing comes, and whose wait ends only by a wake.
class SilentSocket final : public transport::IUdpSocket {
public:
    /// @param notes  borrowed
    explicit SilentSocket(WaitNotes& notes) : m_notes(notes) {}

    VxResult SendTo(std::span<const std::byte>, const transport::Ipv4Endpoint&) override
    {
        return VxResult::Ok();
    }
    VxExpected<std::size_t> Receive(std::span<transport::Datagram>,
                                    std::chrono::microseconds timeout) override
    {
        if (timeout.count() == 0) // what is there before the start: the one that starts looks
            return VxError::Timeout;
        m_notes.niceness = niceness::OfThread();
        m_notes.thread = niceness::CallingThread();
        m_notes.hasBegun.count_down();
        m_woken.wait();
        return VxError::Aborted;
    }
    void Gather(std::chrono::microseconds) override {}
    void Wake() override { m_woken.count_down(); }
    [[nodiscard]] transport::Ipv4Endpoint LocalEndpoint() const override { return {}; }
    [[nodiscard]] std::size_t ReceiveBufferBytes() const override { return 0; }
    VxResult JoinGroup(transport::Ipv4Address, transport::Ipv4Address) override { return VxResult::Ok(); }
    VxResult LeaveGroup(transport::Ipv4Address, transport::Ipv4Address) override { return VxResult::Ok(); }

private:
    WaitNotes& m_notes;
    Latch m_woken{1};
};

TEST(ReceiverPriorityTest, TheThreadThatReceivesGoesBeforeOthersAndTheOneThatStartsItDoesNot)
{
    constexpr int kRaised = -10;
    const bool isPermitted = niceness::MayBe(kRaised);
    // A thread begins with the niceness of the one that made it.
    std::thread([&] {
        ASSERT_TRUE(niceness::BeBehind());
        const int before = niceness::OfThread();
        WaitNotes notes;
        FakeClock clock;
        FakeSink sink(1, 64 * 48);
        StreamReceiver receiver(std::make_unique<SilentSocket>(notes), clock,
                                transport::Ipv4Address::Loopback());

        ASSERT_TRUE(receiver.Start(sink).IsOK());
        notes.hasBegun.wait();
        EXPECT_EQ(niceness::OfThread(), before);
        receiver.Stop();

        EXPECT_NE(notes.thread, niceness::CallingThread());
        EXPECT_EQ(notes.niceness, isPermitted ? kRaised : before);
    }).join();
}

} // namespace
} // namespace receive
