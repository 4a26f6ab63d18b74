#pragma once

#include "VxBase/VxClock.h"
#include "VxBase/VxResult.h"
#include "VxCamera/surface/ConfigurationText.h"

#include <cstddef>
#include <optional>
#include <vector>

class VxGenParameterArray;

namespace surface {

/// Writes stored values into features, in several rounds.
///
/// Owner:  RestoreFeatures, for one call. Borrows array and steps.
/// Thread: one.
class FeatureRestorer {
public:
    FeatureRestorer(VxGenParameterArray& array, const std::vector<ConfigurationStep>& steps,
                    const IVxClock& clock);

    [[nodiscard]] VxResult Restore();

private:
    enum class Outcome {
        Unchanged,
        Written,
        Refused,
        OutOfTime, ///< not tried; no further step is
        Gone,      ///< the camera is gone; no further step is tried
    };

    /// @return  whether a feature was written, so that another round may help
    bool Round();
    [[nodiscard]] Outcome Apply(std::size_t index);
    void CloseBefore(const ConfigurationStep& next);
    void PutSelectorsBack(std::size_t reached);
    [[nodiscard]] VxResult Summary() const;

    VxGenParameterArray& m_array;                  // borrowed: outlives the call
    const std::vector<ConfigurationStep>& m_steps; // borrowed: outlives the call
    const IVxClock& m_clock;                       // borrowed: outlives the call
    const IVxClock::Time m_end;
    std::vector<std::optional<VxResult>> m_results; // of each step when it was tried last; none: never
    std::vector<std::size_t> m_open;                // selector steps that hold now, outer ones first
};

} // namespace surface
