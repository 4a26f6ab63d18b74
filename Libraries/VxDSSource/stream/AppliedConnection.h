#pragma once

#include <cstdint>
#include <string>

namespace vxds {

class SettingsRecord;

/// The connection settings with which the present link was made.
///
/// The endpoints of the receiving roles are compared and never recorded. So in role 1 with a port, and in
/// role 2 with a group, every application of settings closes the stream and opens it again: a receiver that
/// lost its sender comes back that way.
///
/// Owner:  CameraLink, by value.
/// Thread: that of the link's lock.
struct AppliedConnection {
    std::wstring connectionId;
    std::wstring sourceSelector; ///< the camera's source after connecting; empty when it has none
    std::uint32_t channel = 0;
    std::uint32_t unicastPort = 0;
    std::wstring multicastAddress;
    std::uint32_t multicastPort = 0;

    /// Whether the link must be made anew for these settings.
    [[nodiscard]] bool DiffersFrom(const SettingsRecord& settings, bool hasDevice) const;
};

} // namespace vxds
