#include "VxCamera/transport/SystemNetwork.h"

#include "VxCamera/transport/posix/PosixInterfaceList.h"
#include "VxCamera/transport/posix/PosixUdpSocket.h"

namespace transport {

namespace {

/// Opens the sockets of a POSIX system. Owner and thread: see ISocketFactory.
class PosixSocketFactory final : public ISocketFactory {
public:
    VxExpected<std::unique_ptr<IUdpSocket>> OpenUdp(const UdpSocketOptions& options) override
    {
        return PosixUdpSocket::Open(options);
    }
};

} // namespace

std::unique_ptr<ISocketFactory> MakeSystemSocketFactory()
{
    return std::make_unique<PosixSocketFactory>();
}

std::unique_ptr<IInterfaceList> MakeSystemInterfaceList()
{
    return std::make_unique<PosixInterfaceList>();
}

} // namespace transport
