#pragma once

#include "VxCamera/receive/BlockAssembler.h"
#include "VxCamera/receive/StreamLink.h"

#include <cstdint>
#include <memory>

namespace receive {

/// Sends requests for packets to the camera, from the link's own socket.
///
/// Owner:  StreamReceiver, by value.
/// Thread: the receiver's.
class ResendSender final : public IResendChannel {
public:
    /// @param link  null: this host does not control the camera
    void SetLink(std::shared_ptr<const StreamLink> link) { m_link = std::move(link); }
    [[nodiscard]] const StreamLink* Link() const { return m_link.get(); }

    [[nodiscard]] bool IsOpen() const override { return m_link != nullptr && m_link->resend != nullptr; }
    void Ask(gvsp::IdMode idMode, std::uint64_t blockId, std::uint32_t firstPacketId,
             std::uint32_t lastPacketId) override;

private:
    std::shared_ptr<const StreamLink> m_link; // shared with the receiver, which may set another one
    std::uint16_t m_requestId = 0;
};

} // namespace receive
