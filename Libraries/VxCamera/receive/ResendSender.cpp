#include "VxCamera/receive/ResendSender.h"

#include "VxCamera/wire/gvcp/PacketResend.h"

#include <tuple>

namespace receive {

void ResendSender::Ask(gvsp::IdMode idMode, std::uint64_t blockId, std::uint32_t firstPacketId,
                       std::uint32_t lastPacketId)
{
    if (!IsOpen())
        return;
    m_requestId = m_requestId == UINT16_MAX ? std::uint16_t{1} : static_cast<std::uint16_t>(m_requestId + 1);
    const bool isExtended = idMode == gvsp::IdMode::Extended;
    const gvcp::PacketResendCommand command{.idWidth = isExtended ? gvcp::IdWidth::Extended
                                                                  : gvcp::IdWidth::Standard,
                                            .channel = m_link->channel,
                                            .blockId = blockId,
                                            .firstPacketId = firstPacketId,
                                            .lastPacketId = lastPacketId};
    // A request that cannot be sent now is repeated like one that is not answered.
    std::ignore =
        m_link->resend->SendTo(gvcp::MakePacketResendCommand(m_requestId, command).Bytes(), m_link->command);
}

} // namespace receive
