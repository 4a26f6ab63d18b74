#pragma once

#include "VxBase/VxClock.h"

#include <cstdint>
#include <optional>

namespace receive {

/// Notices that no packet of the camera comes, and tells when to send something that opens the way through
/// firewalls, and when to join a group again: interfaces may have come up since.
///
/// Owner:  StreamReceiver, by value.
/// Thread: one. Time is an argument.
class SilenceWatch {
public:
    using Time = IVxClock::Time;

    struct Due {
        /// A second has passed without a packet of the camera; told once for each silence, and once more when
        /// the first packet of somebody else comes in it after that.
        bool isSilent = false;
        bool haveOthersCome = false; ///< in that silence
        bool opensWay = false;       ///< it is time to send a packet that opens the way
        bool joins = false;          ///< it is time to join the stream's group (again)
    };

    /// Reception begins.
    void Start(Time now);

    void OnPacket(Time now);
    /// Of another sender than the camera.
    void OnForeignPacket() { m_haveOthersCome = true; }

    /// A silence that was told is told again after another second.
    void TellAgain(Time now);

    [[nodiscard]] Due OnTime(Time now);

    /// The way has another end: it is opened at once.
    void OpenWayAgain() { m_openedAt.reset(); }

    /// @return  when OnTime must be called unless a packet comes before
    [[nodiscard]] Time NextDue() const;

private:
    [[nodiscard]] Time NextAfter(const std::optional<Time>& last) const;

    Time m_lastPacket;
    Time m_silentSince;             // since then, or since that was told last
    std::optional<Time> m_openedAt; // none: not yet
    std::optional<Time> m_joinedAt; // none: not yet
    bool m_isTold = false;
    bool m_haveOthersCome = false; // in this silence
    bool m_areOthersTold = false;
};

} // namespace receive
