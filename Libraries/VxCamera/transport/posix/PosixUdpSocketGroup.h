#pragma once

#include "VxCamera/transport/IUdpSocketGroup.h"
#include "VxCamera/transport/posix/PosixUdpSocket.h"

#include <poll.h>

#include <memory>
#include <vector>

namespace transport {

/// UDP sockets of a POSIX system. Owner and thread: see IUdpSocketGroup.
class PosixUdpSocketGroup final : public IUdpSocketGroup {
public:
    VxExpected<IUdpSocket*> OpenUdp(const UdpSocketOptions& options) override;
    void Close(const IUdpSocket& socket) override;
    VxResult WaitForAny(std::chrono::microseconds timeout) override;

private:
    std::vector<std::unique_ptr<PosixUdpSocket>> m_sockets;
    std::vector<pollfd> m_waiting; // two of each socket, in the order of the sockets
};

} // namespace transport
