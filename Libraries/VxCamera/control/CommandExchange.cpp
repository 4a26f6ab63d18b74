#include "VxCamera/control/CommandExchange.h"

#include "VxCamera/wire/gvcp/PendingAck.h"

#include <algorithm>

namespace control {

namespace {

using namespace std::chrono_literals;

// Chosen: a camera may ask for patience again and again, but not for so long at once.
constexpr auto kLongestPending = 10s;
constexpr unsigned kMostPendings = 100;

} // namespace

CommandExchange::CommandExchange(const Command& command, const CommandSettings& settings, Time now, Time end)
    : m_command(command),
      m_settings(settings),
      m_end(end),
      m_deadline(std::min<Time>(now + settings.ackTimeout, end))
{
}

CommandExchange::State CommandExchange::OnDatagram(const transport::Ipv4Endpoint& sender,
                                                   std::span<const std::byte> bytes, Time now)
{
    if (sender != m_command.device)
        return State::Waiting;
    const auto packet = gvcp::ParseAck(bytes);
    if (!packet || packet->header.ackId != m_command.requestId)
        return State::Waiting;
    if (packet->header.ack == gvcp::Ack::Pending)
        return OnPending(packet->payload, now);
    if (packet->header.ack != m_command.expectedAck)
        return State::Waiting;
    if (packet->header.status == gvcp::Status::Busy)
        return State::Busy;
    m_answer = *packet;
    return State::Answered;
}

CommandExchange::State CommandExchange::OnPending(std::span<const std::byte> payload, Time now)
{
    const auto pending = gvcp::ParsePendingAck(payload);
    if (!pending || m_pendingCount == kMostPendings)
        return State::Waiting;
    ++m_pendingCount;
    const auto promised = std::min<std::chrono::milliseconds>(pending->timeToCompletion, kLongestPending);
    m_deadline =
        std::min<Time>(now + promised + m_settings.ackTimeout, m_end); // the answer needs its way, too
    return State::Pending;
}

CommandExchange::State CommandExchange::OnTime(Time now)
{
    if (now < m_deadline)
        return State::Waiting;
    if (now >= m_end || m_pendingCount > 0 || m_sent > m_settings.retries)
        return State::TimedOut;
    ++m_sent;
    m_deadline = std::min<Time>(now + m_settings.ackTimeout, m_end);
    return State::SendAgain;
}

} // namespace control
