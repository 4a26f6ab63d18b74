#pragma once

#include "VxCamera/genapi/map/NodeMap.h"
#include "VxCamera/surface/ConfigurationText.h"

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

namespace surface {

/// Walks the features of a node map, through every value of their selectors, and notes what would restore
/// them.
///
/// Owner:  CollectFeatures, for one call. Borrows the map.
/// Thread: one, which holds the map's lock.
class FeatureCollector {
public:
    explicit FeatureCollector(genapi::NodeMap& map) : m_map(map) {}

    [[nodiscard]] std::vector<ConfigurationStep> Collect();

private:
    using Nodes = std::vector<genapi::NodeId>;

    /// Features that the same selectors select; the outermost selector comes first.
    struct Group {
        Nodes selectors;
        Nodes features;
    };

    [[nodiscard]] bool IsStored(genapi::NodeId node) const;
    [[nodiscard]] std::vector<Group> Groups() const;
    [[nodiscard]] Nodes SelectorsOf(genapi::NodeId feature) const;
    void Walk(const Group& group);
    void WalkSelector(const Group& group, std::size_t index, std::size_t level);
    void Read(const Nodes& features, std::size_t level);
    [[nodiscard]] std::vector<std::string> ValuesOf(genapi::NodeId selector);
    [[nodiscard]] std::vector<std::string> EntriesOf(genapi::NodeId selector);
    [[nodiscard]] std::vector<std::string> NumbersOf(genapi::NodeId selector);
    void Add(ConfigurationStep::Kind kind, std::size_t level, genapi::NodeId node, std::string value);

    genapi::NodeMap& m_map; // borrowed: outlives the call
    std::vector<ConfigurationStep> m_steps;
};

} // namespace surface
