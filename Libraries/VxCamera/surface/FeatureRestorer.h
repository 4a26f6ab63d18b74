#pragma once

#include "VxBase/VxResult.h"
#include "VxCamera/surface/ConfigurationText.h"
#include "VxCamera/surface/FeatureFailures.h"

#include <vector>

class VxGenParameterArray;

namespace surface {

/// Writes stored values into features, in several rounds.
///
/// Owner:  RestoreFeatures, for one call. Borrows array and steps.
/// Thread: one.
class FeatureRestorer {
public:
    FeatureRestorer(VxGenParameterArray& array, const std::vector<ConfigurationStep>& steps)
        : m_array(array), m_steps(steps)
    {
    }

    [[nodiscard]] VxResult Restore();

private:
    enum class Outcome {
        Unchanged,
        Written,
        Refused,
        Gone, ///< the camera is; no further step is tried
    };

    /// @return  whether a feature was written, so that another round may help
    bool Round();
    [[nodiscard]] Outcome Apply(const ConfigurationStep& step);

    VxGenParameterArray& m_array;                  // borrowed: outlives the call
    const std::vector<ConfigurationStep>& m_steps; // borrowed: outlives the call
    FeatureFailures m_failures;                    // of the last round
};

} // namespace surface
