#include "VxCamera/control/DiscoveryScan.h"

#include "VxCamera/wire/gvcp/AckHeader.h"

#include <algorithm>
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

} // namespace

VxResult DiscoveryScan::Run(const Deadline& deadline, const OnAnswer& onAnswer)
{
    int questions = 0;
    auto nextQuestion = m_clock.Now();
    // Somebody who does not want to wait gets the answers that are there at once.
    for (auto now = m_clock.Now(); now < deadline() || questions == 0; now = m_clock.Now()) {
        if (questions < kMostQuestions && now >= nextQuestion) {
            if (auto asked = Ask(); !asked.IsOK())
                return asked;
            ++questions;
            nextQuestion = now + kAskInterval;
        }
        const auto end = questions < kMostQuestions ? std::min(deadline(), nextQuestion) : deadline();
        if (auto received = ReceiveUntil(end, onAnswer); !received.IsOK())
            return received;
    }
    return VxResult::Ok();
}

VxResult DiscoveryScan::Ask()
{
    const auto question = gvcp::MakeDiscoveryCommand(kRequestId, m_question.answer);
    VxResult result(VxError::NetworkError, "nobody to ask");
    for (const auto& target : m_question.targets) {
        auto sent = m_socket.SendTo(question.Bytes(), target);
        if (!result.IsOK())
            result = sent; // one target that can be reached is enough
    }
    return result;
}

/// Ends at the time given, or earlier when it is woken.
VxResult DiscoveryScan::ReceiveUntil(IVxClock::Time end, const OnAnswer& onAnswer)
{
    std::array<std::byte, kReceiveBytes> memory;
    for (;;) {
        const auto rest = std::chrono::ceil<std::chrono::microseconds>(end - m_clock.Now());
        transport::Datagram datagram{memory};
        const auto received = m_socket.Receive({&datagram, 1}, std::max(rest, 0us));
        if (!received) {
            const VxError code = received.Error().Code();
            return code == VxError::Timeout || code == VxError::Aborted ? VxResult::Ok() : received.Error();
        }
        const auto packet = gvcp::ParseAck(datagram.Bytes());
        if (packet && packet->header.ack == gvcp::Ack::Discovery && packet->header.ackId == kRequestId) {
            if (auto camera = gvcp::ParseDiscoveryAck(packet->payload))
                onAnswer({datagram.sender, *camera});
        }
        if (m_clock.Now() >= end)
            return VxResult::Ok();
    }
}

} // namespace control
