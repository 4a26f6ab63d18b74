#pragma once

#include "VxCamera/transport/IInterfaceList.h"

#include <vector>

/// Interfaces that a test makes up.
///
/// Owner:  the test.
/// Thread: one.
class FakeInterfaceList final : public transport::IInterfaceList {
public:
    VxExpected<std::vector<transport::NetworkInterface>> Interfaces() override { return interfaces; }
    VxExpected<transport::Ipv4Address> LocalAddressTowards(transport::Ipv4Address remote) override
    {
        if (route.IsUnspecified())
            return VxResult(VxError::NetworkError, "no route to " + remote.ToString());
        return route;
    }

    std::vector<transport::NetworkInterface> interfaces;
    transport::Ipv4Address route; ///< of every address; unspecified: none
};
