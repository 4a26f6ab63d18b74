#pragma once

#include "VxBase/VxClock.h"
#include "VxCamera/control/DiscoveryScan.h"
#include "VxCamera/control/FoundCamera.h"
#include "VxCamera/transport/ISocketFactory.h"

#include <atomic>
#include <functional>
#include <memory>
#include <vector>

namespace control {

/// Discovery on several interfaces at once.
///
/// Owner:  CameraFinder, for one search. Borrows sockets and clock.
/// Thread: Run from one; the callback comes from one thread per interface; EndAt from any.
class InterfaceScans {
public:
    using Time = IVxClock::Time;

    /// Who was asked when a camera answered.
    enum class Asked {
        Everybody, ///< the camera may only have been heard
        ItAlone,   ///< so datagrams reach it
    };
    using OnCamera = std::function<void(const FoundCamera&, Asked)>;

    InterfaceScans(transport::ISocketFactory& sockets, const IVxClock& clock, Time deadline)
        : m_sockets(sockets), m_clock(clock), m_deadline(deadline.time_since_epoch())
    {
    }

    /// Prepares to ask everybody on an interface; one that cannot be used is passed over.
    /// @return  whether it will be scanned
    bool AddEverybody(const transport::NetworkInterface& described);

    /// Prepares to ask one address through an interface.
    bool AddOne(const transport::NetworkInterface& described, transport::Ipv4Address camera);

    /// Scans all interfaces until the deadline.
    void Run(const OnCamera& onCamera);

    /// Brings the deadline forward; a later one than is set changes nothing.
    void EndAt(Time deadline);

private:
    struct Scan {
        transport::NetworkInterface described;
        DiscoveryScan::Question question;
        std::unique_ptr<transport::IUdpSocket> socket;
    };
    bool Add(const transport::NetworkInterface& described, DiscoveryScan::Question question);
    void RunOne(Scan& scan, const OnCamera& onCamera);
    void RunOneQuietly(Scan& scan, const OnCamera& onCamera) noexcept;

    transport::ISocketFactory& m_sockets;
    const IVxClock& m_clock;
    std::atomic<Time::duration> m_deadline;
    std::vector<Scan> m_scans; // constant while Run runs
};

} // namespace control
