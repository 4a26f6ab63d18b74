#include "VxDSSource/stream/AppliedConnection.h"

#include "VxDSSource/filter/SettingsRecord.h"

namespace vxds {

bool AppliedConnection::DiffersFrom(const SettingsRecord& settings, bool hasDevice) const
{
    if (settings.Text(Setting::DeviceId) != connectionId)
        return true;
    if (settings.Number(Setting::ParamChannel) != channel)
        return true;

    const std::uint32_t role = settings.Number(Setting::Role);
    if (role == kRoleController)
        return settings.Text(Setting::ParamSource) != sourceSelector || !hasDevice;
    if (role == kRoleUnicast)
        return hasDevice || settings.Number(Setting::UnicastPort) != unicastPort;
    if (role == kRoleMulticast)
        return hasDevice || settings.Text(Setting::MulticastAddress) != multicastAddress ||
               settings.Number(Setting::MulticastPort) != multicastPort;
    return hasDevice; // only a controller has one
}

} // namespace vxds
