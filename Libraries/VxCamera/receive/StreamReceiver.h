#pragma once

#include "VxBase/VxClock.h"
#include "VxBase/VxMutex.h"
#include "VxBase/VxResult.h"
#include "VxCamera/receive/BlockAssembler.h"
#include "VxCamera/receive/PacketGathering.h"
#include "VxCamera/receive/RateMeter.h"
#include "VxCamera/receive/ResendSender.h"
#include "VxCamera/receive/SenderFilter.h"
#include "VxCamera/receive/SilenceWatch.h"
#include "VxCamera/receive/StreamCounters.h"
#include "VxCamera/receive/StreamLink.h"
#include "VxCamera/transport/IUdpSocket.h"

#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <thread>
#include <utility>

namespace receive {

class Landing;

/// Receives a stream from a socket and puts its blocks into buffers.
///
/// The thread waits in the socket's receive, for a packet or until a block must be given up or asked for;
/// Stop wakes it there. The only locks it takes are held by others for a short time, and by nobody while
/// waiting: m_ordersMutex, that of the rates, what the sink takes, and what the link's onPayloadMissing does.
///
/// Owner:  the stream. Borrows the clock.
/// Thread: Start and Stop from one thread at a time; settings, link and statistics from any; runs a thread of
/// its own between them.
class StreamReceiver final : private IBlockSink {
public:
    /// @param camera  whose packets count; none: to be learnt
    StreamReceiver(std::unique_ptr<transport::IUdpSocket> socket, const IVxClock& clock,
                   std::optional<transport::Ipv4Address> camera);
    ~StreamReceiver() override;

    /// @param blocks  how many are filled at the same time, at most; before Start
    void SetMostOpen(std::size_t blocks) { m_assembler.SetMostOpen(blocks); }

    /// The socket has joined a multicast group: others receive the same, and this host asks for nothing.
    void SetGroup(transport::Ipv4Address group) { m_group = group; }
    /// @return  none: the stream is sent to this host alone
    [[nodiscard]] std::optional<transport::Ipv4Address> Group() const { return m_group; }

    /// @param joiner  called with the socket when reception begins, and every few seconds while nothing
    ///                arrives, by the receiver's thread: must not wait long, nor throw. Before Start
    void SetJoiner(std::function<void(transport::IUdpSocket&)> joiner) { m_joiner = std::move(joiner); }

    /// From now on; at once, also while it runs.
    void SetSettings(const AssemblySettings& settings);
    [[nodiscard]] AssemblySettings Settings() const;

    /// @param link  null: this host does not control the camera (any more)
    void SetLink(std::shared_ptr<const StreamLink> link);
    /// @param picture  what the camera's features say, for chunk data; none: not known. Until another link.
    void SetCameraPicture(const std::optional<PictureShape>& picture);
    /// Whether packets are asked for again: this host controls the camera, and it offers that.
    [[nodiscard]] bool CanResend() const;

    /// @param sink  borrowed until Stop
    /// @return  OUT_OF_MEMORY; BUSY when it serves another sink. OK when it serves this one already.
    VxResult Start(IBlockSink& sink);

    /// Ends reception; all buffers are then with the sink again. Allowed when nothing runs.
    void Stop();

    /// The same, but only if it serves this sink.
    void Stop(const IBlockSink& sink);

    [[nodiscard]] bool IsRunning() const { return m_thread.joinable(); }
    [[nodiscard]] bool Serves(const IBlockSink& sink) const { return IsRunning() && m_sink == &sink; }

    [[nodiscard]] const transport::IUdpSocket& Socket() const { return *m_socket; }
    [[nodiscard]] transport::IUdpSocket& Socket() { return *m_socket; }
    [[nodiscard]] const StreamCounters& Counters() const { return m_counters; }
    [[nodiscard]] RateMeter::Rates Rates() const { return m_rates.Read(m_clock.Now()); }
    [[nodiscard]] std::optional<transport::Ipv4Address> Camera() const { return m_filter.Camera(); }

    /// Whether the camera's address was given, and not learnt from the stream.
    [[nodiscard]] bool IsCameraGiven() const { return m_filter.IsGiven(); }

    /// The latest failure of a block or of the network; TIMEOUT: no packet came for a second; Ok when there
    /// was none since the last reset.
    [[nodiscard]] VxError LastError() const { return m_lastError; }

    /// Of the latest TIMEOUT: whether packets came in that time from another address than the camera's, which
    /// is known.
    [[nodiscard]] bool HaveOthersSent() const { return m_haveOthersSent; }

    /// From the first packet of a block to its delivery: of the latest block, and the longest since the last
    /// reset.
    struct Latency {
        std::chrono::microseconds latest{};
        std::chrono::microseconds longest{};
    };
    [[nodiscard]] Latency Latencies() const { return {m_latest.load(), m_longest.load()}; }

    /// Sets counters, rates and last error back. A silence is told again after another second.
    void ResetStatistics();

private:
    void Run(Landing& landing);
    [[nodiscard]] bool ReceiveOnce(Landing& landing, bool isLooking);
    void FollowBacklog();
    void Take(Landing& landing, std::size_t received);
    [[nodiscard]] bool AfterReceive(std::size_t slots, std::size_t received, bool hasLooked);
    void TakeOrders();
    void WatchSilence();
    void OpenWay();
    void FollowTime(std::optional<IVxClock::Time> emptyAt);
    void DropWhatIsThere(Landing& landing);
    [[nodiscard]] std::chrono::microseconds WaitingTime() const;
    void CountPayload(const BlockInfo& info);

    // IBlockSink: passes on to the pipeline and measures on the way.
    [[nodiscard]] BlockBuffer* TakeFree(std::size_t wantedBytes) override;
    void Deliver(BlockBuffer& buffer) override;
    void GiveBack(BlockBuffer& buffer) override;

    /// What other threads want of the receiver's.
    struct Orders {
        AssemblySettings settings;
        std::shared_ptr<const StreamLink> link; // shared with the thread, see StreamLink
        std::optional<PictureShape> cameraPicture;
    };

    /// Something is, or was, due to be given up unless what it lacks is among the packets that wait. Ends
    /// with a look that finds none.
    struct CatchingUp {
        IVxClock::Time since;
        std::uint64_t bytes = 0; ///< of packets taken since
    };

    const std::unique_ptr<transport::IUdpSocket> m_socket;
    const IVxClock& m_clock;
    SenderFilter m_filter;
    StreamCounters m_counters;
    RateMeter m_rates;
    ResendSender m_resend;
    BlockAssembler m_assembler{{}, *this, m_counters, &m_resend};
    SilenceWatch m_silence;
    PacketGathering m_gathering;
    std::optional<PacketGathering::Backlog> m_backlog;    // as m_gathering knows it
    std::optional<transport::Ipv4Address> m_group;        // constant once it is set up
    std::function<void(transport::IUdpSocket&)> m_joiner; // constant likewise; may be empty
    std::size_t m_socketBytes = 0;                        // that can wait there
    std::optional<CatchingUp> m_catchingUp;               // none: it has caught up
    unsigned m_blocksWithoutPayload = 0;                  // one after the other
    IBlockSink* m_sink = nullptr;                         // borrowed from Start to Stop

    mutable VxMutex m_ordersMutex; // held for a few instructions only
    Orders m_orders VX_GUARDED_BY(m_ordersMutex);
    std::atomic<bool> m_hasOrders = false;
    std::atomic<bool> m_isReset = false; // an order, too

    std::atomic<bool> m_isStopping = false;
    std::atomic<VxError> m_lastError = VxError::Ok;
    std::atomic<bool> m_haveOthersSent = false;
    std::atomic<std::chrono::microseconds> m_latest{};
    std::atomic<std::chrono::microseconds> m_longest{};
    std::thread m_thread;
};

} // namespace receive
