#pragma once

#include "VxCamera/surface/NodeParameterOf.h"
#include "VxDSSource/camera/VxGenFloat.h"

namespace surface {

/// A floating-point feature over a node map.
///
/// Owner and thread: see NodeParameterOf.
class NodeFloat final : public NodeParameterOf<VxGenFloat> {
public:
    using NodeParameterOf::NodeParameterOf;

    VxResult GetValue(double& value) const override;
    VxResult SetValue(double value) override;
    VxResult GetMin(double& minimum) const override;
    VxResult GetMax(double& maximum) const override;
    VxResult GetUnit(VxString& unit) const override;
};

} // namespace surface
