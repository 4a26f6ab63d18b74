#include "VxCamera/transport/SystemNetwork.h"

#include "VxCamera/transport/win/WinInterfaceList.h"
#include "VxCamera/transport/win/WinUdpSocket.h"

namespace transport {

namespace {

/// Opens the sockets of Windows. Owner and thread: see ISocketFactory.
class WinSocketFactory final : public ISocketFactory {
public:
    VxExpected<std::unique_ptr<IUdpSocket>> OpenUdp(const UdpSocketOptions& options) override
    {
        return WinUdpSocket::Open(options);
    }
};

} // namespace

std::unique_ptr<ISocketFactory> MakeSystemSocketFactory()
{
    return std::make_unique<WinSocketFactory>();
}

std::unique_ptr<IInterfaceList> MakeSystemInterfaceList()
{
    return std::make_unique<WinInterfaceList>();
}

} // namespace transport
