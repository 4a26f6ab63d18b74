#include "VxCamera/surface/FoundInterface.h"

FoundInterface::FoundInterface(const control::ScannedInterface& scanned)
    : m_displayName(scanned.description.name + " (" + scanned.description.address.ToString() + ")")
{
    m_devices.reserve(scanned.cameras.size());
    for (const control::FoundCamera& camera : scanned.cameras)
        m_devices.push_back(std::make_unique<FoundDevice>(camera));
}

const VxDeviceInfo* FoundInterface::GetDeviceInfo(std::size_t index) const
{
    return index < m_devices.size() ? m_devices[index].get() : nullptr;
}
