#pragma once

#include "VxCamera/genapi/map/NodeMap.h"
#include "VxDSSource/camera/VxGenEnumEntry.h"

namespace surface {

/// An entry of an enumeration over a node map.
///
/// Owner:  NodeEnum. Borrows the map.
/// Thread: any; the map's lock serialises.
class NodeEnumEntry final : public VxGenEnumEntry {
public:
    NodeEnumEntry(genapi::NodeMap& map, genapi::NodeId entry) : m_map(map), m_entry(entry) {}

    VxResult GetName(VxString& name) const override;
    VxResult GetValue(std::int64_t& value) const override;
    [[nodiscard]] bool IsAvailable() const override;

private:
    genapi::NodeMap& m_map; // borrowed: outlives the feature that owns this
    const genapi::NodeId m_entry;
};

} // namespace surface
