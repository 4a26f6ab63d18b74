#include "VxCamera/surface/CameraNetwork.h"

#include "VxCamera/control/InterfaceMemory.h"
#include "VxCamera/transport/SystemNetwork.h"

namespace {

// Shared: the device that has found a camera and the stream that is then opened for it are separate objects.
control::InterfaceMemory g_interfaceMemory;

} // namespace

CameraNetwork::CameraNetwork()
    : m_sockets(transport::MakeSystemSocketFactory()),
      m_groups(transport::MakeSystemSocketGroupFactory()),
      m_interfaces(transport::MakeSystemInterfaceList())
{
}

CameraNetwork::~CameraNetwork() = default;

control::CameraFinder::Network CameraNetwork::Parts()
{
    return {*m_groups, *m_interfaces, m_clock, &g_interfaceMemory};
}
