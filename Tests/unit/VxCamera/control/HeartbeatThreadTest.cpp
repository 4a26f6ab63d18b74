#include "VxCamera/control/HeartbeatThread.h"

#include "VxCamera/control/DeviceSession.h"
#include "support/Latch.h"
#include "support/network/FakeCamera.h"
#include "support/network/FakeSocketFactory.h"

#include <gtest/gtest.h>

#include <atomic>
#include <new>

namespace control {
namespace {

using namespace std::chrono_literals;

class HeartbeatThreadTest : public testing::Test {
protected:
    std::unique_ptr<DeviceSession> Connected()
    {
        transport::NetworkInterface via;
        via.address = transport::Ipv4Address(192, 168, 1, 1);
        return std::move(*DeviceSession::Connect({m_sockets, m_clock}, m_camera.endpoint, via));
    }

    FakeClock m_clock; // stands in the past of the real clock, so that no wait of the thread is long
    FakeCamera m_camera{m_clock};
    FakeSocketFactory m_sockets{m_clock, [this](FakeUdpSocket& socket, std::span<const std::byte> datagram,
                                                const transport::Ipv4Endpoint& destination) {
                                    m_camera.OnDatagram(socket, datagram, destination);
                                }};
};

TEST_F(HeartbeatThreadTest, StopsWithoutHavingStarted)
{
    const auto session = Connected();
    HeartbeatThread thread(*session);

    thread.Stop();
}

TEST_F(HeartbeatThreadTest, EndsByItselfWhenTheSessionHasEnded)
{
    const auto session = Connected();
    ASSERT_TRUE(session->Release().IsOK());
    HeartbeatThread thread(*session);

    ASSERT_TRUE(thread.Start().IsOK());

    thread.Stop(); // joins: would wait for ever for a thread that does not end
}

TEST_F(HeartbeatThreadTest, StopEndsALongWaitAtOnce)
{
    m_clock.AdvanceTo(std::chrono::steady_clock::now() + 24h); // the next heartbeat is a day away
    const auto session = Connected();
    HeartbeatThread thread(*session);
    ASSERT_TRUE(thread.Start().IsOK());

    thread.Stop();

    EXPECT_TRUE(session->IsAlive());
}

TEST_F(HeartbeatThreadTest, AHeartbeatForWhichThereIsNoMemoryIsSentAgainLater)
{
    std::atomic<bool> isMemoryFull = false;
    std::atomic<bool> isThrown = false;
    Latch answered(1);
    FakeSocketFactory sockets(m_clock, [&](FakeUdpSocket& socket, std::span<const std::byte> datagram,
                                           const transport::Ipv4Endpoint& destination) {
        if (isMemoryFull.exchange(false)) {
            isThrown = true;
            throw std::bad_alloc();
        }
        m_camera.OnDatagram(socket, datagram, destination);
        if (isThrown)
            answered.count_down();
    });
    transport::NetworkInterface via;
    via.address = transport::Ipv4Address(192, 168, 1, 1);
    const auto session = std::move(*DeviceSession::Connect({sockets, m_clock}, m_camera.endpoint, via));
    HeartbeatThread thread(*session);
    isMemoryFull = true;
    m_clock.Advance(2s); // a heartbeat is due

    ASSERT_TRUE(thread.Start().IsOK());

    answered.wait(); // would last for ever if the thread had ended
    thread.Stop();
    EXPECT_TRUE(session->IsAlive());
}

} // namespace
} // namespace control
