#pragma once

#include "VxBase/VxClock.h"
#include "VxBase/VxExpected.h"
#include "VxBase/VxMutex.h"
#include "VxBase/VxResult.h"
#include "VxCamera/control/CommandSettings.h"
#include "VxCamera/transport/IUdpSocket.h"
#include "VxCamera/wire/gvcp/AckHeader.h"
#include "VxCamera/wire/gvcp/Datagram.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <utility>

namespace control {

class CommandExchange;

/// Reads and writes a camera's registers and memory: one command at a time, repeated until it is
/// acknowledged.
///
/// The socket's address and port are who we are to the camera, so there is one client for a whole session.
///
/// Owner:  DeviceSession. Borrows the clock.
/// Thread: any; a command waits for the one before it. m_mutex comes before m_endMutex.
class CommandClient {
public:
    CommandClient(std::unique_ptr<transport::IUdpSocket> socket, const transport::Ipv4Endpoint& device,
                  const IVxClock& clock);
    CommandClient(const CommandClient&) = delete;
    CommandClient& operator=(const CommandClient&) = delete;

    /// Failures of all of these: TIMEOUT (no acknowledge), ACCESS_DENIED, NOT_WRITABLE, NOT_SUPPORTED, BUSY,
    /// CAMERA_ERROR (any other status of the camera, named in the description), INVALID_DATA (an acknowledge
    /// that is none), NETWORK_ERROR, and what End was given.
    [[nodiscard]] VxExpected<std::uint32_t> ReadRegister(std::uint32_t address);
    [[nodiscard]] VxExpected<std::uint32_t> ReadRegister(std::uint32_t address,
                                                         const CommandSettings& settings);
    VxResult WriteRegister(std::uint32_t address, std::uint32_t value);
    VxResult WriteRegister(std::uint32_t address, std::uint32_t value, const CommandSettings& settings);

    /// Any address and length; what is not aligned is read as part of what is. TIMEOUT also where all of it
    /// together takes longer than 10 s; the command under way then is not broken off.
    VxResult ReadMemory(std::uint32_t address, std::span<std::byte> bytes);

    /// Any address and length; words of which only a part is written are read before. TIMEOUT like
    /// ReadMemory: what comes first is written then.
    VxResult WriteMemory(std::uint32_t address, std::span<const std::byte> bytes);

    /// Fails every command from now on, also the one under way, with this result. The first call counts.
    void End(const VxResult& reason);

    /// Ends at this time unless End is called before; the command under way ends by then, too. The first call
    /// counts.
    void EndAt(IVxClock::Time time, const VxResult& reason);

    /// Fails every command with TIMEOUT from this time on, also the one under way. See CommandLimit.
    void LimitUntil(IVxClock::Time time) { m_limit = time.time_since_epoch(); }
    void LiftLimit() { LimitUntil(kNoLimit); }
    /// Without a limit nothing happens.
    void PostponeLimit(IVxClock::Time::duration duration);
    [[nodiscard]] IVxClock::Time Limit() const { return IVxClock::Time(m_limit.load()); }

    /// @param onDenied  called, from any thread, when the camera refuses a write with ACCESS_DENIED; must
    ///                  neither wait nor use the client. Set before others use the client.
    void SetDenialListener(std::function<void()> onDenied) { m_onDenied = std::move(onDenied); }

    /// OK, or what End was given.
    [[nodiscard]] VxResult EndReason() const;
    /// Whether EndReason is not OK; costs no lock.
    [[nodiscard]] bool IsEnded() const { return m_isEnded; }

    /// Lets time pass; datagrams that arrive meanwhile are dropped. Not while others use the client.
    void Pause(std::chrono::milliseconds duration);

    /// @param change  must not use the client. Nobody else's change gets lost, nor does the command under way
    ///                see it.
    void UpdateSettings(const std::function<void(CommandSettings&)>& change);
    [[nodiscard]] CommandSettings Settings() const;

    /// @param isSupported  false: WriteMemory writes register by register
    void SetWriteMemorySupported(bool isSupported) { m_canWriteMemory = isSupported; }

    /// When the camera was last heard of; the client's birth before that.
    [[nodiscard]] IVxClock::Time LastAnswer() const;

    [[nodiscard]] IVxClock::Time Now() const { return m_clock.Now(); }
    [[nodiscard]] const transport::Ipv4Endpoint& Device() const { return m_device; }
    [[nodiscard]] transport::Ipv4Endpoint Local() const { return m_socket->LocalEndpoint(); }

private:
    static constexpr IVxClock::Time kNoLimit = IVxClock::Time::max();

    /// A command before it has its request id.
    struct Request {
        const char* verb; ///< for messages: "read register"
        std::uint32_t address;
        gvcp::Ack ack;
        std::function<VxExpected<gvcp::Datagram>(std::uint16_t requestId)> make;
        std::function<VxResult(std::span<const std::byte> payload)> take; ///< of a good acknowledge
    };

    VxResult Execute(const Request& request, const CommandSettings& settings);
    VxResult SendAndAwait(const Request& request, const CommandSettings& settings, IVxClock::Time end)
        VX_REQUIRES(m_mutex);
    VxResult Await(CommandExchange& exchange, const gvcp::Datagram& command, const Request& request)
        VX_REQUIRES(m_mutex);
    VxResult Judge(const gvcp::AckPacket& answer, const Request& request) const;
    VxResult Unanswered(const Request& request, const CommandSettings& settings) VX_REQUIRES(m_mutex);
    VxResult ReadBlock(std::uint32_t address, std::span<std::byte> bytes, IVxClock::Time end);
    VxResult WriteBlock(std::uint32_t address, std::span<const std::byte> bytes, IVxClock::Time end);
    [[nodiscard]] VxResult CheckTime(const char* verb, std::uint32_t address, IVxClock::Time end) const;
    [[nodiscard]] bool HasEnded();
    [[nodiscard]] std::string Describe(const Request& request) const;
    [[nodiscard]] std::string Describe(const char* verb, std::uint32_t address) const;

    const std::unique_ptr<transport::IUdpSocket> m_socket;
    const transport::Ipv4Endpoint m_device;
    const IVxClock& m_clock; // borrowed: outlives the session
    std::atomic<bool> m_canWriteMemory = true;
    std::atomic<IVxClock::Time::duration> m_lastAnswer;
    std::atomic<IVxClock::Time::duration> m_endTime{IVxClock::Time::duration::max()}; // see EndAt
    std::atomic<IVxClock::Time::duration> m_limit{kNoLimit.time_since_epoch()};
    std::function<void()> m_onDenied; // may be empty

    VxMutex m_mutex; // one command at a time
    std::uint16_t m_requestId VX_GUARDED_BY(m_mutex) = 0;
    bool m_isSilent VX_GUARDED_BY(m_mutex) = false; // the last command got no answer at all

    std::atomic<bool> m_isEnded = false; // whether m_endReason is not OK
    mutable VxMutex m_endMutex;
    CommandSettings m_settings VX_GUARDED_BY(m_endMutex);
    VxResult m_endReason VX_GUARDED_BY(m_endMutex) = VxResult::Ok();
    VxResult m_lateReason VX_GUARDED_BY(m_endMutex) = VxResult::Ok(); // m_endReason from m_endTime on
};

/// Bounds the time of all commands of a client for one scope.
class CommandLimit final {
public:
    CommandLimit(CommandClient& client, IVxClock::Time end) : m_client(client) { client.LimitUntil(end); }
    ~CommandLimit() { m_client.LiftLimit(); }
    CommandLimit(const CommandLimit&) = delete;
    CommandLimit& operator=(const CommandLimit&) = delete;

private:
    CommandClient& m_client; // borrowed: outlives the scope
};

} // namespace control
