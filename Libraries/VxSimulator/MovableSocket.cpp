#include "VxSimulator/MovableSocket.h"

#include <utility>

namespace simulator {

void MovableSocket::MoveTo(std::unique_ptr<transport::IUdpSocket> socket)
{
    std::shared_ptr<transport::IUdpSocket> old(std::move(socket));
    {
        const VxLock lock(m_mutex);
        m_socket.swap(old);
    }
    old->Wake();
}

std::shared_ptr<transport::IUdpSocket> MovableSocket::Socket() const
{
    const VxLock lock(m_mutex);
    return m_socket;
}

} // namespace simulator
