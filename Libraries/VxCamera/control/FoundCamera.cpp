#include "VxCamera/control/FoundCamera.h"

#include <map>
#include <set>

namespace control {

void MarkConfigurations(std::vector<ScannedInterface>& interfaces)
{
    std::map<std::uint32_t, std::set<gvcp::MacAddress>> users;
    for (const ScannedInterface& scanned : interfaces)
        for (const FoundCamera& found : scanned.cameras)
            users[found.camera.ipAddress].insert(found.camera.mac);

    for (ScannedInterface& scanned : interfaces) {
        for (FoundCamera& found : scanned.cameras) {
            const transport::Ipv4Address address(found.camera.ipAddress);
            const bool isInSubnet = address.IsSameSubnet(found.via.address, found.via.mask);
            const bool isUnique = users[found.camera.ipAddress].size() == 1;
            found.isConfigurationValid = !address.IsUnspecified() && isInSubnet && isUnique;
        }
    }
}

} // namespace control
