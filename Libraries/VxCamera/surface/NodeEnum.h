#pragma once

#include "VxCamera/surface/NodeEnumEntry.h"
#include "VxCamera/surface/NodeParameterOf.h"
#include "VxDSSource/camera/VxGenEnum.h"

#include <cstdint>
#include <memory>
#include <string_view>
#include <vector>

namespace surface {

/// An enumeration over a node map.
///
/// Owner and thread: see NodeParameterOf.
class NodeEnum final : public NodeParameterOf<VxGenEnum> {
public:
    NodeEnum(genapi::NodeMap& map, genapi::NodeId node, std::string_view category);

    VxResult GetEntriesCount(std::int64_t& count) const override;
    VxResult GetEntryByIndex(std::int64_t index, const VxGenEnumEntry** entry) const override;
    VxResult GetValue(VxString& name) const override;
    VxResult SetValue(const VxString& name) override;

private:
    std::vector<std::unique_ptr<NodeEnumEntry>> m_entries;
};

} // namespace surface
