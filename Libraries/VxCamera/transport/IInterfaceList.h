#pragma once

#include "VxBase/VxExpected.h"
#include "VxCamera/transport/NetworkInterface.h"

#include <vector>

namespace transport {

/// The network interfaces of this machine.
///
/// Owner:  the composition root.
/// Thread: any.
class IInterfaceList {
public:
    IInterfaceList(const IInterfaceList&) = delete;
    IInterfaceList& operator=(const IInterfaceList&) = delete;
    virtual ~IInterfaceList() = default;

    /// @return  every IPv4 address of every interface that is up, loopback included, in the system's order
    virtual VxExpected<std::vector<NetworkInterface>> Interfaces() = 0;

    /// @return  the own address from which the system would reach this one
    virtual VxExpected<Ipv4Address> LocalAddressTowards(Ipv4Address remote) = 0;

protected:
    IInterfaceList() = default;
};

} // namespace transport
