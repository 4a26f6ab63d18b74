#pragma once

#include "VxBase/VxClock.h"
#include "VxBase/VxResult.h"
#include "VxCamera/surface/ConfigurationText.h"

#include <chrono>
#include <vector>

class VxGenParameterArray;

namespace surface {

// Chosen: collecting and restoring are ended then, whatever is left; others wait for the features meanwhile.
// Cameras with a thousand features behind selectors take a few seconds. The access in which the time ends is
// not broken off, and selectors get their values back unless the camera is gone: each of these is bounded by
// itself.
inline constexpr std::chrono::seconds kLongestTransfer{30};

/// What was read of a camera or a receiver.
struct CollectedFeatures {
    std::vector<ConfigurationStep> steps;
    VxResult result = VxResult::Ok(); ///< which features could not be read, and why, or were not reached
    bool isGone = false;              ///< the camera was lost meanwhile, so there is more than was read
};

/// Reads what has to be written back to bring features into their present state.
///
/// Of a camera: the features that its description marks as streamable and that can be read and written now;
/// what selectors select is read for each of their values, and the selectors get their values back. Of
/// anything else: all features that can be read and written. Commands are left out.
[[nodiscard]] CollectedFeatures CollectFeatures(VxGenParameterArray& array, const IVxClock& clock);

/// Writes collected values back. Some can only be written when others have been, so what was refused or has
/// changed since is tried again for as long as that helps. When the time is over, selectors get the collected
/// values all the same.
/// @return  OK, or the code of the first feature that refused to the end, with a description of all that did
///          and of all that were not reached
[[nodiscard]] VxResult RestoreFeatures(VxGenParameterArray& array,
                                       const std::vector<ConfigurationStep>& steps, const IVxClock& clock);

} // namespace surface
