#include "VxSimulator/device/ControlFaults.h"

#include "VxBase/VxByteOrder.h"

#include "VxCamera/wire/gvcp/AckHeader.h"
#include "VxCamera/wire/gvcp/PendingAck.h"

#include <algorithm>
#include <array>

namespace simulator {

namespace {

using gvcp::Command;

// Chosen: other chances than for the packets of the stream.
constexpr std::uint64_t kSeedStep = 2;

// Fixed by the protocol: where an acknowledge says how long it is.
constexpr std::size_t kLengthOffset = 4;

bool IsSpared(const gvcp::CommandPacket& command)
{
    return command.header.command == Command::Discovery || command.header.command == Command::ForceIp;
}

bool IsWrite(const gvcp::CommandPacket& command)
{
    return command.header.command == Command::WriteReg || command.header.command == Command::WriteMem;
}

/// @return  the first register that is to be read or written; nothing for other commands
std::optional<std::uint32_t> AddressOf(const gvcp::CommandPacket& command)
{
    const bool isAccess = IsWrite(command) || command.header.command == Command::ReadReg ||
                          command.header.command == Command::ReadMem;
    if (!isAccess || command.payload.size() < sizeof(std::uint32_t))
        return std::nullopt;
    return VxLoadBe<std::uint32_t>(command.payload.first<sizeof(std::uint32_t)>());
}

} // namespace

ControlFaults::ControlFaults(const VxSimulatorFaults& faults)
    : m_faults(faults), m_random(faults.seed + kSeedStep)
{
}

bool ControlFaults::LosesCommand(const gvcp::CommandPacket& command)
{
    return !IsSpared(command) && m_faults.dropCommandShare > 0 && m_random.Next() < m_faults.dropCommandShare;
}

std::optional<gvcp::Datagram> ControlFaults::Refusal(const gvcp::CommandPacket& command) const
{
    if (!m_faults.refusedAddress || AddressOf(command) != m_faults.refusedAddress)
        return std::nullopt;
    return gvcp::MakeEmptyAck(m_faults.refusal, gvcp::AckOf(command.header.command),
                              command.header.requestId);
}

bool ControlFaults::TakesLong(const gvcp::CommandPacket& command) const
{
    return IsWrite(command) && m_faults.pendingTime.count() > 0 &&
           (!m_faults.pendingAddress || AddressOf(command) == m_faults.pendingAddress);
}

std::vector<TimedAnswer> ControlFaults::Pass(const gvcp::CommandPacket& command, const gvcp::Datagram& answer,
                                             IVxClock::Time now)
{
    if (IsSpared(command))
        return {{now, answer}};
    std::vector<TimedAnswer> sent;
    auto due = now + m_faults.answerDelay;
    if (TakesLong(command)) {
        sent.push_back({due, gvcp::MakePendingAck(command.header.requestId, {m_faults.pendingTime})});
        due += m_faults.pendingTime;
    }
    const bool isLost = m_faults.dropAnswerShare > 0 && m_random.Next() < m_faults.dropAnswerShare;
    if (!isLost)
        sent.push_back({due, WithLengthError(answer)});
    return sent;
}

gvcp::Datagram ControlFaults::WithLengthError(const gvcp::Datagram& answer) const
{
    if (m_faults.answerLengthError == 0 || answer.Bytes().size() < gvcp::kHeaderBytes)
        return answer;
    std::array<std::byte, gvcp::kMaxDatagramBytes> bytes{};
    std::ranges::copy(answer.Bytes(), bytes.begin());
    const auto field = std::span(bytes).subspan<kLengthOffset, sizeof(std::uint16_t)>();
    const int length = VxLoadBe<std::uint16_t>(field) + m_faults.answerLengthError;
    VxStoreBe<std::uint16_t>(field, static_cast<std::uint16_t>(std::clamp(length, 0, UINT16_MAX))); // clamped
    return gvcp::Datagram(std::span<const std::byte>(bytes).first(answer.Bytes().size()));
}

} // namespace simulator
