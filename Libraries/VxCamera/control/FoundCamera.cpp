#include "VxCamera/control/FoundCamera.h"

#include <map>
#include <set>

namespace control {

void MarkConfigurations(std::vector<FoundCamera>& cameras)
{
    std::map<std::uint32_t, std::set<gvcp::MacAddress>> users;
    for (const FoundCamera& found : cameras)
        users[found.camera.ipAddress].insert(found.camera.mac);

    for (FoundCamera& found : cameras) {
        if (found.Address().IsUnspecified())
            found.fault = ConfigurationFault::NoAddress;
        else if (!found.Address().IsSameSubnet(found.via.address, found.via.mask))
            found.fault = ConfigurationFault::OtherSubnet;
        else if (users[found.camera.ipAddress].size() > 1)
            found.fault = ConfigurationFault::SharedAddress;
        else
            found.fault = ConfigurationFault::None;
    }
}

} // namespace control
