#pragma once

#include "VxBase/VxClock.h"
#include "VxBase/VxResult.h"
#include "VxCamera/receive/BlockAssembler.h"
#include "VxCamera/receive/RateMeter.h"
#include "VxCamera/receive/SenderFilter.h"
#include "VxCamera/receive/StreamCounters.h"
#include "VxCamera/transport/IUdpSocket.h"

#include <atomic>
#include <cstddef>
#include <memory>
#include <optional>
#include <thread>

namespace receive {

/// Receives a stream from a socket and puts its blocks into buffers.
///
/// The thread waits in the socket's receive, for a packet or until a block must be given up; Stop wakes it
/// there.
///
/// Owner:  the stream. Borrows the clock.
/// Thread: Start and Stop from one thread at a time; statistics from any; runs a thread of its own between
/// them.
class StreamReceiver final : private IBlockSink {
public:
    /// @param camera  whose packets count; none: to be learnt
    StreamReceiver(std::unique_ptr<transport::IUdpSocket> socket, const IVxClock& clock,
                   std::optional<transport::Ipv4Address> camera);
    ~StreamReceiver() override;

    /// @param sink  borrowed until Stop
    /// @return  OUT_OF_MEMORY; BUSY when it serves another sink. OK when it serves this one already.
    VxResult Start(IBlockSink& sink);

    /// Ends reception; all buffers are then with the sink again. Allowed when nothing runs.
    void Stop();

    /// The same, but only if it serves this sink.
    void Stop(const IBlockSink& sink);

    [[nodiscard]] bool IsRunning() const { return m_thread.joinable(); }

    [[nodiscard]] const transport::IUdpSocket& Socket() const { return *m_socket; }
    [[nodiscard]] transport::IUdpSocket& Socket() { return *m_socket; }
    [[nodiscard]] const StreamCounters& Counters() const { return m_counters; }
    [[nodiscard]] RateMeter::Rates Rates() const { return m_rates.Read(m_clock.Now()); }
    [[nodiscard]] std::optional<transport::Ipv4Address> Camera() const { return m_filter.Camera(); }

    /// The latest failure of a block or of the network; Ok when there was none since the last reset.
    [[nodiscard]] VxError LastError() const { return m_lastError; }

    /// Sets counters, rates and last error back.
    void ResetStatistics();

private:
    class Slots;

    void Run(Slots& slots);
    void Take(std::span<const transport::Datagram> datagrams);
    void DropWhatIsThere(Slots& slots);
    [[nodiscard]] std::chrono::microseconds WaitingTime() const;

    // IBlockSink: passes on to the pipeline and measures on the way.
    [[nodiscard]] BlockBuffer* TakeFree(std::size_t wantedBytes) override;
    void Deliver(BlockBuffer& buffer) override;
    void GiveBack(BlockBuffer& buffer) override;

    const std::unique_ptr<transport::IUdpSocket> m_socket;
    const IVxClock& m_clock;
    SenderFilter m_filter;
    StreamCounters m_counters;
    RateMeter m_rates;
    BlockAssembler m_assembler{{}, *this, m_counters};
    IBlockSink* m_sink = nullptr; // borrowed from Start to Stop
    std::atomic<bool> m_isStopping = false;
    std::atomic<VxError> m_lastError = VxError::Ok;
    std::thread m_thread;
};

} // namespace receive
