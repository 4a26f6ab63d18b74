#pragma once

#include "VxBase/VxClock.h"
#include "VxCamera/control/CameraFinder.h"
#include "VxCamera/transport/IInterfaceList.h"
#include "VxCamera/transport/ISocketFactory.h"
#include "VxCamera/transport/IUdpSocketGroup.h"

#include <memory>

/// The outside world of one device, stream or search: the system's sockets, interfaces and clock.
///
/// Each object has its own, so that nothing of ours is left in the process when the last one is gone; they
/// share a memory of where cameras answered.
///
/// Owner:  the object, by value; declared before whatever borrows from it.
/// Thread: like its parts: any.
class CameraNetwork {
public:
    CameraNetwork();
    /// A test's: the same with other parts, none of them null.
    CameraNetwork(std::unique_ptr<transport::ISocketFactory> sockets,
                  std::unique_ptr<transport::ISocketGroupFactory> groups,
                  std::unique_ptr<transport::IInterfaceList> interfaces);
    ~CameraNetwork();
    CameraNetwork(const CameraNetwork&) = delete;
    CameraNetwork& operator=(const CameraNetwork&) = delete;

    [[nodiscard]] control::CameraFinder::Network Parts();
    [[nodiscard]] transport::ISocketFactory& Sockets() { return *m_sockets; }
    [[nodiscard]] const IVxClock& Clock() const { return m_clock; }

private:
    std::unique_ptr<transport::ISocketFactory> m_sockets;
    std::unique_ptr<transport::ISocketGroupFactory> m_groups;
    std::unique_ptr<transport::IInterfaceList> m_interfaces;
    VxSteadyClock m_clock;
};
