#pragma once

#include "VxCamera/surface/NodeParameterOf.h"
#include "VxDSSource/camera/VxGenInteger.h"

namespace surface {

/// An integer feature over a node map.
///
/// Owner and thread: see NodeParameterOf.
class NodeInteger final : public NodeParameterOf<VxGenInteger> {
public:
    using NodeParameterOf::NodeParameterOf;

    VxResult GetValue(std::int64_t& value) const override;
    VxResult SetValue(std::int64_t value) override;
    VxResult GetMin(std::int64_t& minimum) const override;
    VxResult GetMax(std::int64_t& maximum) const override;
    VxResult GetIncrement(std::int64_t& increment) const override;
    VxResult GetUnit(VxString& unit) const override;
};

} // namespace surface
