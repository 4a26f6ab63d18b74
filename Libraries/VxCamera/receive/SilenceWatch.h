#pragma once

#include "VxBase/VxClock.h"

#include <cstdint>
#include <optional>

namespace receive {

/// Notices that no packet comes, and tells when to send something that opens the way through firewalls.
///
/// Owner:  StreamReceiver, by value.
/// Thread: one. Time is an argument.
class SilenceWatch {
public:
    using Time = IVxClock::Time;

    struct Due {
        bool isSilent = false; ///< a second has passed without a packet; told once for each silence
        bool opensWay = false; ///< it is time to send a packet that opens the way
    };

    /// Reception begins.
    void Start(Time now);

    void OnPacket(Time now);

    [[nodiscard]] Due OnTime(Time now);

    /// The way has another end: it is opened at once.
    void OpenWayAgain() { m_openedAt.reset(); }

    /// @return  when OnTime must be called unless a packet comes before
    [[nodiscard]] Time NextDue() const;

private:
    Time m_lastPacket;
    std::optional<Time> m_openedAt; // none: not yet
    bool m_isTold = false;
};

} // namespace receive
