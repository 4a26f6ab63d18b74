#pragma once

#include "VxCamera/transport/ISocketFactory.h"
#include "VxCamera/transport/win/IRunReceiver.h"
#include "VxCamera/transport/win/WinRunReceiver.h"
#include "VxCamera/transport/win/WinSystem.h"
#include "VxCamera/transport/win/WinTimerSystem.h"
#include "VxCamera/transport/win/WinWaitTimer.h"

#include <atomic>
#include <chrono>
#include <memory>

namespace transport {

/// A UDP socket of Windows. Owner and thread: see IUdpSocket.
class WinUdpSocket final : public IUdpSocket {
public:
    /// What a socket is made of; closed in the reverse of this order.
    struct Parts {
        WinsockUse winsock;
        std::shared_ptr<const KernelHandle> event; // see Open
        SocketHandle socket;
        std::unique_ptr<IRunReceiver> runs;  // null: each datagram comes alone
        std::unique_ptr<WinWaitTimer> timer; // null: a wait ends with the tick of the system
    };

    /// @param event  signalled when data arrives or Wake is called; resets itself. Shared by the sockets of a
    ///               group: one that finds nothing at its own socket waits again.
    /// @param runs  asked when the options want datagrams coalesced, used when it agrees
    /// @param timers  used when the options say that waits are short
    [[nodiscard]] static VxExpected<std::unique_ptr<WinUdpSocket>>
    Open(const UdpSocketOptions& options, std::shared_ptr<const KernelHandle> event,
         std::unique_ptr<IRunReceiver> runs = std::make_unique<WinRunReceiver>(),
         std::unique_ptr<ITimerSystem> timers = std::make_unique<WinTimerSystem>());

    WinUdpSocket(Parts parts, const Ipv4Endpoint& local, bool isSendingAtOnce);

    VxResult SendTo(std::span<const std::byte> bytes, const Ipv4Endpoint& destination) override;
    VxExpected<std::size_t> Receive(std::span<Datagram> datagrams,
                                    std::chrono::microseconds timeout) override;
    /// Returns at once: the longest that packets may gather is 1 ms, and a timer takes as long for any part
    /// of it (1.2 ms for 50 us to 1 ms, measured under Wine; on Windows 16 ms where none is fine).
    void Gather(std::chrono::microseconds) override {}
    void Wake() override;
    [[nodiscard]] bool IsWoken() const { return m_isWoken; }
    [[nodiscard]] SOCKET Handle() const { return m_parts.socket.Get(); } ///< borrowed

    [[nodiscard]] Ipv4Endpoint LocalEndpoint() const override { return m_local; }
    [[nodiscard]] std::size_t ReceiveBufferBytes() const override;
    VxResult JoinGroup(Ipv4Address group, Ipv4Address interfaceAddress) override;
    VxResult LeaveGroup(Ipv4Address group, Ipv4Address interfaceAddress) override;

private:
    VxExpected<std::size_t> ReceiveWhatIsThere(std::span<Datagram> datagrams);
    VxResult ReceiveOne(Datagram& datagram);
    VxResult ReceiveRun(Datagram& datagram);
    VxResult Judge(int error);
    [[nodiscard]] bool IsTakingRuns() const { return m_parts.runs && !m_areRunsRefused; }
    [[nodiscard]] bool WillBeTold();
    VxResult WaitForData(std::chrono::steady_clock::time_point deadline);
    VxResult ChangeMembership(int option, Ipv4Address group, Ipv4Address interfaceAddress);

    const Parts m_parts;
    const Ipv4Endpoint m_local;
    const bool m_isSendingAtOnce;
    bool m_isEmpty = false;    // nothing was there at the last look; the receiving thread's, as the next one
    bool m_isSpreading = true; // runs over many pieces of memory; until the system refuses
    bool m_hasTakenRun = false;
    bool m_areRunsRefused = false; // by a system that had agreed
    std::atomic<bool> m_isWoken =
        false; // set before the event is, so that a consumed wake leaves no second one
};

} // namespace transport
