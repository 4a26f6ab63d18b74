#pragma once

#include "VxCamera/genapi/map/NodeMap.h"
#include "VxDSSource/camera/VxGenParameterArray.h"

#include <memory>
#include <vector>

/// A node map as the module sees it: one parameter per feature, in the map's order.
///
/// Owner:  the device. Owns the map and the parameters, which are borrowed by everybody else.
/// Thread: any; the map's lock serialises.
class NodeParameterArray final : public VxGenParameterArray {
public:
    /// @param map  null: an array without features, for a device whose camera could not be reached
    [[nodiscard]] static std::unique_ptr<NodeParameterArray> Create(std::unique_ptr<genapi::NodeMap> map);
    ~NodeParameterArray() override;

    [[nodiscard]] std::size_t GetCount() const override;
    [[nodiscard]] VxGenParameter* Get(std::size_t index) const override;

    /// Finds nodes outside every category as well; their category is "".
    [[nodiscard]] VxGenParameter* Get(const VxString& name) const override;

    /// @return  borrowed; null for an array without features
    [[nodiscard]] genapi::NodeMap* Map() const { return m_map.get(); }

private:
    explicit NodeParameterArray(std::unique_ptr<genapi::NodeMap> map);
    void MakeFeatures();

    std::unique_ptr<genapi::NodeMap> m_map;
    // By node id; those of nodes outside of all categories are made when they are asked for, under the map's
    // lock.
    mutable std::vector<std::unique_ptr<VxGenParameter>> m_parameters;
    std::vector<VxGenParameter*> m_features; // borrowed from m_parameters, in the map's order
};
