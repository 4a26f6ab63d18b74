#include "VxCamera/transport/SystemNetwork.h"

#include "VxCamera/transport/posix/PosixInterfaceList.h"
#include "VxCamera/transport/posix/PosixUdpSocket.h"
#include "VxCamera/transport/posix/PosixUdpSocketGroup.h"

#include <utility>

namespace transport {

namespace {

/// Opens the sockets of a POSIX system. Owner and thread: see ISocketFactory.
class PosixSocketFactory final : public ISocketFactory {
public:
    VxExpected<std::unique_ptr<IUdpSocket>> OpenUdp(const UdpSocketOptions& options) override
    {
        auto socket = PosixUdpSocket::Open(options);
        if (!socket)
            return socket.Error();
        return std::unique_ptr<IUdpSocket>(std::move(*socket));
    }
};

/// Makes groups of sockets of a POSIX system. Owner and thread: see ISocketGroupFactory.
class PosixSocketGroupFactory final : public ISocketGroupFactory {
public:
    VxExpected<std::unique_ptr<IUdpSocketGroup>> MakeGroup() override
    {
        return std::unique_ptr<IUdpSocketGroup>(std::make_unique<PosixUdpSocketGroup>());
    }
};

} // namespace

std::unique_ptr<ISocketFactory> MakeSystemSocketFactory()
{
    return std::make_unique<PosixSocketFactory>();
}

std::unique_ptr<ISocketGroupFactory> MakeSystemSocketGroupFactory()
{
    return std::make_unique<PosixSocketGroupFactory>();
}

std::unique_ptr<IInterfaceList> MakeSystemInterfaceList()
{
    return std::make_unique<PosixInterfaceList>();
}

} // namespace transport
