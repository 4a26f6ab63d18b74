#include "VxCamera/surface/FoundInterface.h"

#include <string>

namespace {

std::string DisplayName(const control::ScannedInterface& scanned)
{
    std::string addresses;
    for (const transport::Ipv4Address address : scanned.addresses)
        addresses += (addresses.empty() ? "" : ", ") + address.ToString();
    return scanned.description.name + " (" + addresses + ")";
}

} // namespace

FoundInterface::FoundInterface(const control::ScannedInterface& scanned) : m_displayName(DisplayName(scanned))
{
    m_devices.reserve(scanned.cameras.size());
    for (const control::FoundCamera& camera : scanned.cameras)
        m_devices.push_back(std::make_unique<FoundDevice>(camera));
}

const VxDeviceInfo* FoundInterface::GetDeviceInfo(std::size_t index) const
{
    return index < m_devices.size() ? m_devices[index].get() : nullptr;
}
