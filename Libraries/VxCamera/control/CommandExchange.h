#pragma once

#include "VxBase/VxClock.h"
#include "VxCamera/control/CommandSettings.h"
#include "VxCamera/transport/Ipv4Endpoint.h"
#include "VxCamera/wire/gvcp/AckHeader.h"

#include <cstddef>
#include <cstdint>
#include <span>

namespace control {

/// One command on its way: decides what a datagram or the passing of time means for it.
///
/// An acknowledge counts when it comes from the camera's address and port and carries the command's id and
/// code. "Pending" lengthens the wait and ends the retries: the camera is at work, a second command would be
/// done twice.
///
/// Owner:  CommandClient, for the time of one command.
/// Thread: one.
class CommandExchange {
public:
    using Time = IVxClock::Time;

    struct Command {
        transport::Ipv4Endpoint device;
        std::uint16_t requestId = 0;
        gvcp::Ack expectedAck{};
    };
    enum class State {
        Waiting,
        SendAgain, ///< send the same datagram once more, then wait
        Pending,   ///< the camera needs longer; to be waited for like Waiting
        Answered,
        Busy, ///< refused for now, so nothing was done
        TimedOut,
    };

    /// The command has just been sent for the first time.
    /// @param end  it is given up then at the latest, whatever the camera asks for
    CommandExchange(const Command& command, const CommandSettings& settings, Time now, Time end);

    /// @return  Waiting for what does not belong to this command; anything else is a sign of life
    [[nodiscard]] State OnDatagram(const transport::Ipv4Endpoint& sender, std::span<const std::byte> bytes,
                                   Time now);
    [[nodiscard]] State OnTime(Time now);

    /// When OnTime must be called unless a datagram comes before.
    [[nodiscard]] Time WaitUntil() const { return m_deadline; }

    /// After Answered: borrowed from the datagram. Its status may be an error.
    [[nodiscard]] const gvcp::AckPacket& Answer() const { return m_answer; }

private:
    State OnPending(std::span<const std::byte> payload, Time now);

    const Command m_command;
    const CommandSettings m_settings;
    const Time m_end;
    Time m_deadline; // not after m_end
    unsigned m_sent = 1;
    unsigned m_pendingCount = 0;
    gvcp::AckPacket m_answer;
};

} // namespace control
