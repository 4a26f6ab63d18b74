#pragma once

#include "VxCamera/transport/IInterfaceList.h"
#include "VxCamera/transport/ISocketFactory.h"
#include "VxCamera/transport/IUdpSocketGroup.h"

#include <memory>

namespace transport {

/// The operating system's sockets. Nothing is started or loaded before the first socket is opened.
[[nodiscard]] std::unique_ptr<ISocketFactory> MakeSystemSocketFactory();

/// Groups of the operating system's sockets, of which the same holds.
[[nodiscard]] std::unique_ptr<ISocketGroupFactory> MakeSystemSocketGroupFactory();

/// The operating system's network interfaces.
[[nodiscard]] std::unique_ptr<IInterfaceList> MakeSystemInterfaceList();

} // namespace transport
