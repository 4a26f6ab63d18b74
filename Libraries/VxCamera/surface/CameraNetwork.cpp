#include "VxCamera/surface/CameraNetwork.h"

#include <utility>

#include "VxCamera/control/InterfaceMemory.h"
#include "VxCamera/transport/SystemNetwork.h"

namespace {

// Shared: the device that has found a camera and the stream that is then opened for it are separate objects.
control::InterfaceMemory g_interfaceMemory;

} // namespace

CameraNetwork::CameraNetwork()
    : CameraNetwork(transport::MakeSystemSocketFactory(), transport::MakeSystemSocketGroupFactory(),
                    transport::MakeSystemInterfaceList())
{
}

CameraNetwork::CameraNetwork(std::unique_ptr<transport::ISocketFactory> sockets,
                             std::unique_ptr<transport::ISocketGroupFactory> groups,
                             std::unique_ptr<transport::IInterfaceList> interfaces)
    : m_sockets(std::move(sockets)), m_groups(std::move(groups)), m_interfaces(std::move(interfaces))
{
}

CameraNetwork::~CameraNetwork() = default;

control::CameraFinder::Network CameraNetwork::Parts()
{
    return {*m_groups, *m_interfaces, m_clock, &g_interfaceMemory};
}
