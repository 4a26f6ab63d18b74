#include "VxCamera/receive/StreamReceiver.h"
#include "VxCamera/transport/win/WinUdpSocket.h"

#include "unit/VxCamera/receive/FakeSink.h"
#include "unit/VxCamera/receive/StreamPackets.h"
#include "unit/VxCamera/transport/win/CoarseTimers.h"

#include "support/Latch.h"

#include <gtest/gtest.h>

#include <array>
#include <chrono>
#include <memory>
#include <utility>

namespace receive {
namespace {

using namespace std::chrono_literals;

constexpr auto kTick = 10s; // far longer than all that a block is waited for, also on a busy machine

std::unique_ptr<transport::WinUdpSocket>
Open(std::unique_ptr<transport::ITimerSystem> timers = std::make_unique<transport::WinTimerSystem>())
{
    auto event = transport::MakeSocketEvent();
    if (!event)
        return nullptr;
    transport::UdpSocketOptions options;
    options.local.address = transport::Ipv4Address::Loopback();
    options.hasShortWaits = true;
    auto socket = transport::WinUdpSocket::Open(options, *event, nullptr, std::move(timers));
    return socket ? *std::move(socket) : nullptr;
}

/// Tells when the first block comes.
class OneBlockSink final : public IBlockSink {
public:
    BlockBuffer* TakeFree(std::size_t wantedBytes) override { return sink.TakeFree(wantedBytes); }
    void Deliver(BlockBuffer& buffer) override
    {
        sink.Deliver(buffer);
        delivered.count_down();
    }
    void GiveBack(BlockBuffer& buffer) override { sink.GiveBack(buffer); }

    FakeSink sink{1, 64 * 48};
    Latch delivered{1};
};

int CountDatagrams(transport::IUdpSocket& socket)
{
    std::array<std::byte, 64> memory{};
    transport::Datagram datagram{memory};
    int count = 0;
    while (socket.Receive({&datagram, 1}, 0us))
        ++count;
    return count;
}

TEST(ShortWaitsOfWindowsTest, TheLostEndOfABlockIsAskedForAgainAndGivenUpLongBeforeTheSystemsTick)
{
    transport::TimerNotes timers;
    timers.tick = kTick;
    auto socket = Open(std::make_unique<transport::CoarseTimers>(timers));
    const auto camera = Open();
    auto link = std::make_shared<StreamLink>();
    link->resend = Open();
    ASSERT_TRUE(socket && camera && link->resend);
    link->command = camera->LocalEndpoint();
    const auto destination = socket->LocalEndpoint();
    OneBlockSink sink;
    const VxSteadyClock clock;
    StreamReceiver receiver(std::move(socket), clock, transport::Ipv4Address::Loopback());
    AssemblySettings patient;
    patient.blockTimeout = 2s; // also when a busy machine stands still for a while
    receiver.SetSettings(patient);
    receiver.SetLink(link);
    ASSERT_TRUE(receiver.Start(sink).IsOK());
    const auto begin = clock.Now();

    const auto packets = StreamPackets().Block(1);
    for (std::size_t i = 0; i < 6; ++i) // nothing follows
        ASSERT_TRUE(camera->SendTo(packets[i], destination).IsOK());
    sink.delivered.wait();
    const auto took = clock.Now() - begin;
    receiver.Stop();

    EXPECT_LT(took, kTick);
    EXPECT_GE(CountDatagrams(*camera), 2);
    EXPECT_EQ(sink.sink.delivered[0].info.code, VxError::MissingPackets);
    RecordProperty("tookMs",
                   static_cast<int>(std::chrono::duration_cast<std::chrono::milliseconds>(took).count()));
}

} // namespace
} // namespace receive
