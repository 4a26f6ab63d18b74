#pragma once

#include "VxCamera/wire/gvcp/CommandHeader.h"
#include "VxCamera/wire/gvcp/Discovery.h"
#include "VxCamera/wire/gvcp/Status.h"
#include "support/network/FakeUdpSocket.h"

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string_view>
#include <vector>

/// The control side of a camera as tests need it: registers, control privilege, heartbeat, and misbehaviour
/// on demand.
///
/// Owner:  the test. Borrows the clock.
/// Thread: one.
class FakeCamera {
public:
    /// A command that arrived.
    struct Seen {
        gvcp::Command command{};
        std::uint16_t requestId = 0;
        std::uint32_t address = 0;
        std::size_t bytes = 0; ///< read or written
        IVxClock::Time time;
    };

    explicit FakeCamera(FakeClock& clock);

    /// For sockets: answers what is addressed to this camera.
    void OnDatagram(FakeUdpSocket& socket, std::span<const std::byte> bytes,
                    const transport::Ipv4Endpoint& destination);

    void SetRegister(std::uint32_t address, std::uint32_t value);
    [[nodiscard]] std::uint32_t Register(std::uint32_t address) const;
    void SetMemory(std::uint32_t address, std::string_view text);

    /// How many commands with this code arrived.
    [[nodiscard]] std::size_t Count(gvcp::Command command) const;

    transport::Ipv4Endpoint endpoint{transport::Ipv4Address(192, 168, 1, 20), 3956};
    gvcp::DiscoveryAck identity;
    std::vector<std::byte> memory; ///< registers live in it, too
    std::vector<Seen> seen;

    std::chrono::microseconds delay{100};  ///< until an answer arrives
    bool isGone = false;                   ///< hears nothing
    bool isIgnoringWritesOfOthers = false; ///< no answer instead of a refusal
    int dropCommands = 0;                  ///< of the next ones, as if lost on the way
    int dropAnswers = 0;                   ///< of the next ones: done, but the answer is lost
    int busy = 0;                          ///< of the next ones are refused with that status
    std::vector<std::uint16_t> pendingMs;  ///< announced before the next answer, which comes after them
    std::map<std::uint32_t, gvcp::Status> refused; ///< by address
    std::optional<std::uint16_t> writtenBytes; ///< how far a WRITEMEM is said to have come, if not to its end
    gvcp::Status forceIpStatus = gvcp::Status::Success;
    bool isSilentAboutForceIp = false; ///< its acknowledge gets lost on the way to another subnet
    std::optional<transport::Ipv4Endpoint> controller;
    IVxClock::Time lastCommandOfController;

private:
    void Answer(FakeUdpSocket& socket, const gvcp::CommandPacket& packet);
    [[nodiscard]] gvcp::Datagram Execute(const gvcp::CommandPacket& packet,
                                         const transport::Ipv4Endpoint& sender);
    [[nodiscard]] gvcp::Datagram ForceIp(const gvcp::CommandPacket& packet);
    [[nodiscard]] gvcp::Datagram Read(const gvcp::CommandPacket& packet, std::uint32_t address,
                                      std::size_t bytes);
    [[nodiscard]] gvcp::Datagram Write(const gvcp::CommandPacket& packet, std::uint32_t address,
                                       std::span<const std::byte> bytes,
                                       const transport::Ipv4Endpoint& sender);
    [[nodiscard]] gvcp::Status WritePrivilege(std::uint32_t value, const transport::Ipv4Endpoint& sender);
    void LetHeartbeatExpire();

    FakeClock& m_clock;
};
