#pragma once

#include "VxBase/VxResult.h"

#include <chrono>
#include <cstddef>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

namespace surface {

/// @return  whether a failure means that the camera is gone, so that asking on would only cost time.
///          ACCESS_DENIED is none of those: cameras answer so for one feature that they refuse.
[[nodiscard]] bool IsGone(const VxResult& failure);

/// What went wrong with which of many features, and one sentence about all of it.
///
/// Owner:  FeatureCollector, FeatureRestorer, by value.
/// Thread: one.
class FeatureFailures {
public:
    /// One more feature was tried.
    void Count() { ++m_tried; }

    /// @param result  why it failed; its description may begin with the feature's name
    void Note(std::string_view feature, const VxResult& result);

    /// A feature that was not tried, because the camera is gone or the time was over; a failure that was
    /// noted before says which.
    void NoteUnreached(std::string_view feature);

    /// What is noted of the feature at which the time ended.
    [[nodiscard]] static VxResult TimeIsOver(std::chrono::seconds limit);

    /// @param what  for instance "could not be restored"
    /// @return  OK without failures, else the first one's code and "2 of 30 features could not be restored:
    ///          ...; not reached: ..."
    [[nodiscard]] VxResult Summary(std::string_view what) const;

private:
    std::vector<VxResult> m_failures;
    std::vector<std::string> m_unreached;    // each once, in the order of the notes
    std::unordered_set<std::string> m_known; // what is in m_unreached; a description can have very many
    std::size_t m_tried = 0;
};

} // namespace surface
