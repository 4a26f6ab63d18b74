#pragma once

#include "VxBase/VxResult.h"

namespace vxds {

/// What is known of one of the two objects that make the link to a camera.
enum class LinkEnd {
    Absent, ///< there is none
    Closed, ///< it is there, but not connected (device) or not opened (stream)
    Open,
};

/// The link to a camera as the status summary tells of it.
///
/// Owner:  whoever asked, by value.
/// Thread: any.
struct LinkStatus {
    LinkEnd device = LinkEnd::Absent;
    LinkEnd stream = LinkEnd::Absent;
    VxResult lastConnectResult; ///< of code 1541: no attempt was made
    VxResult lastOpenResult;    ///< the same
};

} // namespace vxds
