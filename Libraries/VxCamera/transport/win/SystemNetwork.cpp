#include "VxCamera/transport/SystemNetwork.h"

#include "VxCamera/transport/win/WinInterfaceList.h"
#include "VxCamera/transport/win/WinUdpSocket.h"
#include "VxCamera/transport/win/WinUdpSocketGroup.h"

#include <utility>

namespace transport {

namespace {

/// Opens the sockets of Windows. Owner and thread: see ISocketFactory.
class WinSocketFactory final : public ISocketFactory {
public:
    VxExpected<std::unique_ptr<IUdpSocket>> OpenUdp(const UdpSocketOptions& options) override
    {
        auto event = MakeSocketEvent();
        if (!event)
            return event.Error();
        auto socket = WinUdpSocket::Open(options, std::move(*event));
        if (!socket)
            return socket.Error();
        return std::unique_ptr<IUdpSocket>(std::move(*socket));
    }
};

/// Makes groups of sockets of Windows. Owner and thread: see ISocketGroupFactory.
class WinSocketGroupFactory final : public ISocketGroupFactory {
public:
    VxExpected<std::unique_ptr<IUdpSocketGroup>> MakeGroup() override
    {
        auto group = WinUdpSocketGroup::Make();
        if (!group)
            return group.Error();
        return std::unique_ptr<IUdpSocketGroup>(std::move(*group));
    }
};

} // namespace

std::unique_ptr<ISocketFactory> MakeSystemSocketFactory()
{
    return std::make_unique<WinSocketFactory>();
}

std::unique_ptr<ISocketGroupFactory> MakeSystemSocketGroupFactory()
{
    return std::make_unique<WinSocketGroupFactory>();
}

std::unique_ptr<IInterfaceList> MakeSystemInterfaceList()
{
    return std::make_unique<WinInterfaceList>();
}

} // namespace transport
