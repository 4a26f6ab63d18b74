#pragma once

#include "VxCamera/transport/IUdpSocketGroup.h"
#include "VxCamera/transport/win/WinUdpSocket.h"

#include <memory>
#include <vector>

namespace transport {

/// UDP sockets of Windows. Owner and thread: see IUdpSocketGroup.
class WinUdpSocketGroup final : public IUdpSocketGroup {
public:
    /// @return  OUT_OF_MEMORY when the system has no event left
    [[nodiscard]] static VxExpected<std::unique_ptr<WinUdpSocketGroup>> Make();

    /// @param event  see WinUdpSocket
    explicit WinUdpSocketGroup(std::shared_ptr<const KernelHandle> event) : m_event(std::move(event)) {}

    VxExpected<IUdpSocket*> OpenUdp(const UdpSocketOptions& options) override;
    void Close(const IUdpSocket& socket) override;
    VxResult WaitForAny(std::chrono::microseconds timeout) override;

private:
    VxExpected<bool> IsAnyReady();

    const std::shared_ptr<const KernelHandle> m_event; // shared with all sockets: waits for 64 at most
    std::vector<std::unique_ptr<WinUdpSocket>> m_sockets;
    std::vector<WSAPOLLFD> m_polled; // one of each socket
};

} // namespace transport
