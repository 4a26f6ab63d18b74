#include "VxCamera/receive/StreamReceiver.h"
#include "VxCamera/transport/win/WinUdpSocket.h"

#include "unit/VxCamera/receive/FakeSink.h"
#include "unit/VxCamera/receive/StreamPackets.h"
#include "unit/VxCamera/transport/win/CollectingReceiver.h"

#include "support/Latch.h"
#include "support/network/FakeClock.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <utility>

namespace receive {
namespace {

constexpr std::uint64_t kBlocks = 8; // the first ones teach the receiver that there are runs

/// Keeps copies of what is delivered, and tells when all of it was.
class CountingSink final : public IBlockSink {
public:
    BlockBuffer* TakeFree(std::size_t wantedBytes) override { return sink.TakeFree(wantedBytes); }
    void Deliver(BlockBuffer& buffer) override
    {
        sink.Deliver(buffer);
        all.count_down();
    }
    void GiveBack(BlockBuffer& buffer) override { sink.GiveBack(buffer); }

    FakeSink sink{4, 64 * 48};
    Latch all{kBlocks};
};

std::unique_ptr<transport::WinUdpSocket> Open(std::unique_ptr<transport::IRunReceiver> runs)
{
    auto event = transport::MakeSocketEvent();
    if (!event)
        return nullptr;
    transport::UdpSocketOptions options;
    options.local.address = transport::Ipv4Address::Loopback();
    options.isCoalescing = true;
    auto socket = transport::WinUdpSocket::Open(options, *event, std::move(runs));
    return socket ? *std::move(socket) : nullptr;
}

class RunsOfWindowsTest : public testing::Test {
protected:
    /// Sends the blocks to a receiver whose socket gets runs of this system, and checks that all are whole.
    void Stream()
    {
        auto socket = Open(std::make_unique<transport::CollectingReceiver>(m_system));
        const auto camera = Open(std::make_unique<transport::WinRunReceiver>());
        ASSERT_TRUE(socket && camera);
        const auto destination = socket->LocalEndpoint();
        CountingSink sink;
        FakeClock clock;
        StreamReceiver receiver(std::move(socket), clock, transport::Ipv4Address::Loopback());
        m_system.isHolding = true; // so that the packets of a block are there together
        ASSERT_TRUE(receiver.Start(sink).IsOK());
        const StreamPackets stream;
        for (std::uint64_t id = 1; id <= kBlocks; ++id) {
            for (const auto& packet : stream.Block(id))
                ASSERT_TRUE(camera->SendTo(packet, destination).IsOK());
        }
        m_system.isHolding = false;
        sink.all.wait();
        receiver.Stop();

        EXPECT_EQ(receiver.Counters().packets.Value(), kBlocks * stream.Block(1).size());
        for (const FakeSink::Delivered& each : sink.sink.delivered) {
            EXPECT_EQ(each.info.code, VxError::Ok);
            bool isSame = true;
            for (std::size_t i = 0; i < each.memory.size(); ++i)
                isSame = isSame && each.memory[i] == StreamPackets::ByteAt(each.info.blockId, i);
            EXPECT_TRUE(isSame) << each.info.blockId;
        }
    }

    transport::RunSystem m_system;
};

TEST_F(RunsOfWindowsTest, BlocksThatComeInRunsAreWhole)
{
    Stream();

    EXPECT_GE(m_system.runs, static_cast<int>(kBlocks)); // a few
}

TEST_F(RunsOfWindowsTest, BlocksAreWholeWhereTheSystemTakesFewPieces)
{
    m_system.mostPieces = 3;

    Stream();

    EXPECT_GE(m_system.runs, static_cast<int>(kBlocks)); // a few
}

TEST_F(RunsOfWindowsTest, BlocksAreWholeWhereTheSystemRefuses)
{
    m_system.isGranting = false;

    Stream();

    EXPECT_EQ(m_system.runs, 0);
}

} // namespace
} // namespace receive
