#include "VxCamera/surface/FoundDevice.h"

#include "VxCamera/control/ConnectionId.h"

FoundDevice::FoundDevice(const control::FoundCamera& found)
    : m_connectionId(control::ConnectionId::Of(found.camera)),
      m_modelName(found.camera.modelName),
      m_manufacturerName(found.camera.manufacturerName),
      m_serialNumber(found.camera.serialNumber),
      m_userDefinedName(found.camera.userDefinedName),
      m_ipAddress(transport::Ipv4Address(found.camera.ipAddress).ToString()),
      m_isConfigurationValid(found.IsConfigurationValid())
{
}
