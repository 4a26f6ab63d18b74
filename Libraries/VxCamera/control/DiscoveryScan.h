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

/// Asks for cameras through one socket and takes their answers. Waits for nothing: when to call is decided by
/// who has several of these.
///
/// Questions are repeated, because datagrams get lost; a camera may therefore answer several times. What is
/// no discovery acknowledge is passed over.
///
/// Owner:  InterfaceScans, for one search. Borrows the socket.
/// Thread: one.
class DiscoveryScan {
public:
    using OnAnswer = std::function<void(const CameraAnswer&)>;
    using Time = IVxClock::Time;

    /// Whom to ask, and whether answers may be broadcast.
    struct Question {
        std::vector<transport::Ipv4Endpoint> targets;
        gvcp::DiscoveryAnswer answer = gvcp::DiscoveryAnswer::Unicast;
    };

    DiscoveryScan(transport::IUdpSocket& socket, Question question)
        : m_socket(socket), m_question(std::move(question))
    {
    }

    /// When to ask; the earliest time there is before the first question, the latest after the last one.
    [[nodiscard]] Time NextQuestion() const { return m_nextQuestion; }
    [[nodiscard]] bool HasAsked() const { return m_questions > 0; }

    /// @return  NETWORK_ERROR when no target can be reached
    VxResult Ask(Time now);

    /// Hands on the answers that are there, at most a fixed number.
    /// @return  NETWORK_ERROR when reception failed; answers may have come before
    VxResult TakeAnswers(const OnAnswer& onAnswer);

private:
    transport::IUdpSocket& m_socket;
    const Question m_question;
    int m_questions = 0;
    Time m_nextQuestion = Time::min();
};

} // namespace control
