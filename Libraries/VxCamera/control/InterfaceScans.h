#pragma once

#include "VxBase/VxClock.h"
#include "VxCamera/control/DiscoveryScan.h"
#include "VxCamera/control/FoundCamera.h"
#include "VxCamera/transport/IUdpSocketGroup.h"

#include <functional>
#include <list>

namespace control {

/// Discovery on several interfaces at once.
///
/// Owner:  CameraFinder, for one search. Borrows sockets and clock.
/// Thread: one; the callback comes on it.
class InterfaceScans {
public:
    using Time = IVxClock::Time;

    /// Who was asked when a camera answered.
    enum class Asked {
        Everybody, ///< the camera may only have been heard
        ItAlone,   ///< so datagrams reach it
    };
    using OnCamera = std::function<void(const FoundCamera&, Asked)>;

    InterfaceScans(transport::IUdpSocketGroup& sockets, const IVxClock& clock)
        : m_sockets(sockets), m_clock(clock)
    {
    }

    /// Prepares to ask everybody on an interface; one that cannot be used is passed over.
    /// @return  whether it will be scanned
    bool AddEverybody(const transport::NetworkInterface& described);

    /// Prepares to ask one address through an interface.
    bool AddOne(const transport::NetworkInterface& described, transport::Ipv4Address camera);

    /// Scans all interfaces until the deadline. Everybody is asked once and what has come until then is
    /// taken, also when the deadline has passed already. A later call goes on with the same scans, and with
    /// those that were added. An interface on which the search fails has no more cameras; the others decide.
    void Run(Time deadline, const OnCamera& onCamera);

    /// For the callback: brings the deadline forward; a later one than is set changes nothing.
    void EndAt(Time deadline);

private:
    struct Scan {
        transport::NetworkInterface described;
        Asked asked;
        transport::IUdpSocket* socket; // borrowed from m_sockets
        DiscoveryScan discovery;
        bool hasFailed = false;
    };
    bool Add(const transport::NetworkInterface& described, DiscoveryScan::Question question, Asked asked);
    void Ask(Time now);
    [[nodiscard]] std::chrono::microseconds UntilNextTurn(Time now) const;
    void TakeAnswers(const OnCamera& onCamera);
    void DropFailed();

    transport::IUdpSocketGroup& m_sockets;
    const IVxClock& m_clock;
    Time m_deadline; // of the present Run
    std::list<Scan> m_scans;
};

} // namespace control
