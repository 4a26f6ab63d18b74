#pragma once

#include "VxBase/VxClock.h"
#include "VxBase/VxResult.h"
#include "VxCamera/transport/IUdpSocket.h"
#include "VxCamera/wire/gvcp/Discovery.h"

#include <functional>
#include <vector>

namespace control {

/// A camera's answer to discovery.
struct CameraAnswer {
    transport::Ipv4Endpoint sender;
    gvcp::DiscoveryAck camera;
};

/// Asks for cameras through one socket and collects their answers.
///
/// Questions are repeated, because datagrams get lost; a camera may therefore answer several times. What is
/// no discovery acknowledge is passed over.
///
/// Owner:  CameraFinder, for one search. Borrows socket and clock.
/// Thread: one; others may wake the socket.
class DiscoveryScan {
public:
    using OnAnswer = std::function<void(const CameraAnswer&)>;

    /// @return  when to stop; asked before every wait, so that a wake of the socket can end a scan early
    using Deadline = std::function<IVxClock::Time()>;

    /// Whom to ask, and whether answers may be broadcast.
    struct Question {
        std::vector<transport::Ipv4Endpoint> targets;
        gvcp::DiscoveryAnswer answer = gvcp::DiscoveryAnswer::Unicast;
    };

    DiscoveryScan(transport::IUdpSocket& socket, const IVxClock& clock, Question question)
        : m_socket(socket), m_clock(clock), m_question(std::move(question))
    {
    }

    /// @return  NETWORK_ERROR when no target could be reached or reception failed; answers may have come
    /// before
    VxResult Run(const Deadline& deadline, const OnAnswer& onAnswer);

private:
    VxResult Ask();
    VxResult ReceiveUntil(IVxClock::Time end, const OnAnswer& onAnswer);

    transport::IUdpSocket& m_socket;
    const IVxClock& m_clock;
    const Question m_question;
};

} // namespace control
