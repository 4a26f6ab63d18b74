#pragma once

#include "VxCamera/transport/IInterfaceList.h"

namespace transport {

/// The network interfaces of a POSIX system. Owner and thread: see IInterfaceList.
class PosixInterfaceList final : public IInterfaceList {
public:
    VxExpected<std::vector<NetworkInterface>> Interfaces() override;
    VxExpected<Ipv4Address> LocalAddressTowards(Ipv4Address remote) override;
};

} // namespace transport
