#pragma once

#include "VxBase/VxResult.h"
#include "VxCamera/surface/ConfigurationText.h"

#include <vector>

class VxGenParameterArray;

namespace surface {

/// What was read of a camera or a receiver.
struct CollectedFeatures {
    std::vector<ConfigurationStep> steps;
    VxResult result = VxResult::Ok(); ///< which features could not be read, and why
};

/// Reads what has to be written back to bring features into their present state.
///
/// Of a camera: the features that its description marks as streamable and that can be read and written now;
/// what selectors select is read for each of their values, and the selectors get their values back. Of
/// anything else: all features that can be read and written. Commands are left out.
[[nodiscard]] CollectedFeatures CollectFeatures(VxGenParameterArray& array);

/// Writes collected values back. Some can only be written when others have been, so what was refused or has
/// changed since is tried again for as long as that helps.
/// @return  OK, or the code of the first feature that refused to the end, with a description of all that did
[[nodiscard]] VxResult RestoreFeatures(VxGenParameterArray& array,
                                       const std::vector<ConfigurationStep>& steps);

} // namespace surface
