#pragma once

#include "VxCamera/transport/IInterfaceList.h"

namespace transport {

/// The network interfaces of Windows. Owner and thread: see IInterfaceList.
class WinInterfaceList final : public IInterfaceList {
public:
    VxExpected<std::vector<NetworkInterface>> Interfaces() override;
    VxExpected<Ipv4Address> LocalAddressTowards(Ipv4Address remote) override;
};

} // namespace transport
