#pragma once

#include "VxCamera/surface/NodeParameterOf.h"
#include "VxDSSource/camera/VxGenBoolean.h"

namespace surface {

/// A truth-value feature over a node map.
///
/// Owner and thread: see NodeParameterOf.
class NodeBoolean final : public NodeParameterOf<VxGenBoolean> {
public:
    using NodeParameterOf::NodeParameterOf;

    VxResult GetValue(bool& value) const override;
    VxResult SetValue(bool value) override;
};

} // namespace surface
