#pragma once

#include "VxBase/VxClock.h"
#include "VxCamera/genapi/map/NodeMap.h"
#include "VxCamera/surface/ConfigurationText.h"
#include "VxCamera/surface/FeatureFailures.h"
#include "VxCamera/surface/FeatureStore.h"

#include <cstddef>
#include <string>
#include <vector>

namespace surface {

/// Walks the features of a node map, through every value of their selectors, and notes what would restore
/// them.
///
/// Owner:  CollectFeatures, for one call. Borrows the map.
/// Thread: one, which holds the map's lock.
class FeatureCollector {
public:
    FeatureCollector(genapi::NodeMap& map, const IVxClock& clock)
        : m_map(map), m_clock(clock), m_end(clock.Now() + kLongestTransfer)
    {
    }

    [[nodiscard]] CollectedFeatures Collect();

private:
    using Nodes = std::vector<genapi::NodeId>;

    /// Features that the same selectors select; a selector of selectors comes before those.
    struct Group {
        Nodes selectors;
        Nodes features;
    };

    [[nodiscard]] bool IsStored(genapi::NodeId node) const;
    [[nodiscard]] std::vector<Group> Groups() const;
    [[nodiscard]] Nodes SelectorsOf(genapi::NodeId feature) const;
    void FindSelectors(genapi::NodeId feature, Nodes& path, Nodes& found) const;
    void WalkSelector(const Group& group, std::size_t index, std::size_t level);
    void Read(const Nodes& features, std::size_t level);
    /// Counts what is tried, whether it gives a value or not: what refuses costs time as well.
    /// @param next  what would be tried
    /// @return  false when there was enough; then nothing more is tried
    [[nodiscard]] bool MayTry(genapi::NodeId next);
    void Note(genapi::NodeId node, const VxResult& failure);
    void End(genapi::NodeId node, const VxResult& why);
    /// @return  nothing for a selector whose values cannot be listed
    [[nodiscard]] std::vector<std::string> ValuesOf(genapi::NodeId selector);
    [[nodiscard]] std::vector<std::string> EntriesOf(genapi::NodeId selector);
    [[nodiscard]] std::vector<std::string> NumbersOf(genapi::NodeId selector);
    void PutBack(genapi::NodeId selector, std::size_t level, const std::string& value);
    void Add(ConfigurationStep::Kind kind, std::size_t level, genapi::NodeId node, std::string value);

    void NoteUnreached(const Group& group, std::size_t first);

    genapi::NodeMap& m_map;  // borrowed: outlives the call
    const IVxClock& m_clock; // borrowed: outlives the call
    const IVxClock::Time m_end;
    std::vector<ConfigurationStep> m_steps;
    FeatureFailures m_failures;
    std::size_t m_attempts = 0;
    std::size_t m_reached = 0; // features of the present group, for the present values of its selectors
    bool m_isEnded = false;    // there was more than can be stored, or the camera is gone, or the time over
    genapi::NodeId m_endedAt = {}; // when m_isEnded: what was to be tried, and is noted
};

} // namespace surface
