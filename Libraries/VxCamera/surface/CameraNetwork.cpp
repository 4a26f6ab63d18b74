#include "VxCamera/surface/CameraNetwork.h"

#include "VxCamera/transport/SystemNetwork.h"

CameraNetwork::CameraNetwork()
    : m_sockets(transport::MakeSystemSocketFactory()), m_interfaces(transport::MakeSystemInterfaceList())
{
}

CameraNetwork::~CameraNetwork() = default;
