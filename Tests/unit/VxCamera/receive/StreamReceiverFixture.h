#pragma once

#include "VxCamera/receive/StreamReceiver.h"

#include "LandingReceiver.h"
#include "QueueSocket.h"
#include "StreamPackets.h"

#include "support/Latch.h"
#include "support/network/FakeClock.h"

#include <array>
#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <utility>

namespace receive {

/// One buffer, and a mark when it was delivered.
class OneBufferSink final : public IBlockSink {
public:
    explicit OneBufferSink(std::ptrdiff_t blocks) : delivered(blocks) {}

    BlockBuffer* TakeFree(std::size_t) override { return std::exchange(m_free, nullptr); }
    void Deliver(BlockBuffer& buffer) override
    {
        last = buffer.info;
        m_free = &buffer;
        ++m_count;
        delivered.count_down();
    }
    [[nodiscard]] int Count() const { return m_count; }
    void GiveBack(BlockBuffer& buffer) override { m_free = &buffer; }
    [[nodiscard]] bool IsFree() const { return m_free != nullptr; }

    Latch delivered;
    BlockInfo last;

private:
    std::array<std::byte, 64 * 48> m_memory{};
    BlockBuffer m_buffer{m_memory, {}};
    BlockBuffer* m_free = &m_buffer;
    std::atomic<int> m_count = 0;
};

/// A receiver whose socket and clock a test moves.
class StreamReceiverFixture {
protected:
    void PutBlock(std::uint64_t blockId, const transport::Ipv4Endpoint& sender)
    {
        for (auto& packet : m_stream.Block(blockId))
            m_socket->Put(sender, std::move(packet));
    }

    /// Lets time pass for a receiver that waits.
    void Pass(std::chrono::milliseconds duration)
    {
        m_socket->WaitUntilIdle();
        m_clock.Advance(duration);
        m_socket->Wake(); // the queue has no time: the receiver looks at its clock
        m_socket->WaitUntilIdle();
    }

    StreamPackets m_stream;
    FakeClock m_clock;
    std::unique_ptr<QueueSocket> m_owned = std::make_unique<QueueSocket>();
    QueueSocket* m_socket = m_owned.get();
    StreamReceiver m_receiver{std::move(m_owned), m_clock, kCamera.address};
};

} // namespace receive
