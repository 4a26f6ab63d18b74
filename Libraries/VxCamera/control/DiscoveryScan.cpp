#include "VxCamera/control/DiscoveryScan.h"

#include "VxCamera/wire/gvcp/AckHeader.h"

#include <array>

namespace control {

namespace {

using namespace std::chrono_literals;

// Chosen: any number but 0; all scans use the same, so that an answer to any question counts.
constexpr std::uint16_t kRequestId = 1;

// Chosen: three questions fit into the shortest search.
constexpr auto kAskInterval = 120ms;
constexpr int kMostQuestions = 3;

// Chosen: larger than an answer (256 bytes).
constexpr std::size_t kReceiveBytes = 1024;

// Chosen: what the system keeps for a socket at most; whoever floods one must not keep the others waiting.
constexpr int kMostAnswersAtOnce = 256;

} // namespace

VxResult DiscoveryScan::Ask(Time now)
{
    ++m_questions;
    m_nextQuestion = m_questions < kMostQuestions ? now + kAskInterval : Time::max();
    const auto question = gvcp::MakeDiscoveryCommand(kRequestId, m_question.answer);
    VxResult result(VxError::NetworkError, "nobody to ask");
    for (const auto& target : m_question.targets) {
        auto sent = m_socket.SendTo(question.Bytes(), target);
        if (!result.IsOK())
            result = sent; // one target that can be reached is enough
    }
    return result;
}

VxResult DiscoveryScan::TakeAnswers(const OnAnswer& onAnswer)
{
    std::array<std::byte, kReceiveBytes> memory;
    for (int i = 0; i < kMostAnswersAtOnce; ++i) {
        transport::Datagram datagram{memory};
        const auto received = m_socket.Receive({&datagram, 1}, 0us);
        const VxError code = received.Result().Code();
        if (code == VxError::Timeout)
            return VxResult::Ok();
        if (code == VxError::Aborted) // woken: datagrams may be there all the same
            continue;
        if (!received)
            return received.Error();
        const auto packet = gvcp::ParseAck(datagram.Bytes());
        if (packet && packet->header.ack == gvcp::Ack::Discovery && packet->header.ackId == kRequestId) {
            if (auto camera = gvcp::ParseDiscoveryAck(packet->payload))
                onAnswer({datagram.sender, *camera});
        }
    }
    return VxResult::Ok();
}

} // namespace control
